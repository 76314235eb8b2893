#include <cstring>
#include <thread>

#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

// A machine with one large file in C:\data.
class ProductScanHandle : public ::testing::Test {
 protected:
  ProductScanHandle() { machine_.AddSizedFile(u"C:\\data\\a.zip", kLarge); }

  static Request Data() { return Request::LargeFiles({u"C:\\data"}); }

  SimulatedWindows machine_;
};

TEST_F(ProductScanHandle, Creating_without_an_out_pointer_is_an_invalid_argument) {
  EXPECT_EQ(qs_product_scan_create(nullptr), QS_INVALID_ARGUMENT);
}

TEST_F(ProductScanHandle, A_new_handle_is_idle_and_all_zero_but_the_performance_size) {
  ScanHandle scan;
  qs_product_scan_status status = Poll(scan);
  const qs_product_scan_status zero_status = {};
  EXPECT_EQ(std::memcmp(&status, &zero_status, sizeof(status)), 0);

  qs_product_scan_performance performance = PerformanceOf(scan);
  EXPECT_EQ(performance.size, 192u);
  performance.size = 0;
  const qs_product_scan_performance zero_performance = {};
  EXPECT_EQ(std::memcmp(&performance, &zero_performance, sizeof(performance)), 0);

  EXPECT_EQ(RowCountOf(scan), 0u);
  EXPECT_EQ(CurrentPathOf(scan), u"");
  EXPECT_EQ(CurrentGroupOf(scan), u"");
}

TEST_F(ProductScanHandle, A_null_handle_is_an_invalid_argument_for_every_function) {
  Request request = Data();
  qs_product_scan_status status = {};
  qs_product_scan_performance performance = {};
  performance.size = sizeof(performance);
  qs_product_scan_row row = {};
  std::uint64_t number = 0;
  Char text[8] = {};
  EXPECT_EQ(qs_product_scan_destroy(nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_start(nullptr, request.Get()), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_cancel(nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_poll(nullptr, &status), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_current_path(nullptr, text, 8, &number), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_current_group(nullptr, text, 8, &number), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_get_performance(nullptr, &performance), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_report_count(nullptr, &number), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_report_row(nullptr, 0, text, 8, nullptr, text, 8, nullptr, text, 8,
                                       nullptr, text, 8, nullptr, &row),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_report_row_parent_group_id(nullptr, 0, &number), QS_INVALID_ARGUMENT);
}

TEST_F(ProductScanHandle, A_null_record_is_an_invalid_argument) {
  ScanHandle scan;
  ASSERT_EQ(scan.Start(Data()), QS_OK);
  EXPECT_EQ(qs_product_scan_poll(scan, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_get_performance(scan, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_report_count(scan, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_report_row(scan, 0, nullptr, 0, nullptr, nullptr, 0, nullptr, nullptr,
                                       0, nullptr, nullptr, 0, nullptr, nullptr),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_report_row_parent_group_id(scan, 0, nullptr), QS_INVALID_ARGUMENT);
}

TEST_F(ProductScanHandle, Destroying_inside_a_start_is_busy_and_leaves_the_handle_usable) {
  ScanHandle scan;
  qs_status destroyed = 99;
  InsideCall(machine_, Call::kFindNext, 1,
             [&] { std::thread([&] { destroyed = qs_product_scan_destroy(scan); }).join(); });
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(destroyed, QS_BUSY);
  EXPECT_EQ(RowCountOf(scan), 1u);
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  EXPECT_EQ(RowCountOf(scan), 1u);
}

TEST_F(ProductScanHandle, Destroying_inside_a_start_is_busy_on_the_scanning_thread_too) {
  ScanHandle scan;
  qs_status destroyed = 99;
  InsideCall(machine_, Call::kFindNext, 1, [&] { destroyed = qs_product_scan_destroy(scan); });
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(destroyed, QS_BUSY);
}

TEST_F(ProductScanHandle, A_second_start_is_busy_and_disturbs_nothing) {
  ScanHandle scan;
  qs_status second = 99;
  InsideCall(machine_, Call::kFindNext, 1, [&] {
    std::thread([&] { second = scan.Start(Request::LargeFiles({u"C:\\elsewhere"})); }).join();
  });
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(second, QS_BUSY);
  EXPECT_EQ(PathsOf(ReadReport(scan)), std::vector<Text>{u"C:\\data\\a.zip"});
}

TEST_F(ProductScanHandle, A_busy_handle_answers_busy_before_it_looks_at_the_request) {
  ScanHandle scan;
  qs_status no_request = 99;
  qs_status short_request = 99;
  InsideCall(machine_, Call::kFindNext, 1, [&] {
    no_request = qs_product_scan_start(scan, nullptr);
    Request request = Data();
    request.size = 0;
    short_request = scan.Start(request);
  });
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(no_request, QS_BUSY);
  EXPECT_EQ(short_request, QS_BUSY);
}

TEST_F(ProductScanHandle, A_handle_scans_while_another_one_does) {
  ScanHandle outer;
  ScanHandle inner;
  machine_.AddSizedFile(u"C:\\other\\b.zip", kLarge);
  qs_status inner_status = 99;
  InsideCall(machine_, Call::kFindNext, 1,
             [&] { inner_status = inner.Start(Request::LargeFiles({u"C:\\other"})); });
  EXPECT_EQ(outer.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(inner_status, QS_OK);
  EXPECT_EQ(PathsOf(ReadReport(outer)), std::vector<Text>{u"C:\\data\\a.zip"});
  EXPECT_EQ(PathsOf(ReadReport(inner)), std::vector<Text>{u"C:\\other\\b.zip"});
}

TEST_F(ProductScanHandle, A_cancel_goes_to_its_own_handle_only) {
  ScanHandle outer;
  ScanHandle inner;
  InsideCall(machine_, Call::kFindNext, 1, [&] { qs_product_scan_cancel(inner); });
  EXPECT_EQ(outer.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
}

TEST_F(ProductScanHandle, Cancelling_while_nothing_runs_succeeds_and_does_nothing) {
  ScanHandle scan;
  EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
  EXPECT_EQ(Poll(scan).state, QS_STATE_IDLE);
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  const std::string before = EverythingOf(scan);
  EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
  EXPECT_EQ(EverythingOf(scan), before);
  EXPECT_EQ(scan.Start(Data()), QS_OK) << "the cancel must not wait for the next scan";
}

TEST_F(ProductScanHandle, A_cancelled_handle_scans_again) {
  ScanHandle scan;
  InsideCall(machine_, Call::kFindNext, 1, [&] { EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK); });
  EXPECT_EQ(scan.Start(Data()), QS_CANCELLED);
  EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  EXPECT_EQ(Poll(scan).state, QS_STATE_DONE);
  EXPECT_EQ(RowCountOf(scan), 1u);
}

TEST_F(ProductScanHandle, The_state_goes_from_idle_to_running_to_done) {
  ScanHandle scan;
  EXPECT_EQ(Poll(scan).state, QS_STATE_IDLE);
  qs_product_scan_status inside = {};
  InsideCall(machine_, Call::kFindNext, 1, [&] { inside = Poll(scan); });
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(inside.state, QS_STATE_RUNNING);
  EXPECT_EQ(inside.status, QS_OK);
  EXPECT_EQ(Poll(scan).state, QS_STATE_DONE);
  EXPECT_EQ(Poll(scan).status, QS_OK);
}

TEST_F(ProductScanHandle, A_new_start_discards_the_old_report_before_anything_is_found) {
  ScanHandle scan;
  ASSERT_EQ(scan.Start(Data()), QS_OK);
  ASSERT_EQ(CurrentPathOf(scan), u"C:\\data\\a.zip");
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"25");

  std::uint64_t rows = 99;
  Text path = u"?";
  qs_product_scan_status status = {};
  qs_product_scan_performance performance = {};
  InsideCall(machine_, Call::kSleepMilliseconds, 1, [&] {
    rows = RowCountOf(scan);
    path = CurrentPathOf(scan);
    status = Poll(scan);
    performance = PerformanceOf(scan);
  });
  EXPECT_EQ(scan.Start(Data()), QS_OK);
  machine_.SetHook(nullptr);

  EXPECT_EQ(rows, 0u);
  EXPECT_EQ(path, u"");
  qs_product_scan_status fresh_status = {};
  fresh_status.state = QS_STATE_RUNNING;
  EXPECT_EQ(std::memcmp(&status, &fresh_status, sizeof(status)), 0);
  qs_product_scan_performance fresh_performance = {};
  fresh_performance.size = 192;
  fresh_performance.kind = QS_SCAN_KIND_LARGE_FILES;
  EXPECT_EQ(std::memcmp(&performance, &fresh_performance, sizeof(performance)), 0);
  EXPECT_EQ(RowCountOf(scan), 1u);
  EXPECT_EQ(ReadRow(scan, 0).numbers.item_id, 0u);
}

}  // namespace
}  // namespace quastel::scan_tests
