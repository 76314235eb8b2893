// The clean of a product scan as a caller of the DLL sees it, on real files.

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "scan_handle.h"

namespace quastel::dll_test {
namespace {

namespace fs = std::filesystem;

qs_product_clean_detail DetailOf(qs_product_scan* scan) {
  qs_product_clean_detail detail{};
  detail.size = sizeof(detail);
  EXPECT_EQ(QS_OK, qs_product_scan_poll_clean_detailed(scan, &detail));
  return detail;
}

qs_status Clean(qs_product_scan* scan, const std::vector<std::uint64_t>& ids) {
  return qs_product_scan_start_clean(scan, ids.data(), ids.size());
}

std::uint64_t IdOf(qs_product_scan* scan, const std::wstring& path) {
  for (const ReportedRow& row : ReadRows(scan)) {
    if (row.path == path && row.numbers.kind != QS_ROW_GROUP) {
      return row.numbers.item_id;
    }
  }
  ADD_FAILURE() << "not found: " << fs::path(path);
  return QS_NO_ITEM_ID;
}

qs_status RunJunkScan(qs_product_scan* scan, const RealTree& tree) {
  tree.AddFile(L"rules.xml",
               "<Root><Category DisplayName=\"c\"><Folder Path=\"{UserHome}\\junk\"/></Category>"
               "</Root>");
  const std::wstring rules = tree.Path(L"rules.xml");
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  request.user_home = tree.root().c_str();
  request.system_root = tree.root().c_str();
  request.rules_path = rules.c_str();
  return qs_product_scan_start(scan, &request);
}

TEST(ProductClean, Deletes_the_large_files_that_were_named_and_counts_them) {
  const RealTree tree;
  for (const wchar_t* name : {L"a.bin", L"b.bin", L"sub\\c.bin"}) {
    tree.AddSparseFile(name, kLarge);
  }
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  const std::uint64_t a = IdOf(scan.get(), tree.Path(L"a.bin"));
  const std::uint64_t c = IdOf(scan.get(), tree.Path(L"sub\\c.bin"));
  ASSERT_EQ(QS_OK, Clean(scan.get(), {a, c}));
  EXPECT_FALSE(fs::exists(tree.Path(L"a.bin")));
  EXPECT_TRUE(fs::exists(tree.Path(L"b.bin")));
  EXPECT_FALSE(fs::exists(tree.Path(L"sub\\c.bin")));
  EXPECT_TRUE(fs::exists(tree.Path(L"sub"))) << "only junk cleans remove folders";
  const qs_product_clean_detail detail = DetailOf(scan.get());
  EXPECT_EQ(56u, detail.size);
  EXPECT_EQ(QS_STATE_DONE, detail.state);
  EXPECT_EQ(2u, detail.requested);
  EXPECT_EQ(2u, detail.processed);
  EXPECT_EQ(2u, detail.deleted);
  EXPECT_EQ(0u, detail.failed);
  EXPECT_EQ(2 * kLarge, detail.bytes_freed);
  EXPECT_EQ(QS_OK, detail.status);
  for (const ReportedRow& row : ReadRows(scan.get())) {
    EXPECT_EQ(row.name == L"b.bin" ? 0u : 1u, row.numbers.deleted);
  }
  EXPECT_EQ(3u, Poll(scan.get()).item_count);
  EXPECT_EQ(3 * kLarge, Poll(scan.get()).total_bytes);
}

TEST(ProductClean, Removes_the_folders_that_junk_leaves_empty) {
  const RealTree tree;
  tree.AddFile(L"junk\\a\\b\\c.tmp", "x");
  tree.AddFile(L"junk\\a\\b.tmp", "x");
  tree.AddFile(L"junk\\Downloads\\d.tmp", "x");
  tree.AddFile(L"junk\\stays\\e.tmp", "x");
  tree.AddFile(L"junk\\stays\\f.tmp", "x");
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunJunkScan(scan.get(), tree));
  std::vector<std::uint64_t> ids;
  for (const wchar_t* name : {L"junk\\a\\b.tmp", L"junk\\Downloads\\d.tmp", L"junk\\a\\b\\c.tmp",
                              L"junk\\stays\\e.tmp"}) {
    ids.push_back(IdOf(scan.get(), tree.Path(name)));
  }
  ASSERT_EQ(QS_OK, Clean(scan.get(), ids));
  EXPECT_EQ(4u, DetailOf(scan.get()).deleted);
  EXPECT_FALSE(fs::exists(tree.Path(L"junk\\a")));
  EXPECT_TRUE(fs::exists(tree.Path(L"junk\\Downloads")));
  EXPECT_TRUE(fs::is_empty(tree.Path(L"junk\\Downloads")));
  EXPECT_TRUE(fs::exists(tree.Path(L"junk\\stays\\f.tmp")));
}

TEST(ProductClean, Leaves_a_copy_of_each_set_of_duplicates) {
  const RealTree tree;
  for (const wchar_t* name : {L"a", L"b", L"c"}) {
    tree.AddFile(name, "the same in all of them");
  }
  const qs_char* const roots[] = {tree.root().c_str()};
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = roots;
  request.root_count = 1;
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, qs_product_scan_start(scan.get(), &request));
  ASSERT_EQ(3u, Poll(scan.get()).item_count);
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {0, 1, 2}));
  EXPECT_EQ(QS_STATE_IDLE, DetailOf(scan.get()).state);
  EXPECT_EQ(QS_OK, Clean(scan.get(), {2}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {1, 0}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {2})) << "it is gone";
  EXPECT_EQ(QS_OK, Clean(scan.get(), {0}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {1}));
  EXPECT_EQ(
      1, fs::exists(tree.Path(L"a")) + fs::exists(tree.Path(L"b")) + fs::exists(tree.Path(L"c")));
}

TEST(ProductClean, Refuses_what_it_cannot_take) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLarge);
  const ScanHandle scan;
  EXPECT_EQ(QS_UNSUPPORTED, qs_product_scan_start_clean(scan.get(), nullptr, 0));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_start_clean(scan.get(), nullptr, 1));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_start_clean(nullptr, nullptr, 0));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_cancel_clean(nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean(scan.get(), nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean_detailed(scan.get(), nullptr));
  qs_product_clean_detail detail{};
  detail.size = 55;
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_poll_clean_detailed(scan.get(), &detail));
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {1}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {0, 0}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, Clean(scan.get(), {QS_NO_ITEM_ID}));
  EXPECT_TRUE(fs::exists(tree.Path(L"a.bin")));
  EXPECT_EQ(QS_OK, Clean(scan.get(), {}));
  EXPECT_EQ(QS_OK, qs_product_scan_cancel_clean(scan.get()));
  EXPECT_EQ(QS_OK, Clean(scan.get(), {0}));
}

// To the tick; the standard library knows seconds.
void SetWritten(const fs::path& file, std::uint64_t ticks) {
  const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  const HANDLE handle =
      CreateFileW(file.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  EXPECT_NE(0, SetFileTime(handle, nullptr, nullptr, &time));
  CloseHandle(handle);
}

constexpr std::uint64_t kWritten = 133'000'000'000'000'000;

TEST(ProductClean, Leaves_a_file_that_was_written_since) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLarge);
  const fs::path file = tree.Path(L"a.bin");
  SetWritten(file, kWritten);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  SetWritten(file, kWritten + 1);
  EXPECT_EQ(QS_FAILED, Clean(scan.get(), {0}));
  EXPECT_EQ(QS_STATE_FAILED, DetailOf(scan.get()).state);
  EXPECT_EQ(1u, DetailOf(scan.get()).failed);
  EXPECT_TRUE(fs::exists(file));
  SetWritten(file, kWritten);
  EXPECT_EQ(QS_OK, Clean(scan.get(), {0}));
  EXPECT_FALSE(fs::exists(file));
}

TEST(ProductClean, Can_be_watched_and_cancelled_from_another_thread) {
  constexpr std::uint64_t kFiles = 400;
  const RealTree tree;
  for (std::uint64_t i = 0; i < kFiles; ++i) {
    tree.AddFile(L"junk\\f" + std::to_wstring(i), "x");
  }
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunJunkScan(scan.get(), tree));
  std::vector<std::uint64_t> ids;
  for (std::uint64_t i = 0; i < kFiles; ++i) {
    ids.push_back(i);
  }
  std::atomic<bool> ended{false};
  qs_status status = QS_FAILED;
  std::thread cleaner([&] {
    status = Clean(scan.get(), ids);
    ended = true;
  });
  std::uint64_t processed = 0;
  while (processed < 20 && !ended) {
    const qs_product_clean_detail detail = DetailOf(scan.get());
    EXPECT_GE(detail.processed, processed);
    EXPECT_EQ(detail.processed, detail.deleted + detail.failed);
    processed = detail.processed;
    if (detail.state == QS_STATE_RUNNING && detail.processed > 0 && detail.processed < 10) {
      EXPECT_EQ(kFiles, detail.requested);
    }
  }
  EXPECT_EQ(QS_OK, qs_product_scan_cancel_clean(scan.get()));
  cleaner.join();
  // The machine may have let the clean run to its end before this thread came to the cancel.
  const qs_product_clean_detail detail = DetailOf(scan.get());
  EXPECT_EQ(detail.processed == kFiles && status == QS_OK ? QS_OK : QS_CANCELLED, status);
  EXPECT_EQ(status, detail.status);
  std::uint64_t left = 0;
  if (fs::exists(tree.Path(L"junk"))) {
    for (const fs::directory_entry& entry : fs::directory_iterator(tree.Path(L"junk"))) {
      left += entry.is_regular_file();
    }
  }
  EXPECT_EQ(kFiles - detail.deleted, left);
}

// Puts a folder in the place of another one for as long as it lives.
class FolderSwap {
 public:
  FolderSwap(fs::path folder, fs::path other)
      : folder_(std::move(folder)),
        other_(std::move(other)),
        aside_(folder_.wstring() + L" aside") {
    fs::rename(folder_, aside_);
    fs::rename(other_, folder_);
  }
  ~FolderSwap() {
    std::error_code ignored;
    fs::rename(folder_, other_, ignored);
    fs::rename(aside_, folder_, ignored);
  }
  FolderSwap(const FolderSwap&) = delete;
  FolderSwap& operator=(const FolderSwap&) = delete;

 private:
  const fs::path folder_;
  const fs::path other_;
  const fs::path aside_;
};

TEST(ProductClean, Leaves_what_lies_behind_a_link_that_took_the_place_of_a_folder) {
  const RealTree scratch;
  const fs::path tree = LinkedTree(scratch);
  const fs::path scanned = tree.parent_path() / L"scanned";
  const fs::path folder = scanned / L"link";  // as the link in the other tree is called
  const fs::path file = folder / L"victim.bin";
  const fs::path other = tree.parent_path() / L"outside" / L"victim.bin";
  fs::create_directories(folder);
  for (const fs::path& path : {file, other}) {
    std::FILE* const stream = _wfopen(path.c_str(), L"wb");
    ASSERT_NE(nullptr, stream);
    std::fclose(stream);
    fs::resize_file(path, kLarge);
    SetWritten(path, kWritten);
  }
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {scanned.wstring()}));
  ASSERT_EQ(1u, Poll(scan.get()).item_count);
  {
    const FolderSwap swap(scanned, tree);
    EXPECT_TRUE(fs::exists(file)) << "through the link there is a file of this name";
    EXPECT_EQ(QS_FAILED, Clean(scan.get(), {0}));
    EXPECT_TRUE(fs::exists(other));
  }
  EXPECT_EQ(QS_OK, Clean(scan.get(), {0}));
  EXPECT_FALSE(fs::exists(file));
  EXPECT_TRUE(fs::exists(other));
  fs::remove(other);
  fs::remove(folder);
  fs::remove(scanned);
}

}  // namespace
}  // namespace quastel::dll_test
