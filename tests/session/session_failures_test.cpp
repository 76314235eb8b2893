// Memory and locks that fail in a session: what every call answers, and that the session stays
// usable.

#include <algorithm>
#include <memory>
#include <optional>

#include "faults/allocation_faults.h"
#include "faults/lock_faults.h"
#include "faults/nth_time.h"
#include "session/session_fixture.h"
#include "support/sweep_record.h"

namespace quastel::session_tests {
namespace {

using faults::AllocationFaults;
using faults::kTooMany;
using faults::LockFaults;

TEST(SessionFailures, Creating_without_memory_fails_and_stores_null) {
  SimulatedWindows machine;
  std::uint64_t rounds = 0;
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE(nth);
      int canary = 0;
      auto* session = reinterpret_cast<qs_session*>(&canary);
      qs_status status = QS_OK;
      std::uint64_t injected = 0;
      {
        AllocationFaults memory(nth, repeat);
        status = qs_session_create(&session);
        injected = memory.injected();
      }
      if (injected == 0) {
        EXPECT_EQ(status, QS_OK);
        EXPECT_EQ(qs_session_destroy(session), QS_OK);
        break;
      }
      ++rounds;
      ASSERT_EQ(status, QS_FAILED);
      EXPECT_EQ(session, nullptr);
    }
  }
  EXPECT_GE(rounds, 2u);
  EXPECT_EQ(machine.fallible_calls(), 0u);
  support::RecordNoCalls("CreateSession");
  support::RecordSweep("CreateSession", support::Swept::kMemoryFailures, rounds);
}

class SessionFailures : public SessionTest, public ::testing::WithParamInterface<Repeat> {
 protected:
  SessionFailures() {
    AddFiles(2);
    AddFile(u"sub\\file with a longer name", 3);
    AddFile(u"sub\\deep\\file with another longer name", 4);
  }

  // After a scan that failed: the report is not one to clean, and the next scan is a whole one.
  void ExpectFailedAndUsable(qs_status status) {
    EXPECT_EQ(status, QS_FAILED);
    EXPECT_EQ(ScanOf(session_).state, QS_STATE_FAILED);
    EXPECT_EQ(ScanOf(session_).status, QS_FAILED);
    EXPECT_EQ(ScanOf(session_).row_count, RowCountOf(session_));
    EXPECT_EQ(machine_.open_handles(), 0u);
    EXPECT_EQ(session_.Clean({}), QS_UNSUPPORTED);
    EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK) << "nothing runs that could be cancelled";
    EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 4, 10, 4, QS_OK}));
  }
};

TEST_P(SessionFailures, A_lock_that_fails_at_any_place_fails_the_scan) {
  for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
    SCOPED_TRACE(nth);
    qs_status status = QS_OK;
    std::uint64_t injected = 0;
    const Text root = u"C:\\t";
    {
      LockFaults locks(nth, GetParam());
      status = qs_session_start_scan(session_, root.c_str(), QS_SESSION_ALL_FILES);
      injected = locks.injected();
    }
    if (injected == 0) {
      EXPECT_EQ(status, QS_OK);
      // Two for each of four files, the start and the finish.
      EXPECT_GT(nth, 10u);
      return;
    }
    ExpectFailedAndUsable(status);
    ASSERT_FALSE(HasFailure());
  }
  ADD_FAILURE() << "the sweep does not end";
}

TEST_P(SessionFailures, Memory_that_runs_out_anywhere_fails_the_scan_and_keeps_whole_rows) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  const std::vector<Row> full = ReadReport(session_);
  std::size_t most_rows = 0;
  for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
    SCOPED_TRACE(nth);
    qs_status status = QS_OK;
    std::uint64_t injected = 0;
    {
      AllocationFaults memory(nth, GetParam());
      status = qs_session_start_scan(session_, u"C:\\t", QS_SESSION_ALL_FILES);
      injected = memory.injected();
    }
    if (injected == 0) {
      EXPECT_EQ(status, QS_OK);
      EXPECT_EQ(ReadReport(session_), full);
      EXPECT_GT(nth, 5u);
      EXPECT_GE(most_rows, 2u) << "what was found before the failure can be read";
      return;
    }
    const std::vector<Row> rows = ReadReport(session_);
    ASSERT_LE(rows.size(), full.size());
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), full.begin()));
    most_rows = std::max(most_rows, rows.size());
    ExpectFailedAndUsable(status);
    ASSERT_FALSE(HasFailure());
  }
  ADD_FAILURE() << "the sweep does not end";
}

// The path buffers of a walk are kept, so few files need memory of their own: a row always does.
TEST_P(SessionFailures, A_file_whose_row_finds_no_memory_is_the_last_one_of_the_scan) {
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", std::nullopt);
  std::uint64_t conversions = 0;
  std::unique_ptr<AllocationFaults> memory;
  machine_.SetHook([&](const CallRecord& record) {
    // From the third file on, the first of the second folder: what comes next is its callback.
    if (record.call == Call::kToLocalFileTime && ++conversions == 2) {
      memory = std::make_unique<AllocationFaults>(1, GetParam());
    }
  });
  const qs_status status = qs_session_start_scan(session_, u"C:\\t", QS_SESSION_ALL_FILES);
  const std::uint64_t injected = memory == nullptr ? 0 : memory->injected();
  memory.reset();
  machine_.SetHook(nullptr);
  EXPECT_GE(injected, 1u);
  EXPECT_LE(RowCountOf(session_), 2u);
  ExpectFailedAndUsable(status);
}

// The files of the root have paths of one length, for which there is room from the first one on:
// what needs memory behind the conversion of a time is a row. The third has a time that is
// converted by itself.
TEST_P(SessionFailures, A_row_without_memory_counts_for_more_than_a_cancel_behind_it) {
  AddFiles(4);
  AddFile(u"f002", 3, {.last_write = 0});
  std::uint64_t conversions = 0;
  std::unique_ptr<AllocationFaults> memory;
  std::uint64_t injected = 0;
  bool cancelled = false;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kToLocalFileTime && ++conversions == 2) {
      memory = std::make_unique<AllocationFaults>(1, GetParam());
    } else if (memory != nullptr && record.call == Call::kFindClose) {
      injected = memory->injected();
      memory.reset();
      cancelled = true;
      EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK);
    }
  });
  const qs_status status = qs_session_start_scan(session_, u"C:\\t", QS_SESSION_ALL_FILES);
  machine_.SetHook(nullptr);
  EXPECT_TRUE(cancelled);
  EXPECT_GE(injected, 1u);
  EXPECT_EQ(status, QS_FAILED);
  EXPECT_EQ(ScanOf(session_).state, QS_STATE_FAILED);
  EXPECT_EQ(RowCountOf(session_), 2u);
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK) << "nor is the cancel kept for the next scan";
}

TEST_P(SessionFailures, Every_query_that_locks_fails_with_its_lock) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ASSERT_EQ(session_.Clean({0}), QS_OK);
  const std::string before = EverythingOf(session_);
  Char path[300] = {};
  Char name[300] = {};
  std::uint64_t number = 0;
  qs_session_row row = {};
  qs_session_scan_status scan = {};
  qs_session_clean_status clean = {};
  qs_status answers[7] = {};
  {
    LockFaults locks(1, Repeat::kFromThenOn);
    answers[0] = qs_session_poll_scan(session_, &scan);
    answers[1] = qs_session_scan_current_path(session_, path, 300, &number);
    answers[2] = qs_session_report_count(session_, &number);
    answers[3] = qs_session_report_row(session_, 0, path, 300, nullptr, name, 300, nullptr, &row);
    answers[4] = qs_session_cancel_scan(session_);
    answers[5] = qs_session_cancel_clean(session_);
    answers[6] = qs_session_poll_clean(session_, &clean);
  }
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(answers[i], QS_FAILED) << i;
  }
  EXPECT_EQ(answers[6], QS_OK) << "it reads without a lock";
  EXPECT_EQ(clean.state, QS_STATE_DONE);
  EXPECT_EQ(EverythingOf(session_), before);
}

TEST_P(SessionFailures, No_query_needs_memory) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  Char path[300] = {};
  Char name[300] = {};
  std::uint64_t number = 0;
  qs_session_row row = {};
  qs_session_scan_status scan = {};
  qs_session_clean_status clean = {};
  qs_status answers[7] = {};
  {
    AllocationFaults memory(1, GetParam());
    answers[0] = qs_session_poll_scan(session_, &scan);
    answers[1] = qs_session_scan_current_path(session_, path, 300, &number);
    answers[2] = qs_session_report_count(session_, &number);
    answers[3] = qs_session_report_row(session_, 3, path, 300, nullptr, name, 300, nullptr, &row);
    answers[4] = qs_session_cancel_scan(session_);
    answers[5] = qs_session_cancel_clean(session_);
    answers[6] = qs_session_poll_clean(session_, &clean);
  }
  for (const qs_status answer : answers) {
    EXPECT_EQ(answer, QS_OK);
  }
  EXPECT_EQ(Text(name), u"file with another longer name");
}

TEST_P(SessionFailures, A_session_whose_lock_fails_is_destroyed_later_at_the_latest) {
  qs_session* session = nullptr;
  ASSERT_EQ(qs_session_create(&session), QS_OK);
  ASSERT_EQ(qs_session_start_scan(session, u"C:\\t", 0), QS_OK);
  qs_status status = 99;
  {
    LockFaults locks(1, Repeat::kFromThenOn);
    status = qs_session_destroy(session);
  }
  if (status != QS_OK) {
    EXPECT_EQ(status, QS_FAILED);
    EXPECT_EQ(RowCountOf(session), 4u);
    EXPECT_EQ(qs_session_destroy(session), QS_OK);
  }
}

INSTANTIATE_TEST_SUITE_P(All, SessionFailures,
                         ::testing::Values(Repeat::kOnce, Repeat::kFromThenOn), RepeatName());

}  // namespace
}  // namespace quastel::session_tests
