#include <new>
#include <stdexcept>

#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

struct OutcomeCase {
  const char* name;
  OwnKindScan::Body body;  // after one row was appended
  qs_status status;
  std::uint32_t state;
};
void PrintTo(const OutcomeCase& c, std::ostream* out) {
  *out << c.name;
}

OwnKindScan::Body Return(qs_status status) {
  return [status](ProductScan&, const OwnedRequest&) { return status; };
}
OwnKindScan::Body CancelAndReturn(qs_status status) {
  return [status](ProductScan& scan, const OwnedRequest&) {
    EXPECT_FALSE(scan.IsCancelled());
    EXPECT_EQ(*scan.cancel_flag(), 0u);
    scan.Cancel();
    EXPECT_TRUE(scan.IsCancelled());
    EXPECT_NE(*scan.cancel_flag(), 0u);
    return status;
  };
}
template <typename Exception>
OwnKindScan::Body Throw(Exception exception) {
  return [exception](ProductScan&, const OwnedRequest&) -> qs_status { throw exception; };
}
template <typename Exception>
OwnKindScan::Body CancelAndThrow(Exception exception) {
  return [exception](ProductScan& scan, const OwnedRequest&) -> qs_status {
    scan.Cancel();
    throw exception;
  };
}

class ScanOutcome : public ::testing::TestWithParam<OutcomeCase> {};

TEST_P(ScanOutcome, Is_recorded_and_leaves_the_rows_readable_and_the_handle_usable) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest& request) {
    scan.ReportProgress(u"C:\\seen", 9);
    scan.AppendRow(RowOf(RowKind::kJunk, 3, 9, u"C:\\seen"));
    return GetParam().body(scan, request);
  }),
            GetParam().status);
  EXPECT_EQ(own.Poll().state, GetParam().state);
  EXPECT_EQ(own.Poll().status, GetParam().status);
  EXPECT_EQ(own.Poll().files_visited, 1u);
  EXPECT_EQ(own.Poll().bytes_visited, 9u);
  EXPECT_EQ(own.Poll().item_count, 1u);
  EXPECT_EQ(own.Performance().status, GetParam().status);
  EXPECT_EQ(own.Performance().row_count, 1u);
  EXPECT_EQ(own.Performance().files_visited, 1u);
  const std::vector<Row> rows = own.Report();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].path, u"C:\\seen");
  EXPECT_FALSE(own.scan.IsCancelled()) << "a finished scan clears its cancel";

  EXPECT_EQ(own.Run(Return(QS_OK)), QS_OK);
  EXPECT_EQ(own.Poll().state, QS_STATE_DONE);
  EXPECT_EQ(own.scan.RowCount(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    All, ScanOutcome,
    ::testing::Values(
        OutcomeCase{"success", Return(QS_OK), QS_OK, QS_STATE_DONE},
        OutcomeCase{"invalid_argument", Return(QS_INVALID_ARGUMENT), QS_INVALID_ARGUMENT,
                    QS_STATE_FAILED},
        OutcomeCase{"buffer_too_small", Return(QS_BUFFER_TOO_SMALL), QS_BUFFER_TOO_SMALL,
                    QS_STATE_FAILED},
        OutcomeCase{"failed", Return(QS_FAILED), QS_FAILED, QS_STATE_FAILED},
        OutcomeCase{"not_found", Return(QS_NOT_FOUND), QS_NOT_FOUND, QS_STATE_FAILED},
        OutcomeCase{"cancelled_without_a_request", Return(QS_CANCELLED), QS_CANCELLED,
                    QS_STATE_CANCELLED},
        OutcomeCase{"unsupported", Return(QS_UNSUPPORTED), QS_UNSUPPORTED, QS_STATE_FAILED},
        OutcomeCase{"busy", Return(QS_BUSY), QS_BUSY, QS_STATE_FAILED},
        OutcomeCase{"success_while_a_cancel_is_pending", CancelAndReturn(QS_OK), QS_CANCELLED,
                    QS_STATE_CANCELLED},
        OutcomeCase{"error_while_a_cancel_is_pending", CancelAndReturn(QS_FAILED), QS_CANCELLED,
                    QS_STATE_CANCELLED},
        OutcomeCase{"not_found_while_a_cancel_is_pending", CancelAndReturn(QS_NOT_FOUND),
                    QS_CANCELLED, QS_STATE_CANCELLED},
        OutcomeCase{"exception", Throw(std::runtime_error("no")), QS_FAILED, QS_STATE_FAILED},
        OutcomeCase{"out_of_memory", Throw(std::bad_alloc()), QS_FAILED, QS_STATE_FAILED},
        OutcomeCase{"something_thrown_that_is_no_exception", Throw(42), QS_FAILED, QS_STATE_FAILED},
        OutcomeCase{"exception_while_a_cancel_is_pending", CancelAndThrow(std::runtime_error("no")),
                    QS_CANCELLED, QS_STATE_CANCELLED},
        OutcomeCase{"out_of_memory_while_a_cancel_is_pending", CancelAndThrow(std::bad_alloc()),
                    QS_CANCELLED, QS_STATE_CANCELLED}),
    support::CaseName());

TEST(ScanDispatch, Runs_the_runner_of_the_kind_and_no_other) {
  SimulatedWindows machine;
  ProductScan scan(ScanRunners{
      [](ProductScan&, const OwnedRequest&) -> qs_status { return QS_NOT_FOUND; },
      [](ProductScan&, const OwnedRequest&) -> qs_status { return QS_FAILED; },
      [](ProductScan&, const OwnedRequest&) -> qs_status { return QS_OK; },
  });
  const qs_status expected[3] = {QS_NOT_FOUND, QS_FAILED, QS_OK};
  for (std::uint32_t kind = 0; kind <= 2; ++kind) {
    Request request = Request::LargeFiles({u"C:\\"});
    request.kind = kind;
    EXPECT_EQ(scan.Start(request.Get()), expected[kind]) << kind;
  }
}

TEST(ScanDispatch, A_kind_without_a_runner_ends_as_unsupported_and_failed) {
  SimulatedWindows machine;
  ProductScan scan(ScanRunners{nullptr, nullptr, nullptr});
  for (std::uint32_t kind = 0; kind <= 2; ++kind) {
    Request request = Request::LargeFiles({u"C:\\"});
    request.kind = kind;
    EXPECT_EQ(scan.Start(request.Get()), QS_UNSUPPORTED);
    qs_product_scan_status status = {};
    scan.Poll(status);
    EXPECT_EQ(status.state, QS_STATE_FAILED);
    EXPECT_EQ(status.status, QS_UNSUPPORTED);
    EXPECT_EQ(scan.RowCount(), 0u);
    qs_product_scan_performance performance = {};
    scan.CopyPerformance(performance);
    EXPECT_EQ(performance.kind, kind);
    EXPECT_EQ(performance.status, QS_UNSUPPORTED);
  }
}

TEST(ScanDispatch, A_kind_without_a_runner_is_cancelled_in_its_hold_like_any_other) {
  SimulatedWindows machine;
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"25");
  ProductScan scan(ScanRunners{nullptr, nullptr, nullptr});
  InsideCall(machine, Call::kSleepMilliseconds, 1, [&] { scan.Cancel(); });
  Request request = Request::LargeFiles({u"C:\\"});
  EXPECT_EQ(scan.Start(request.Get()), QS_CANCELLED);
  machine.SetHook(nullptr);
}

TEST(ScanRetirement, Is_refused_inside_a_scan_and_final_afterwards) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([](ProductScan& scan, const OwnedRequest&) {
    EXPECT_FALSE(scan.TryRetire());
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Run(Return(QS_OK)), QS_OK) << "a refused retirement changes nothing";
  EXPECT_TRUE(own.scan.TryRetire());
  EXPECT_EQ(own.Run(Return(QS_OK)), QS_BUSY);
}

}  // namespace
}  // namespace quastel::scan_tests
