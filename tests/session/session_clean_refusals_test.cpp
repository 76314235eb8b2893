#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

class SessionCleanRefusals : public SessionTest {
 protected:
  SessionCleanRefusals() { AddFiles(3); }

  // The answer is `status`, and nothing at all is different afterwards.
  void ExpectRefused(qs_status status, const std::uint64_t* indexes, std::uint64_t count) {
    const std::string before = EverythingOf(session_);
    const std::string disk = machine_.Describe();
    machine_.ClearRecord();
    machine_.SetRecording(true);
    EXPECT_EQ(qs_session_start_clean(session_, indexes, count), status);
    EXPECT_TRUE(machine_.record().empty()) << "a refusal asks the system nothing";
    EXPECT_EQ(EverythingOf(session_), before);
    EXPECT_EQ(machine_.Describe(), disk);
  }
  void ExpectRefused(qs_status status, const Ids& ids) {
    SCOPED_TRACE(::testing::PrintToString(ids));
    ExpectRefused(status, ids.data(), ids.size());
  }
};

TEST_F(SessionCleanRefusals, Rows_without_indexes_are_an_invalid_argument_in_every_state) {
  ExpectRefused(QS_INVALID_ARGUMENT, nullptr, 1);
  ASSERT_EQ(session_.Scan(u"C:\\t", QS_SESSION_INSPECT), QS_OK);
  ExpectRefused(QS_INVALID_ARGUMENT, nullptr, 1);
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ExpectRefused(QS_INVALID_ARGUMENT, nullptr, 1);
  ExpectRefused(QS_INVALID_ARGUMENT, nullptr, UINT64_MAX);
}

TEST_F(SessionCleanRefusals, A_session_that_never_scanned_cannot_be_cleaned) {
  ExpectRefused(QS_UNSUPPORTED, {});
  ExpectRefused(QS_UNSUPPORTED, {0});
}

TEST_F(SessionCleanRefusals, A_cancelled_scan_cannot_be_cleaned) {
  InsideCall(machine_, Call::kFindNext, 4, [&] { qs_session_cancel_scan(session_); });
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_CANCELLED);
  machine_.SetHook(nullptr);
  ASSERT_GT(RowCountOf(session_), 0u);
  ExpectRefused(QS_UNSUPPORTED, {});
  ExpectRefused(QS_UNSUPPORTED, {0});
  ExpectRefused(QS_UNSUPPORTED, {0, 0});
  ExpectRefused(QS_UNSUPPORTED, {99});
}

TEST_F(SessionCleanRefusals, A_scan_for_inspection_cannot_be_cleaned) {
  ASSERT_EQ(session_.Scan(u"C:\\t", QS_SESSION_INSPECT), QS_OK);
  ExpectRefused(QS_UNSUPPORTED, {});
  ExpectRefused(QS_UNSUPPORTED, {0});
  ExpectRefused(QS_UNSUPPORTED, {0, 0});
  ExpectRefused(QS_UNSUPPORTED, {99});
}

TEST_F(SessionCleanRefusals, A_cancelled_scan_for_inspection_cannot_be_cleaned) {
  InsideCall(machine_, Call::kFindNext, 1, [&] { qs_session_cancel_scan(session_); });
  ASSERT_EQ(session_.Scan(u"C:\\t", QS_SESSION_INSPECT), QS_CANCELLED);
  machine_.SetHook(nullptr);
  ExpectRefused(QS_UNSUPPORTED, {0});
}

TEST_F(SessionCleanRefusals, An_index_that_is_not_below_the_row_count_is_not_found) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ExpectRefused(QS_NOT_FOUND, {3});
  ExpectRefused(QS_NOT_FOUND, {4});
  ExpectRefused(QS_NOT_FOUND, {UINT64_MAX});
  ExpectRefused(QS_NOT_FOUND, {std::uint64_t{1} << 32});
  ExpectRefused(QS_NOT_FOUND, {0, 1, 2, 3});
  ExpectRefused(QS_NOT_FOUND, {3, 0, 1, 2});
}

TEST_F(SessionCleanRefusals, A_repeated_index_is_an_invalid_argument) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ExpectRefused(QS_INVALID_ARGUMENT, {0, 0});
  ExpectRefused(QS_INVALID_ARGUMENT, {2, 1, 2});
  ExpectRefused(QS_INVALID_ARGUMENT, {0, 1, 2, 0});
}

TEST_F(SessionCleanRefusals, The_first_bad_index_decides) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ExpectRefused(QS_INVALID_ARGUMENT, {0, 0, 3});
  ExpectRefused(QS_NOT_FOUND, {0, 3, 0});
  ExpectRefused(QS_NOT_FOUND, {3, 0, 0});
  // Not found before it could be a repetition.
  ExpectRefused(QS_NOT_FOUND, {3, 3});
}

TEST_F(SessionCleanRefusals, Leave_the_end_of_an_earlier_clean_as_it_was) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ASSERT_EQ(session_.Clean({0}), QS_OK);
  ASSERT_EQ(session_.Clean({1, 0, 2}), QS_FAILED);
  ASSERT_EQ(CleanOf(session_), Ended(QS_FAILED, 3, 1));
  ExpectRefused(QS_NOT_FOUND, {2, 3});
  ExpectRefused(QS_INVALID_ARGUMENT, {2, 2});
  ExpectRefused(QS_INVALID_ARGUMENT, nullptr, 1);
  ASSERT_EQ(session_.Scan(u"C:\\t", QS_SESSION_INSPECT), QS_OK);
  ExpectRefused(QS_UNSUPPORTED, {0});
  EXPECT_EQ(CleanOf(session_), Ended(QS_FAILED, 3, 1));
}

TEST_F(SessionCleanRefusals, Do_not_keep_the_session_busy) {
  ASSERT_EQ(session_.Scan(u"C:\\t", QS_SESSION_INSPECT), QS_OK);
  ExpectRefused(QS_UNSUPPORTED, {0});
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ExpectRefused(QS_NOT_FOUND, {3});
  ExpectRefused(QS_INVALID_ARGUMENT, {1, 1});
  EXPECT_EQ(session_.Clean({1}), QS_OK);
}

TEST_F(SessionCleanRefusals, Do_not_keep_a_cancel) {
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK);
  ExpectRefused(QS_NOT_FOUND, {3});
  EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK);
  EXPECT_EQ(session_.Clean({1}), QS_OK);
}

}  // namespace
}  // namespace quastel::session_tests
