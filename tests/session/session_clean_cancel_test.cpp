#include <algorithm>

#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

class SessionCleanCancel : public SessionTest {};

TEST_F(SessionCleanCancel, At_every_file_ends_the_clean_once_that_file_is_deleted) {
  for (std::uint64_t nth = 1; nth <= 4; ++nth) {
    SCOPED_TRACE(nth);
    const Paths paths = AddFiles(4);
    ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    InsideCall(machine_, Call::kRemoveFile, nth,
               [&] { EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK); });
    // In the last file too: the cancel came while the clean was running.
    EXPECT_EQ(session_.Clean(UpTo(4)), QS_CANCELLED);
    machine_.SetHook(nullptr);
    EXPECT_EQ(CleanOf(session_), Ended(QS_CANCELLED, 4, nth));
    EXPECT_EQ(MarksOf(session_), UpTo(nth));
    EXPECT_EQ(LeftOf(paths).size(), 4 - nth);
  }
}

TEST_F(SessionCleanCancel, At_any_call_of_a_clean_touches_no_further_file) {
  std::uint64_t rounds = 0;
  for (std::uint64_t cancel_at = 1;; ++cancel_at) {
    ASSERT_LT(cancel_at, 10'000u) << "the sweep must end";
    SCOPED_TRACE(cancel_at);
    const Paths paths = AddFiles(3);
    ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    const Lines disk = DiskOf(machine_);
    std::uint64_t calls = 0;
    std::uint64_t removed_before = 0;
    bool cancelled = false;
    machine_.SetHook([&](const CallRecord& record) {
      if (++calls == cancel_at) {
        EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK);
        EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK) << "asked for twice";
        EXPECT_EQ(CleanOf(session_).state, QS_STATE_RUNNING) << "a cancel is a request";
        cancelled = true;
      }
      removed_before += !cancelled && record.call == Call::kRemoveFile;
    });
    const qs_status status = session_.Clean({2, 0, 1});
    machine_.SetHook(nullptr);
    if (!cancelled) {
      EXPECT_EQ(status, QS_OK) << "a cancel that came too late must not stay";
      EXPECT_EQ(LeftOf(paths), Lines{});
      break;
    }
    ++rounds;
    // The file under way is finished.
    const std::uint64_t removed = removed_before + 1;
    const Lines order = {"C:\\t\\f002", "C:\\t\\f000", "C:\\t\\f001"};
    Lines gone(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(removed));
    std::sort(gone.begin(), gone.end());
    EXPECT_EQ(status, QS_CANCELLED);
    EXPECT_EQ(CleanOf(session_), Ended(QS_CANCELLED, 3, removed));
    EXPECT_EQ(MarksOf(session_).size(), removed);
    EXPECT_EQ(GoneSince(disk, machine_), gone);
  }
  EXPECT_EQ(rounds, 3u * 10) << "each call of each of three files";
}

TEST_F(SessionCleanCancel, Of_a_file_that_cannot_be_deleted_is_a_failed_clean) {
  const Paths paths = AddFiles(3);
  ScanTree();
  machine_.SetAttributes(paths[1], platform::kAttributeReadOnly);
  InsideCall(machine_, Call::kRemoveFile, 2, [&] { qs_session_cancel_clean(session_); });
  EXPECT_EQ(session_.Clean(UpTo(3)), QS_FAILED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(CleanOf(session_), Ended(QS_FAILED, 3, 1));
  EXPECT_EQ(session_.Clean({2}), QS_OK) << "the cancel is over with its clean";
}

TEST_F(SessionCleanCancel, Without_a_running_clean_does_nothing_and_is_not_kept) {
  AddFiles(2);
  EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK);
  EXPECT_EQ(CleanOf(session_), CleanBlock{});
  ScanTree();
  const std::string before = EverythingOf(session_);
  EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK);
  EXPECT_EQ(EverythingOf(session_), before);
  EXPECT_EQ(session_.Clean({0}), QS_OK);
  EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 1, 1));
  EXPECT_EQ(session_.Clean({1}), QS_OK);
}

TEST_F(SessionCleanCancel, Of_the_scan_does_not_cancel_the_clean) {
  const Paths paths = AddFiles(3);
  ScanTree();
  InsideEveryCall(machine_, Call::kRemoveFile,
                  [&](std::uint64_t) { EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK); });
  EXPECT_EQ(session_.Clean(UpTo(3)), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(ScanOf(session_).state, QS_STATE_DONE);
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK) << "nor is it kept for the next scan";
}

TEST_F(SessionCleanCancel, Leaves_a_report_that_can_be_cleaned_further) {
  const Paths paths = AddFiles(3);
  ScanTree();
  InsideCall(machine_, Call::kRemoveFile, 1, [&] { qs_session_cancel_clean(session_); });
  ASSERT_EQ(session_.Clean(UpTo(3)), QS_CANCELLED);
  EXPECT_EQ(session_.Clean({1, 2}), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 2, 2));
  EXPECT_EQ(LeftOf(paths), Lines{});
}

}  // namespace
}  // namespace quastel::session_tests
