#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "scan_handle.h"

namespace quastel::dll_test {
namespace {

constexpr std::uint64_t kLimit = 10'485'760;

TEST(LargeFileScan, Only_what_is_above_the_limit_is_reported) {
  const RealTree tree;
  tree.AddSparseFile(L"exact.zip", kLimit);
  tree.AddSparseFile(L"media\\above.mp4", kLimit + 1);
  tree.AddFile(L"small.txt", "small");
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));

  const std::vector<ReportedRow> rows = ReadRows(scan.get());
  ASSERT_EQ(1u, rows.size());
  EXPECT_EQ(tree.Path(L"media\\above.mp4"), rows[0].path);
  EXPECT_EQ(L"above.mp4", rows[0].name);
  EXPECT_EQ(L"Media files", rows[0].title);
  EXPECT_EQ(tree.Path(L"media"), rows[0].location);
  EXPECT_EQ(0u, rows[0].parent_group_id);
  const qs_product_scan_row& row = rows[0].numbers;
  EXPECT_EQ(0u, row.item_id);
  EXPECT_EQ(4u, row.group_id);
  EXPECT_EQ(QS_ROW_LARGE_FILE, row.kind);
  EXPECT_EQ(static_cast<std::int64_t>(kLimit + 1), row.size);
  EXPECT_GT(row.modified, 504'911'232'000'000'000u);
  EXPECT_EQ(1u, row.deletable);
  EXPECT_EQ(0u, row.preselect);
  EXPECT_EQ(0u, row.deleted);
  EXPECT_EQ(QS_LARGE_MEDIA, row.large_class);
}

TEST(LargeFileScan, Its_counters_and_measures_fit_what_it_saw) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLimit + 5);
  tree.AddSparseFile(L"b.bin", kLimit + 7);
  tree.AddFile(L"c.txt", "12345");
  const ScanHandle scan;
  EXPECT_EQ(QS_STATE_IDLE, Poll(scan.get()).state);
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));

  const qs_product_scan_status status = Poll(scan.get());
  EXPECT_EQ(QS_STATE_DONE, status.state);
  EXPECT_EQ(QS_OK, status.status);
  EXPECT_EQ(0u, status.path_published);
  EXPECT_EQ(3u, status.files_visited);
  EXPECT_EQ(2 * kLimit + 17, status.bytes_visited);
  EXPECT_EQ(2 * kLimit + 12, status.total_bytes);
  EXPECT_EQ(2u, status.item_count);

  qs_product_scan_performance performance{};
  performance.size = sizeof(performance) - 1;
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_get_performance(scan.get(), &performance));
  performance.size = 500;
  ASSERT_EQ(QS_OK, qs_product_scan_get_performance(scan.get(), &performance));
  EXPECT_EQ(192u, performance.size);
  EXPECT_EQ(QS_SCAN_KIND_LARGE_FILES, performance.kind);
  EXPECT_EQ(3u, performance.files_visited);
  EXPECT_EQ(2 * kLimit + 17, performance.bytes_visited);
  EXPECT_EQ(2u, performance.row_count);
  EXPECT_EQ(2u, performance.item_count);
  EXPECT_EQ(QS_OK, performance.status);
  EXPECT_GE(performance.elapsed_us, performance.walk_us);
}

TEST(LargeFileScan, A_root_inside_another_is_walked_once) {
  const RealTree tree;
  tree.AddSparseFile(L"sub\\a.bin", kLimit + 1);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.Path(L"sub"), tree.root(), tree.root()}));
  EXPECT_EQ(1u, Poll(scan.get()).files_visited);
  EXPECT_EQ(1u, ReadRows(scan.get()).size());
}

TEST(LargeFileScan, Protected_folders_stay_out_of_the_report) {
  const RealTree tree;
  tree.AddSparseFile(L"Windows\\a.bin", kLimit + 1);
  tree.AddSparseFile(L"Users\\u\\AppData\\b.bin", kLimit + 1);
  tree.AddSparseFile(L"Users\\u\\c.bin", kLimit + 1);
  tree.AddSparseFile(L"pagefile.sys", kLimit + 1);
  const std::wstring home = tree.Path(L"Users\\u");
  const qs_char* const roots[] = {tree.root().c_str()};
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = roots;
  request.root_count = 1;
  request.user_home = home.c_str();
  request.system_root = tree.root().c_str();
  request.protect_system = 1;
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, qs_product_scan_start(scan.get(), &request));
  const std::vector<ReportedRow> rows = ReadRows(scan.get());
  ASSERT_EQ(1u, rows.size());
  EXPECT_EQ(L"c.bin", rows[0].name);
}

TEST(LargeFileScan, A_request_that_is_refused_leaves_the_report_as_it_was) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLimit + 1);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  qs_product_scan_request request{};
  request.size = 55;
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_start(scan.get(), &request));
  EXPECT_EQ(QS_INVALID_ARGUMENT, RunLargeFileScan(scan.get(), {}));
  EXPECT_EQ(QS_INVALID_ARGUMENT, RunLargeFileScan(scan.get(), {L""}));
  EXPECT_EQ(QS_STATE_DONE, Poll(scan.get()).state);
  EXPECT_EQ(1u, ReadRows(scan.get()).size());
}

TEST(LargeFileScan, A_row_beyond_the_last_is_not_found) {
  const ScanHandle scan;
  qs_product_scan_row row{};
  row.size = 42;
  EXPECT_EQ(QS_NOT_FOUND,
            qs_product_scan_report_row(scan.get(), 0, nullptr, 0, nullptr, nullptr, 0, nullptr,
                                       nullptr, 0, nullptr, nullptr, 0, nullptr, &row));
  EXPECT_EQ(42, row.size);
  std::uint64_t parent = 0;
  EXPECT_EQ(QS_NOT_FOUND, qs_product_scan_report_row_parent_group_id(scan.get(), 0, &parent));
}

TEST(LargeFileScan, A_link_to_a_folder_is_not_followed) {
  const RealTree scratch;
  const std::wstring tree = LinkedTree(scratch);
  const ScanHandle scan;
  ASSERT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree}));
  EXPECT_EQ(1u, Poll(scan.get()).files_visited);
}

TEST(LargeFileScan, Null_handles_are_refused) {
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_create(nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_destroy(nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_start(nullptr, nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_cancel(nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_product_scan_poll(nullptr, nullptr));
}

}  // namespace
}  // namespace quastel::dll_test
