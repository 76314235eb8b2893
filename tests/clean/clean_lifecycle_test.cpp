// The states of a clean, one clean after another, and what a scan does to them.

#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

class CleanLifecycle : public CleanOfEachKindTest {};

TEST_P(CleanLifecycle, Is_idle_before_the_first_clean_and_done_after_it) {
  const Paths paths = AddFindings(2);
  EXPECT_EQ(Block(), CleanBlock{});
  ScanTree();
  EXPECT_EQ(Block(), CleanBlock{});
  EXPECT_EQ(CleanPaths({paths[0]}), QS_OK);
  EXPECT_EQ(Block().state, QS_STATE_DONE);
}

TEST_P(CleanLifecycle, A_clean_may_follow_one_that_was_done_cancelled_or_failed) {
  const Paths paths = AddFindings(6);
  ScanTree();
  const std::uint64_t size = finding_size();
  const Ids ids = IdsOf(paths);
  EXPECT_EQ(CleanIds({ids[0]}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, size));

  machine_.Lock(paths[1]);
  EXPECT_EQ(CleanIds({ids[1]}), QS_FAILED);
  EXPECT_EQ(Block(), Ended(QS_FAILED, 1, 0, 1, 0)) << "counted from zero again";

  scan_tests::InsideCall(machine_, Call::kRemoveFile, 1,
                         [&] { qs_product_scan_cancel_clean(scan_); });
  EXPECT_EQ(CleanIds({ids[2], ids[3]}), QS_CANCELLED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(Block(), Ended(QS_CANCELLED, 2, 1, 0, size));

  EXPECT_EQ(CleanIds({ids[3], ids[1], ids[4]}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 3, 2, 1, 2 * size));
  EXPECT_EQ(MarksOf(scan_), (Ids{ids[0], ids[2], ids[3], ids[4]}));
  EXPECT_EQ(LeftOf(paths), (Lines{Utf8(paths[1]), Utf8(paths[5])}));
}

TEST_P(CleanLifecycle, Cleans_of_one_file_each_delete_them_all) {
  const Paths paths = AddFindings(20);
  ScanTree();
  const Ids ids = IdsOf(paths);
  for (std::size_t i = 0; i < ids.size(); ++i) {
    ASSERT_EQ(CleanIds({ids[i]}), QS_OK);
    ASSERT_EQ(Block(), Ended(QS_OK, 1, 1, 0, finding_size()));
    ASSERT_EQ(MarksOf(scan_), Ids(ids.begin(), ids.begin() + static_cast<std::ptrdiff_t>(i) + 1));
  }
  EXPECT_EQ(LeftOf(paths), Lines{});
  EXPECT_EQ(CleanIds({ids[0]}), QS_INVALID_ARGUMENT);
}

TEST_P(CleanLifecycle, The_start_of_a_scan_sets_the_clean_back_to_idle) {
  const Paths paths = AddFindings(4);
  ScanTree();
  machine_.Lock(paths[1]);
  ASSERT_EQ(CleanPaths({paths[0], paths[1]}), QS_OK);
  ASSERT_NE(Block(), CleanBlock{});
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"25");
  bool polled = false;
  scan_tests::InsideCall(machine_, Call::kSleepMilliseconds, 1, [&] {
    polled = true;
    EXPECT_EQ(Block(), CleanBlock{}) << "while the scan still runs";
  });
  ScanTree();
  EXPECT_TRUE(polled);
  EXPECT_EQ(Block(), CleanBlock{});
  EXPECT_EQ(MarksOf(scan_), Ids{}) << "the marks went with the old rows";
}

TEST_P(CleanLifecycle, Scans_that_fail_or_are_cancelled_set_it_back_as_well) {
  const Paths paths = AddFindings(4);
  ScanTree();
  ASSERT_EQ(CleanPaths({paths[0]}), QS_OK);
  Request no_rules = JunkRequest();
  no_rules.rules_path = u"D:\\missing.xml";
  ASSERT_EQ(scan_.Start(no_rules), QS_NOT_FOUND);
  EXPECT_EQ(Block(), CleanBlock{});

  ScanTree();
  ASSERT_EQ(CleanPaths({paths[1]}), QS_OK);
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"25");
  scan_tests::InsideCall(machine_, Call::kSleepMilliseconds, 1,
                         [&] { qs_product_scan_cancel(scan_); });
  ASSERT_EQ(scan_.Start(TreeRequest()), QS_CANCELLED);
  EXPECT_EQ(Block(), CleanBlock{});
}

TEST_P(CleanLifecycle, A_scan_that_is_refused_leaves_the_clean_as_it_was) {
  const Paths paths = AddFindings(3);
  ScanTree();
  ASSERT_EQ(CleanPaths({paths[0]}), QS_OK);
  Request too_small = TreeRequest();
  too_small.size = 55;
  EXPECT_EQ(scan_.Start(too_small), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_start(scan_, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, finding_size()));
  EXPECT_EQ(CleanPaths({paths[1]}), QS_OK) << "and the report can still be cleaned";
}

TEST_P(CleanLifecycle, The_same_ids_name_other_files_after_another_scan) {
  const Paths paths = AddFindings(4);
  ScanTree();
  ASSERT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(CleanIds({0}), QS_INVALID_ARGUMENT);
  ScanTree();
  ASSERT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(LeftOf(paths), (Lines{Utf8(paths[2]), Utf8(paths[3])}));
}

TEST_P(CleanLifecycle, While_it_runs_starts_cleans_and_destroys_are_refused) {
  const Paths paths = AddFindings(3);
  ScanTree();
  const Ids ids = IdsOf(paths);
  const std::string report = ReportWithoutMarks(scan_);
  Request request = TreeRequest();
  int calls = 0;
  machine_.SetHook([&](const CallRecord& call) {
    SCOPED_TRACE(NameOf(call.call));
    ++calls;
    const CleanBlock before = Block();
    EXPECT_EQ(before.state, QS_STATE_RUNNING);
    EXPECT_EQ(qs_product_scan_start(scan_, request.Get()), QS_BUSY);
    EXPECT_EQ(qs_product_scan_start(scan_, nullptr), QS_BUSY);
    EXPECT_EQ(qs_product_scan_start_clean(scan_, ids.data(), 1), QS_BUSY);
    EXPECT_EQ(qs_product_scan_start_clean(scan_, nullptr, 0), QS_BUSY);
    const std::uint64_t unknown = 99;
    EXPECT_EQ(qs_product_scan_start_clean(scan_, &unknown, 1), QS_BUSY);
    EXPECT_EQ(qs_product_scan_destroy(scan_), QS_BUSY);
    EXPECT_EQ(Block(), before);
    EXPECT_EQ(ReportWithoutMarks(scan_), report);
  });
  EXPECT_EQ(CleanIds(ids), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_GE(calls, 30);
  EXPECT_EQ(Block(), Ended(QS_OK, 3, 3, 0, 3 * finding_size()));
}

TEST_P(CleanLifecycle, While_a_scan_runs_a_clean_is_refused) {
  AddFindings(3);
  ScanTree();
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"25");
  qs_status answers[3] = {};
  scan_tests::InsideCall(machine_, Call::kSleepMilliseconds, 1, [&] {
    const std::uint64_t id = 0;
    answers[0] = qs_product_scan_start_clean(scan_, &id, 1);
    answers[1] = qs_product_scan_start_clean(scan_, nullptr, 0);
    answers[2] = qs_product_scan_start_clean(scan_, nullptr, 1);
    EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK);
  });
  EXPECT_EQ(scan_.Start(TreeRequest()), QS_OK) << "a cancel of the clean is none of the scan";
  EXPECT_EQ(answers[0], QS_BUSY);
  EXPECT_EQ(answers[1], QS_BUSY);
  EXPECT_EQ(answers[2], QS_INVALID_ARGUMENT);
  EXPECT_EQ(Block(), CleanBlock{});
}

TEST_P(CleanLifecycle, A_handle_can_be_destroyed_after_every_kind_of_end) {
  for (const qs_status end : {QS_OK, QS_FAILED, QS_CANCELLED, QS_INVALID_ARGUMENT}) {
    SCOPED_TRACE(end);
    const Paths paths = AddFindings(2);
    qs_product_scan* scan = nullptr;
    ASSERT_EQ(qs_product_scan_create(&scan), QS_OK);
    ASSERT_EQ(qs_product_scan_start(scan, TreeRequest().Get()), QS_OK);
    if (end == QS_FAILED) {
      machine_.FailCall(Call::kRemoveFile, 1, Repeat::kFromThenOn);
    }
    if (end == QS_CANCELLED) {
      scan_tests::InsideCall(machine_, Call::kRemoveFile, 1,
                             [&] { qs_product_scan_cancel_clean(scan); });
    }
    EXPECT_EQ(Clean(scan, end == QS_INVALID_ARGUMENT ? Ids{99} : Ids{0}), end);
    machine_.SetHook(nullptr);
    machine_.ClearFaults();
    EXPECT_EQ(qs_product_scan_destroy(scan), QS_OK);
  }
}

TEST_P(CleanLifecycle, Handles_have_cleans_of_their_own) {
  const Paths paths = AddFindings(4);
  ScanTree();
  ScanHandle other;
  ASSERT_EQ(other.Start(TreeRequest()), QS_OK);
  EXPECT_EQ(CleanIds({0, 1}), QS_OK);
  EXPECT_EQ(BlockOf(other), CleanBlock{});
  EXPECT_EQ(MarksOf(other), Ids{});
  // For the other one the two are files that have gone.
  EXPECT_EQ(Clean(other, {0, 1, 2}), QS_OK);
  EXPECT_EQ(BlockOf(other), Ended(QS_OK, 3, 1, 2, finding_size()));
  EXPECT_EQ(Block(), Ended(QS_OK, 2, 2, 0, 2 * finding_size()));
}

INSTANTIATE_TEST_SUITE_P(Of, CleanLifecycle, ::testing::ValuesIn(kKinds), support::CaseName());

TEST(CleanAfterCancelledScan, Deletes_what_was_found_before_the_cancel) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\t\\a", kLarge);
  machine.AddSizedFile(u"C:\\t\\b\\c", kLarge);
  ScanHandle scan;
  scan_tests::InsideCall(machine, Call::kFindFirstBasic, 2, [&] { qs_product_scan_cancel(scan); });
  ASSERT_EQ(scan.Start(Request::LargeFiles({u"C:\\t"})), QS_CANCELLED);
  machine.SetHook(nullptr);
  ASSERT_EQ(scan_tests::RowCountOf(scan), 1u);
  EXPECT_EQ(Clean(scan, {0}), QS_OK);
  EXPECT_EQ(BlockOf(scan), Ended(QS_OK, 1, 1, 0, kLarge));
  EXPECT_EQ(scan_tests::Poll(scan).state, QS_STATE_CANCELLED) << "the scan's own state stays";
  EXPECT_FALSE(machine.Exists(u"C:\\t\\a"));
  EXPECT_TRUE(machine.Exists(u"C:\\t\\b\\c"));
}

}  // namespace
}  // namespace quastel::clean_tests
