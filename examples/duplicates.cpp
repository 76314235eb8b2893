// duplicates FOLDER SECONDS [--delete]
// Loads quastel_core.dll at run time, looks for duplicates for at most SECONDS, and shows the first
// two files of the first set; with --delete the second of them is deleted, once it was compared.
#include <quastel_core.h>
#include <windows.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

// A function of the DLL, with the type that the header gives it.
template <typename Function>
Function* Load(const char* name) {
  static const HMODULE dll =
      LoadLibraryExW(L"quastel_core.dll", nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
  const FARPROC found = dll == nullptr ? nullptr : GetProcAddress(dll, name);
  if (found == nullptr)
    throw std::runtime_error(std::string("cannot load ") + name);
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}
#define LOAD(name) const auto name = Load<decltype(::name)>(#name)

// A set shares a 32-bit hash, and that is no proof.
bool EqualFiles(const std::filesystem::path& one, const std::filesystem::path& other) {
  std::ifstream a(one, std::ios::binary);
  std::ifstream b(other, std::ios::binary);
  using Bytes = std::istreambuf_iterator<char>;
  return a && b && std::equal(Bytes(a), Bytes(), Bytes(b), Bytes()) && !a.bad() && !b.bad();
}

void Run(const std::wstring& folder, std::chrono::seconds limit, bool may_delete) {
  LOAD(qs_product_scan_create);
  LOAD(qs_product_scan_destroy);
  LOAD(qs_product_scan_start);
  LOAD(qs_product_scan_cancel);
  LOAD(qs_product_scan_poll);
  LOAD(qs_product_scan_report_row);
  LOAD(qs_product_scan_start_clean);

  qs_product_scan* scan = nullptr;
  if (qs_product_scan_create(&scan) != QS_OK)
    throw std::runtime_error("cannot make a scan");
  const qs_char* const roots[] = {folder.c_str()};
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = roots;
  request.root_count = 1;

  // The start blocks until the scan has ended: it has a thread to itself.
  auto work = std::async(std::launch::async, [&] { return qs_product_scan_start(scan, &request); });
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (work.wait_for(std::chrono::milliseconds(50)) != std::future_status::ready) {
    qs_product_scan_status seen{};
    qs_product_scan_poll(scan, &seen);
    std::printf("%llu files\n", seen.files_visited);
    // Again and again, since it does nothing before the scan has begun.
    if (std::chrono::steady_clock::now() >= deadline)
      qs_product_scan_cancel(scan);
  }
  std::printf("scan: %u\n", work.get());

  std::wstring paths[2];
  qs_product_scan_row rows[2] = {};
  for (std::uint64_t i = 0; i < 2; ++i) {
    paths[i].resize(32767);  // no path is longer; the other texts are left out
    std::uint64_t needed = 1;
    qs_product_scan_report_row(scan, i, paths[i].data(), 32768, &needed, nullptr, 0, nullptr,
                               nullptr, 0, nullptr, nullptr, 0, nullptr, &rows[i]);
    paths[i].resize(static_cast<std::size_t>(needed - 1));
  }
  if (rows[1].group_id != 0 && rows[0].group_id == rows[1].group_id) {
    std::printf("equal: %ls = %ls\n", paths[0].c_str(), paths[1].c_str());
    if (may_delete && EqualFiles(paths[0], paths[1]))
      std::printf("clean: %u\n", qs_product_scan_start_clean(scan, &rows[1].item_id, 1));
  }
  qs_product_scan_destroy(scan);
}

}  // namespace

int wmain(int argc, wchar_t** argv) try {
  if (argc < 3)
    throw std::runtime_error("usage: duplicates FOLDER SECONDS [--delete]");
  const bool may_delete = argc > 3 && argv[3] == std::wstring(L"--delete");
  Run(argv[1], std::chrono::seconds(std::stoul(argv[2])), may_delete);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 2;
}
