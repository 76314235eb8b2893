// A scan on one thread and its caller's interface on another.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"
#include "scan_handle.h"
#include "text_query.h"

namespace quastel::dll_test {
namespace {

using std::chrono::steady_clock;

// Delays every scan of this process for as long as it lives.
class ScanHold {
 public:
  explicit ScanHold(const wchar_t* milliseconds) { Set(milliseconds); }
  ~ScanHold() { Set(L""); }
  ScanHold(const ScanHold&) = delete;
  ScanHold& operator=(const ScanHold&) = delete;

 private:
  static void Set(const wchar_t* value) {
    EXPECT_EQ(0, _wputenv_s(L"QUASTEL_SCAN_HOLD_MS", value));
  }
};

void WaitUntilRunning(qs_product_scan* scan) {
  const auto limit = steady_clock::now() + std::chrono::seconds(30);
  while (Poll(scan).state != QS_STATE_RUNNING) {
    ASSERT_LT(steady_clock::now(), limit);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

std::wstring CurrentPath(qs_product_scan* scan) {
  wchar_t buffer[1024];
  std::uint64_t needed = 0;
  EXPECT_EQ(QS_OK, qs_product_scan_current_path(scan, buffer, 1024, &needed));
  return std::wstring(buffer, needed - 1);
}

TEST(ScanThreads, Every_query_answers_while_a_scan_is_held) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLarge);
  const ScanHold hold(L"5000");
  const ScanHandle scan;
  qs_status result = QS_FAILED;
  std::thread runner([&] { result = RunLargeFileScan(scan.get(), {tree.root()}); });
  WaitUntilRunning(scan.get());

  const qs_product_scan_status status = Poll(scan.get());
  EXPECT_EQ(QS_STATE_RUNNING, status.state);
  EXPECT_EQ(QS_OK, status.status);
  EXPECT_EQ(L"", CurrentPath(scan.get()));
  EXPECT_EQ(L"", QueryText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
              return qs_product_scan_current_group(scan.get(), out, capacity, needed);
            }));
  qs_product_scan_performance performance{};
  performance.size = sizeof(performance);
  EXPECT_EQ(QS_OK, qs_product_scan_get_performance(scan.get(), &performance));
  EXPECT_EQ(QS_SCAN_KIND_LARGE_FILES, performance.kind);
  std::uint64_t count = 99;
  EXPECT_EQ(QS_OK, qs_product_scan_report_count(scan.get(), &count));
  EXPECT_EQ(0u, count);
  EXPECT_EQ(QS_NOT_FOUND, qs_product_scan_report_row_parent_group_id(scan.get(), 0, &count));

  // Neither a second start nor the end of the handle gets in between.
  EXPECT_EQ(QS_BUSY, RunLargeFileScan(scan.get(), {tree.root()}));
  EXPECT_EQ(QS_BUSY, qs_product_scan_destroy(scan.get()));

  const auto cancelled_at = steady_clock::now();
  EXPECT_EQ(QS_OK, qs_product_scan_cancel(scan.get()));
  runner.join();
  EXPECT_LT(steady_clock::now() - cancelled_at, std::chrono::seconds(2));
  EXPECT_EQ(QS_CANCELLED, result);
  EXPECT_EQ(QS_STATE_CANCELLED, Poll(scan.get()).state);
  EXPECT_EQ(QS_CANCELLED, Poll(scan.get()).status);
  EXPECT_TRUE(ReadRows(scan.get()).empty());
}

TEST(ScanThreads, A_handle_is_usable_again_after_a_cancelled_scan) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLarge);
  const ScanHandle scan;
  {
    const ScanHold hold(L"5000");
    std::thread runner([&] { (void)RunLargeFileScan(scan.get(), {tree.root()}); });
    WaitUntilRunning(scan.get());
    EXPECT_EQ(QS_OK, qs_product_scan_cancel(scan.get()));
    runner.join();
  }
  EXPECT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  EXPECT_EQ(1u, ReadRows(scan.get()).size());
}

TEST(ScanThreads, A_hold_delays_the_scan_and_then_lets_it_run) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLarge);
  const ScanHold hold(L"200");
  const ScanHandle scan;
  const auto begin = steady_clock::now();
  EXPECT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  EXPECT_GE(steady_clock::now() - begin, std::chrono::milliseconds(180));
  EXPECT_EQ(1u, ReadRows(scan.get()).size());
}

TEST(ScanThreads, A_cancel_without_a_running_scan_has_no_effect) {
  const RealTree tree;
  tree.AddSparseFile(L"a.bin", kLarge);
  const ScanHandle scan;
  EXPECT_EQ(QS_OK, qs_product_scan_cancel(scan.get()));
  EXPECT_EQ(QS_OK, RunLargeFileScan(scan.get(), {tree.root()}));
  EXPECT_EQ(1u, ReadRows(scan.get()).size());
}

TEST(ScanThreads, Rows_can_be_read_while_they_are_found) {
  constexpr int kFolders = 20;
  constexpr int kFilesInEach = 60;
  const RealTree tree;
  for (int folder = 0; folder < kFolders; ++folder) {
    const std::wstring name = L"d" + std::to_wstring(folder);
    for (int file = 0; file < kFilesInEach; ++file) {
      tree.AddFile(name + L"\\f" + std::to_wstring(file), "x");
    }
    tree.AddSparseFile(name + L"\\big.iso", kLarge);
  }
  const ScanHandle scan;
  const ScanHold hold(L"100");
  qs_status result = QS_FAILED;
  std::thread runner([&] { result = RunLargeFileScan(scan.get(), {tree.root()}); });
  WaitUntilRunning(scan.get());

  std::vector<std::wstring> read;
  std::uint64_t files = 0;
  bool running = true;
  while (running) {
    const qs_product_scan_status status = Poll(scan.get());
    running = status.state == QS_STATE_RUNNING;
    EXPECT_GE(status.files_visited, files);
    files = status.files_visited;
    if (const std::wstring path = CurrentPath(scan.get()); !path.empty()) {
      EXPECT_EQ(0u, path.find(tree.root()));
    }
    std::uint64_t count = 0;
    EXPECT_EQ(QS_OK, qs_product_scan_report_count(scan.get(), &count));
    ASSERT_GE(count, read.size());
    while (read.size() < count) {
      read.push_back(ReadRow(scan.get(), read.size()).path);
    }
  }
  runner.join();
  EXPECT_EQ(QS_OK, result);
  EXPECT_EQ(std::uint64_t{kFolders * (kFilesInEach + 1)}, files);
  const std::vector<ReportedRow> rows = ReadRows(scan.get());
  ASSERT_EQ(std::size_t{kFolders}, rows.size());
  ASSERT_EQ(rows.size(), read.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].path, read[i]);
    EXPECT_EQ(i, rows[i].numbers.item_id);
  }
}

TEST(ScanThreads, Two_handles_scan_at_the_same_time) {
  const RealTree tree;
  tree.AddSparseFile(L"a\\a.bin", kLarge);
  tree.AddSparseFile(L"b\\b.bin", kLarge);
  const ScanHandle first;
  const ScanHandle second;
  const ScanHold hold(L"100");
  qs_status first_result = QS_FAILED;
  qs_status second_result = QS_FAILED;
  std::thread one([&] { first_result = RunLargeFileScan(first.get(), {tree.Path(L"a")}); });
  std::thread two([&] { second_result = RunLargeFileScan(second.get(), {tree.Path(L"b")}); });
  one.join();
  two.join();
  EXPECT_EQ(QS_OK, first_result);
  EXPECT_EQ(QS_OK, second_result);
  ASSERT_EQ(1u, ReadRows(first.get()).size());
  ASSERT_EQ(1u, ReadRows(second.get()).size());
  EXPECT_EQ(L"a.bin", ReadRows(first.get())[0].name);
  EXPECT_EQ(L"b.bin", ReadRows(second.get())[0].name);
}

}  // namespace
}  // namespace quastel::dll_test
