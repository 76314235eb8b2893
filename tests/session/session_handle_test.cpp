#include <thread>

#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

class SessionHandleTest : public SessionTest {
 protected:
  SessionHandleTest() { AddFiles(3); }
};

TEST_F(SessionHandleTest, Creating_without_an_out_pointer_is_an_invalid_argument) {
  EXPECT_EQ(qs_session_create(nullptr), QS_INVALID_ARGUMENT);
}

TEST_F(SessionHandleTest, A_new_session_is_idle_and_all_zero) {
  EXPECT_EQ(ScanOf(session_), ScanBlock{});
  EXPECT_EQ(CleanOf(session_), CleanBlock{});
  EXPECT_EQ(RowCountOf(session_), 0u);
  EXPECT_EQ(CurrentPathOf(session_), u"");
}

TEST_F(SessionHandleTest, A_null_session_is_an_invalid_argument_for_every_function) {
  qs_session_scan_status scan = {};
  qs_session_clean_status clean = {};
  qs_session_row row = {};
  std::uint64_t number = 0;
  Char text[8] = {};
  EXPECT_EQ(qs_session_destroy(nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_scan(nullptr, u"C:\\t", 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_poll_scan(nullptr, &scan), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_cancel_scan(nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_scan_current_path(nullptr, text, 8, &number), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_report_count(nullptr, &number), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_report_row(nullptr, 0, text, 8, &number, text, 8, &number, &row),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_clean(nullptr, &number, 1), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_clean(nullptr, nullptr, 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_poll_clean(nullptr, &clean), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_cancel_clean(nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(number, 0u);
}

TEST_F(SessionHandleTest, A_null_record_is_an_invalid_argument) {
  ScanTree();
  EXPECT_EQ(qs_session_poll_scan(session_, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_poll_clean(session_, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_report_count(session_, nullptr), QS_INVALID_ARGUMENT);
}

TEST_F(SessionHandleTest, A_row_query_without_a_record_stores_nothing_whatever_the_index) {
  ScanTree();
  for (const std::uint64_t index : {std::uint64_t{0}, std::uint64_t{3}, UINT64_MAX}) {
    SCOPED_TRACE(index);
    Char path[64] = {0xA5A5};
    Char name[64] = {0xA5A5};
    std::uint64_t path_needed = 11;
    std::uint64_t name_needed = 22;
    EXPECT_EQ(qs_session_report_row(session_, index, path, 64, &path_needed, name, 64, &name_needed,
                                    nullptr),
              QS_INVALID_ARGUMENT);
    EXPECT_EQ(path[0], 0xA5A5);
    EXPECT_EQ(name[0], 0xA5A5);
    EXPECT_EQ(path_needed, 11u);
    EXPECT_EQ(name_needed, 22u);
  }
}

TEST_F(SessionHandleTest, Destroying_frees_a_session_with_its_rows) {
  qs_session* session = nullptr;
  ASSERT_EQ(qs_session_create(&session), QS_OK);
  ASSERT_NE(session, nullptr);
  ASSERT_EQ(qs_session_start_scan(session, u"C:\\t", 0), QS_OK);
  ASSERT_EQ(RowCountOf(session), 3u);
  EXPECT_EQ(qs_session_destroy(session), QS_OK);
}

// What must be refused while a scan or a clean of the handle is at work, with the answers.
struct Refusals {
  qs_status scan = 99;
  qs_status clean = 99;
  qs_status empty_clean = 99;
  qs_status destroy = 99;

  friend bool operator==(const Refusals&, const Refusals&) = default;
};
constexpr Refusals kAllBusy = {QS_BUSY, QS_BUSY, QS_BUSY, QS_BUSY};

Refusals TryAll(const SessionHandle& session) {
  Refusals refusals;
  refusals.scan = session.Scan(u"C:\\elsewhere", QS_SESSION_INSPECT);
  refusals.clean = session.Clean({2});
  refusals.empty_clean = session.Clean({});
  refusals.destroy = qs_session_destroy(session);
  return refusals;
}

// The arguments are looked at before the busy flag.
void ExpectArgumentsFirst(const SessionHandle& session) {
  EXPECT_EQ(qs_session_start_scan(session, nullptr, 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_scan(session, u"", 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_scan(session, u"C:\\t", 3), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_clean(session, nullptr, 1), QS_INVALID_ARGUMENT);
}

TEST_F(SessionHandleTest, Everything_that_blocks_is_busy_inside_each_call_of_a_scan) {
  machine_.AddFile(u"C:\\elsewhere\\f", "");
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"30");
  unsigned calls = 0;
  machine_.SetHook([&](const CallRecord& record) {
    SCOPED_TRACE(NameOf(record.call));
    ++calls;
    EXPECT_EQ(TryAll(session_), kAllBusy);
    Refusals elsewhere;
    std::thread([&] { elsewhere = TryAll(session_); }).join();
    EXPECT_EQ(elsewhere, kAllBusy);
    ExpectArgumentsFirst(session_);
    EXPECT_EQ(ScanOf(session_).state, QS_STATE_RUNNING) << "a refusal must not end the scan";
  });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_GE(calls, 10u);
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 3, 6, 3, QS_OK}));
  EXPECT_EQ(CleanOf(session_), CleanBlock{});
  EXPECT_EQ(session_.Clean({0}), QS_OK) << "the mode of a refused scan must not stay";
}

TEST_F(SessionHandleTest, Everything_that_blocks_is_busy_inside_each_call_of_a_clean) {
  machine_.AddFile(u"C:\\elsewhere\\f", "");
  ScanTree();
  unsigned calls = 0;
  machine_.SetHook([&](const CallRecord& record) {
    SCOPED_TRACE(NameOf(record.call));
    ++calls;
    EXPECT_EQ(TryAll(session_), kAllBusy);
    Refusals elsewhere;
    std::thread([&] { elsewhere = TryAll(session_); }).join();
    EXPECT_EQ(elsewhere, kAllBusy);
    ExpectArgumentsFirst(session_);
    EXPECT_EQ(CleanOf(session_).state, QS_STATE_RUNNING) << "a refusal must not end the clean";
    EXPECT_EQ(RowCountOf(session_), 3u);
  });
  EXPECT_EQ(session_.Clean({0, 1}), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_GE(calls, 10u);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 2, 2));
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 3, 6, 3, QS_OK}));
  EXPECT_EQ(session_.Clean({2}), QS_OK);
}

TEST_F(SessionHandleTest, A_session_scans_and_cleans_while_another_one_does) {
  SessionHandle other;
  machine_.AddFile(u"C:\\other\\g", "12");
  qs_status scanned = 99;
  qs_status cleaned = 99;
  InsideCall(machine_, Call::kFindNext, 1, [&] {
    scanned = other.Scan(u"C:\\other");
    cleaned = other.Clean({0});
  });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(scanned, QS_OK);
  EXPECT_EQ(cleaned, QS_OK);
  EXPECT_FALSE(machine_.Exists(u"C:\\other\\g"));
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 3, 6, 3, QS_OK}));
  EXPECT_EQ(ScanOf(other), (ScanBlock{QS_STATE_DONE, 1, 2, 1, QS_OK}));
  EXPECT_EQ(CleanOf(session_), CleanBlock{});
  EXPECT_EQ(CleanOf(other), Ended(QS_OK, 1, 1));
}

TEST_F(SessionHandleTest, Cancels_go_to_their_own_session_only) {
  SessionHandle other;
  InsideCall(machine_, Call::kFindNext, 1, [&] {
    EXPECT_EQ(qs_session_cancel_scan(other), QS_OK);
    EXPECT_EQ(qs_session_cancel_clean(other), QS_OK);
  });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  InsideCall(machine_, Call::kRemoveFile, 1, [&] {
    EXPECT_EQ(qs_session_cancel_scan(other), QS_OK);
    EXPECT_EQ(qs_session_cancel_clean(other), QS_OK);
  });
  EXPECT_EQ(session_.Clean({0, 1, 2}), QS_OK);
}

}  // namespace
}  // namespace quastel::session_tests
