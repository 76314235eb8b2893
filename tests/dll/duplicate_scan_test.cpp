#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "scan_handle.h"

namespace quastel::dll_test {
namespace {

constexpr wchar_t kCacheFile[] =
    L"AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-hashes-v1.bin";

qs_status RunDuplicateScan(qs_product_scan* scan, const std::wstring& root,
                           const std::wstring& profile) {
  const qs_char* const roots[] = {root.c_str()};
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = roots;
  request.root_count = 1;
  request.user_home = profile.c_str();
  return qs_product_scan_start(scan, &request);
}

qs_product_scan_performance PerformanceOf(qs_product_scan* scan) {
  qs_product_scan_performance performance{};
  performance.size = sizeof(performance);
  EXPECT_EQ(QS_OK, qs_product_scan_get_performance(scan, &performance));
  return performance;
}

std::vector<std::wstring> PathsOf(qs_product_scan* scan) {
  std::vector<std::wstring> paths;
  for (const ReportedRow& row : ReadRows(scan)) {
    paths.push_back(std::to_wstring(row.numbers.group_id) + L" " + row.path);
  }
  return paths;
}

// Two large copies and a third file that differs in the middle alone, two small copies, and files
// that are alone with their size.
void AddCopies(const RealTree& tree) {
  const std::string content = std::string(9000, 'a') + std::string(9000, 'b');
  std::string middle = content;
  middle[9000] = 'x';
  tree.AddFile(L"one\\first.bin", content);
  tree.AddFile(L"two\\second.bin", content);
  tree.AddFile(L"two\\third.bin", middle);
  tree.AddFile(L"one\\small.txt", "the same");
  tree.AddFile(L"two\\small copy.txt", "the same");
  tree.AddFile(L"alone.txt", "nobody has my size");
}

TEST(DuplicateScan, Copies_form_groups_and_small_ones_come_first) {
  const RealTree tree;
  const RealTree profile;
  AddCopies(tree);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunDuplicateScan(scan.get(), tree.root(), profile.root()));
  const std::vector<ReportedRow> rows = ReadRows(scan.get());
  ASSERT_EQ(4u, rows.size());
  for (const ReportedRow& row : rows) {
    EXPECT_EQ(QS_ROW_DUPLICATE, row.numbers.kind);
    EXPECT_EQ(QS_LARGE_OTHER, row.numbers.large_class);
    EXPECT_EQ(1u, row.numbers.deletable);
    EXPECT_EQ(0u, row.numbers.preselect);
  }
  EXPECT_EQ(1u, rows[0].numbers.group_id);
  EXPECT_EQ(1u, rows[1].numbers.group_id);
  EXPECT_EQ(8, rows[0].numbers.size);
  EXPECT_EQ(2u, rows[2].numbers.group_id);
  EXPECT_EQ(2u, rows[3].numbers.group_id);
  EXPECT_EQ(18'000, rows[2].numbers.size);
  EXPECT_EQ(rows[2].name, rows[3].title);
  EXPECT_EQ(0u, rows[2].location.find(L"18000 "));

  const qs_product_scan_performance performance = PerformanceOf(scan.get());
  EXPECT_EQ(6u, performance.candidates);
  EXPECT_EQ(5u, performance.sampled_items);
  EXPECT_EQ(3u, performance.hashed_items);
  EXPECT_EQ(1u, performance.unhashed_groups);
}

TEST(DuplicateScan, A_second_scan_with_the_cache_reports_the_same) {
  const RealTree tree;
  const RealTree profile;
  AddCopies(tree);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunDuplicateScan(scan.get(), tree.root(), profile.root()));
  const std::vector<std::wstring> cold = PathsOf(scan.get());
  EXPECT_TRUE(std::filesystem::exists(profile.Path(kCacheFile)));
  EXPECT_FALSE(std::filesystem::exists(profile.Path(std::wstring(kCacheFile) + L".tmp")));
  ASSERT_EQ(QS_OK, RunDuplicateScan(scan.get(), tree.root(), profile.root()));
  EXPECT_EQ(cold, PathsOf(scan.get()));
}

TEST(DuplicateScan, A_damaged_cache_is_as_good_as_none) {
  const RealTree tree;
  const RealTree profile;
  AddCopies(tree);
  profile.AddFile(kCacheFile, "FWDCACH3 and then nothing that makes sense");
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunDuplicateScan(scan.get(), tree.root(), profile.root()));
  EXPECT_EQ(4u, ReadRows(scan.get()).size());
}

TEST(DuplicateScan, A_profile_without_a_drive_means_a_scan_without_a_cache) {
  const RealTree tree;
  AddCopies(tree);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunDuplicateScan(scan.get(), tree.root(), L"profile"));
  EXPECT_EQ(4u, ReadRows(scan.get()).size());
  EXPECT_FALSE(std::filesystem::exists(L"profile"));
}

// Threads of the library end while other scans run. A cleanup that waits for a lock at thread exit
// would hang here.
TEST(DuplicateScan, Two_handles_that_scan_at_once_always_end) {
  const RealTree tree;
  const RealTree profile;
  AddCopies(tree);
  for (int round = 0; round < 50; ++round) {
    const ScanHandle first;
    const ScanHandle second;
    qs_status second_status = QS_BUSY;
    std::thread other([&] { second_status = RunDuplicateScan(second.get(), tree.root(), L""); });
    EXPECT_EQ(QS_OK, RunDuplicateScan(first.get(), tree.root(), profile.root()));
    other.join();
    ASSERT_EQ(QS_OK, second_status);
    ASSERT_EQ(PathsOf(first.get()), PathsOf(second.get()));
  }
}

TEST(DuplicateScan, A_cancel_ends_it_and_leaves_the_handle_usable) {
  const RealTree tree;
  AddCopies(tree);
  for (int i = 0; i < 8; ++i) {
    tree.AddSparseFile(L"large" + std::to_wstring(i) + L".bin", 400'000'000);
  }
  const ScanHandle scan;
  std::thread canceller([&] {
    // From the moment on in which file contents are read.
    while (Poll(scan.get()).path_published == 0 && Poll(scan.get()).state < QS_STATE_DONE) {
      std::this_thread::yield();
    }
    EXPECT_EQ(QS_OK, qs_product_scan_cancel(scan.get()));
  });
  EXPECT_EQ(QS_CANCELLED, RunDuplicateScan(scan.get(), tree.root(), L""));
  canceller.join();
  EXPECT_EQ(QS_STATE_CANCELLED, Poll(scan.get()).state);
  EXPECT_EQ(QS_OK, RunDuplicateScan(scan.get(), tree.Path(L"one"), L""));
}

}  // namespace
}  // namespace quastel::dll_test
