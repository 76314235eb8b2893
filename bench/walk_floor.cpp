// The library's walk against its floor on a real tree: walk_floor FOLDER [ROUNDS].
//
// The floor is the bare listing loop, one search for each folder and nothing else. All three are
// measured in turn, round by round, so that a machine that gets slower slows all of them.

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "quastel_core.h"

namespace {

unsigned long long BareWalk(const std::wstring& root) {
  std::vector<std::wstring> pending = {root};
  unsigned long long files = 0;
  while (!pending.empty()) {
    const std::wstring folder = std::move(pending.back());
    pending.pop_back();
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileExW((folder + L"\\*").c_str(), FindExInfoBasic, &entry,
                                           FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) {
      continue;
    }
    do {
      const std::wstring name(entry.cFileName);
      if (name == L"." || name == L".." ||
          (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        continue;
      }
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        pending.push_back(folder + L"\\" + name);
      } else {
        ++files;
      }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
  }
  return files;
}

unsigned long long LibraryWalk(const std::wstring& root) {
  unsigned long long files = 0;
  const auto count = [](void* user, const qs_char*, uint64_t, uint64_t, const qs_char*) {
    ++*static_cast<unsigned long long*>(user);
  };
  (void)qs_enumerate_files(root.c_str(), nullptr, 1, count, &files, nullptr);
  return files;
}

unsigned long long LargeFileScan(const std::wstring& root) {
  qs_product_scan* scan = nullptr;
  if (qs_product_scan_create(&scan) != QS_OK) {
    std::exit(1);
  }
  const qs_char* roots[] = {root.c_str()};
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = roots;
  request.root_count = 1;
  request.user_home = L"C:\\Users\\someone";
  request.system_root = L"C:\\";
  request.protect_system = 1;
  (void)qs_product_scan_start(scan, &request);
  qs_product_scan_status status = {};
  (void)qs_product_scan_poll(scan, &status);
  (void)qs_product_scan_destroy(scan);
  return status.files_visited;
}

struct Contestant {
  const char* name;
  unsigned long long (*run)(const std::wstring& root);
  unsigned long long files = 0;
  std::vector<double> seconds;

  double Median() {
    std::sort(seconds.begin(), seconds.end());
    return seconds[seconds.size() / 2];
  }
};

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: walk_floor FOLDER [ROUNDS]\n");
    return 2;
  }
  const std::wstring root = argv[1];
  const int rounds = argc > 2 ? std::max(1, _wtoi(argv[2])) : 7;
  Contestant contestants[] = {{"bare listing", BareWalk, 0, {}},
                              {"qs_enumerate_files", LibraryWalk, 0, {}},
                              {"large-file scan", LargeFileScan, 0, {}}};
  for (int round = 0; round <= rounds; ++round) {
    for (Contestant& contestant : contestants) {
      const auto begin = std::chrono::steady_clock::now();
      contestant.files = contestant.run(root);
      const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
      if (round > 0) {  // the first round warms the system's caches
        contestant.seconds.push_back(seconds.count());
      }
    }
  }
  const double floor = contestants[0].Median();
  for (Contestant& contestant : contestants) {
    std::printf("%-20s %9llu files %9.1f us/file  ratio %.3f\n", contestant.name, contestant.files,
                contestant.Median() * 1e6 / static_cast<double>(contestant.files),
                contestant.Median() / floor);
  }
  return contestants[0].files == contestants[1].files ? 0 : 1;
}
