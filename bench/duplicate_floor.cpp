// A cold and a warm duplicate scan against the sum of their floors: duplicate_floor FOLDER
// [ROUNDS].
//
// The floor does what cannot be left out and nothing else, on one thread: the bare listing, one
// open and read of the head for each file that shares its size, one of the tail for each that
// shares its head too, and the whole content of those that share both. A scan without a profile
// keeps no cache, so each of its rounds is cold.

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "quastel_core.h"

namespace {

constexpr std::uint64_t kSmall = 150;
constexpr std::uint64_t kBlock = 4096;

struct File {
  std::wstring path;
  std::uint64_t size;
};

struct Counts {
  std::uint64_t files = 0;
  std::uint64_t opens = 0;
  std::uint64_t bytes = 0;
  double sampling_seconds = 0;
  double hashing_seconds = 0;
};

double SecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::vector<File> BareWalk(const std::wstring& root) {
  std::vector<std::wstring> pending = {root};
  std::vector<File> files;
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
        files.push_back(
            {folder + L"\\" + name, std::uint64_t{entry.nFileSizeHigh} << 32 | entry.nFileSizeLow});
      }
    } while (FindNextFileW(search, &entry));
    FindClose(search);
  }
  return files;
}

// One open, and the reads of one stage; the hash of what was read.
std::string ReadPiece(const File& file, std::uint64_t offset, std::uint64_t length,
                      Counts& counts) {
  static std::vector<char> buffer(1'048'576);
  const HANDLE handle = CreateFileW(file.path.c_str(), GENERIC_READ, 7, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  ++counts.opens;
  if (handle == INVALID_HANDLE_VALUE) {
    return {};
  }
  LARGE_INTEGER position;
  position.QuadPart = static_cast<LONGLONG>(offset);
  if (offset > 0) {
    SetFilePointerEx(handle, position, nullptr, FILE_BEGIN);
  }
  std::string hashes;
  for (std::uint64_t left = length; left > 0;) {
    DWORD read = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::uint64_t>(left, buffer.size()));
    if (!ReadFile(handle, buffer.data(), wanted, &read, nullptr) || read == 0) {
      break;
    }
    counts.bytes += read;
    char text[9] = {};
    (void)qs_xxhash32_hex(buffer.data(), read, text, sizeof(text));
    hashes += text;
    left -= read;
  }
  CloseHandle(handle);
  return hashes;
}

using Group = std::vector<const File*>;

// Splits each group by a piece of the files' contents and drops those that are alone.
std::vector<Group> Split(const std::vector<Group>& groups,
                         const std::function<std::string(const File&)>& key_of) {
  std::vector<Group> result;
  for (const Group& group : groups) {
    std::map<std::string, Group> by_key;
    for (const File* file : group) {
      by_key[key_of(*file)].push_back(file);
    }
    for (auto& [key, members] : by_key) {
      if (members.size() > 1) {
        result.push_back(std::move(members));
      }
    }
  }
  return result;
}

Counts Floor(const std::wstring& root) {
  Counts counts;
  const std::vector<File> files = BareWalk(root);
  counts.files = files.size();
  std::map<std::uint64_t, Group> by_size;
  for (const File& file : files) {
    by_size[file.size].push_back(&file);
  }
  std::vector<Group> groups;
  for (auto& [size, members] : by_size) {
    if (members.size() > 1) {
      groups.push_back(std::move(members));
    }
  }
  const auto sampling = std::chrono::steady_clock::now();
  groups = Split(groups, [&](const File& file) {
    return ReadPiece(file, 0, std::min(file.size, kBlock), counts);
  });
  std::erase_if(groups, [](const Group& group) { return group[0]->size <= kSmall; });
  groups = Split(groups, [&](const File& file) {
    return file.size > kBlock ? ReadPiece(file, file.size - kBlock, kBlock, counts) : std::string();
  });
  counts.sampling_seconds = SecondsSince(sampling);
  const auto hashing = std::chrono::steady_clock::now();
  (void)Split(groups, [&](const File& file) { return ReadPiece(file, 0, file.size, counts); });
  counts.hashing_seconds = SecondsSince(hashing);
  return counts;
}

qs_product_scan_performance Scan(const std::wstring& root, const wchar_t* profile) {
  qs_product_scan* scan = nullptr;
  if (qs_product_scan_create(&scan) != QS_OK) {
    std::exit(1);
  }
  const qs_char* roots[] = {root.c_str()};
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = roots;
  request.root_count = 1;
  request.user_home = profile;
  (void)qs_product_scan_start(scan, &request);
  qs_product_scan_performance performance = {};
  performance.size = sizeof(performance);
  (void)qs_product_scan_get_performance(scan, &performance);
  (void)qs_product_scan_destroy(scan);
  return performance;
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double Seconds(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return SecondsSince(begin);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: duplicate_floor FOLDER [ROUNDS]\n");
    return 2;
  }
  const std::wstring root = argv[1];
  const int rounds = argc > 2 ? std::max(1, _wtoi(argv[2])) : 5;
  const wchar_t* const profile = _wgetenv(L"TEMP");
  Counts counts;
  qs_product_scan_performance cold_figures = {};
  qs_product_scan_performance warm_figures = {};
  std::vector<double> bare;
  std::vector<double> floor;
  std::vector<double> cold;
  std::vector<double> warm;
  (void)Scan(root, profile);  // fills the cache that the warm rounds use
  for (int round = 0; round < rounds; ++round) {
    bare.push_back(Seconds([&] { (void)BareWalk(root); }));
    floor.push_back(Seconds([&] { counts = Floor(root); }));
    cold.push_back(Seconds([&] { cold_figures = Scan(root, nullptr); }));
    warm.push_back(Seconds([&] { warm_figures = Scan(root, profile); }));
  }
  std::printf("%llu files, %llu opens, %.1f MB read by the floor\n", counts.files, counts.opens,
              static_cast<double>(counts.bytes) / 1e6);
  std::printf(
      "of the last round, sampling and hashing: floor %.3f s and %.3f s, scan %.3f s and %.3f s\n",
      counts.sampling_seconds, counts.hashing_seconds,
      static_cast<double>(cold_figures.sample_us) / 1e6,
      static_cast<double>(cold_figures.hash_us) / 1e6);
  std::printf("bare walk   %7.3f s\n", Median(bare));
  std::printf("floor       %7.3f s\n", Median(floor));
  std::printf("cold scan   %7.3f s  %.2f of the floor, %llu rows\n", Median(cold),
              Median(cold) / Median(floor), cold_figures.row_count);
  std::printf("warm scan   %7.3f s  %.2f of the bare walk, %llu rows\n", Median(warm),
              Median(warm) / Median(bare), warm_figures.row_count);
  return 0;
}
