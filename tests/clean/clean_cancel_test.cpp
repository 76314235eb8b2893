// A clean that is cancelled stops between two files.

#include <algorithm>
#include <set>
#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

class CleanCancel : public CleanOfEachKindTest {};

TEST_P(CleanCancel, Without_a_running_clean_does_nothing) {
  const Paths paths = AddFindings(3);
  EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK) << "before the first scan";
  EXPECT_EQ(Block(), CleanBlock{});
  ScanTree();
  EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK) << "before the first clean";
  EXPECT_EQ(Block(), CleanBlock{});
  EXPECT_EQ(CleanPaths({paths[0]}), QS_OK);
  const CleanBlock done = Block();
  EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK) << "after it";
  EXPECT_EQ(Block(), done);
  EXPECT_EQ(CleanPaths({paths[1]}), QS_OK) << "the next one is not cancelled";
  ScanTree();
  EXPECT_EQ(CleanPaths({paths[2]}), QS_OK);
}

TEST_P(CleanCancel, At_any_call_completes_the_file_at_hand_and_stops_before_the_next) {
  constexpr std::size_t kFiles = 5;
  std::uint64_t rounds = 0;
  std::vector<std::uint64_t> stops(kFiles + 1);
  for (std::uint64_t cancel_at = 1;; ++cancel_at) {
    SCOPED_TRACE(cancel_at);
    const Paths paths = AddFindings(kFiles);
    ScanTree();
    const Ids ids = IdsOf(paths);
    machine_.SetAttributes(paths[1], platform::kAttributeReadOnly);
    std::uint64_t calls = 0;
    std::set<Text> begun;  // files of which the clean had seen anything when it was cancelled
    machine_.SetHook([&](const CallRecord& call) {
      ++calls;
      if (calls <= cancel_at && std::find(paths.begin(), paths.end(), call.path) != paths.end()) {
        begun.insert(call.path);
      }
      if (calls == cancel_at) {
        EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK);
        EXPECT_EQ(Block().state, QS_STATE_RUNNING) << "a cancel is a request, not the end";
        EXPECT_EQ(Block().status, QS_OK);
      }
    });
    const qs_status status = CleanIds(ids);
    machine_.SetHook(nullptr);
    if (calls < cancel_at) {
      EXPECT_EQ(status, QS_OK);
      EXPECT_EQ(Block(), Ended(QS_OK, kFiles, kFiles - 1, 1, (kFiles - 1) * finding_size()));
      break;
    }
    ++rounds;
    ASSERT_EQ(status, QS_CANCELLED);
    const CleanBlock block = Block();
    const std::uint64_t processed = block.processed;
    ASSERT_EQ(processed, begun.size());
    ++stops[processed];
    const std::uint64_t failed = processed >= 2 ? 1 : 0;
    EXPECT_EQ(block, Ended(QS_CANCELLED, kFiles, processed - failed, failed,
                           (processed - failed) * finding_size()));
    for (std::size_t i = 0; i < kFiles; ++i) {
      EXPECT_EQ(machine_.Exists(paths[i]), i == 1 || i >= processed) << i;
    }
    EXPECT_EQ(machine_.open_handles(), 0u);

    // Nothing of the cancel is left: the rest goes with the next clean.
    machine_.ClearRecord();
    if (processed < kFiles) {
      EXPECT_EQ(CleanIds(Ids(ids.begin() + static_cast<std::ptrdiff_t>(processed), ids.end())),
                QS_OK);
    }
    EXPECT_EQ(LeftOf(paths), Lines{Utf8(paths[1])});
  }
  // Three folder looks twice, facts, time, attributes, removal.
  EXPECT_GE(rounds, 50u);
  EXPECT_EQ(stops[0], 0u) << "a clean that looks at a file finishes it";
  for (std::size_t i = 1; i <= kFiles; ++i) {
    EXPECT_GE(stops[i], 9u) << i;
  }
}

TEST_P(CleanCancel, During_the_last_file_counts_although_nothing_is_left_to_do) {
  const Paths paths = AddFindings(3);
  ScanTree();
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 3,
                         [&] { qs_product_scan_cancel_clean(scan_); });
  EXPECT_EQ(CleanPaths(paths), QS_CANCELLED);
  EXPECT_EQ(Block(), Ended(QS_CANCELLED, 3, 3, 0, 3 * finding_size()));
}

TEST_P(CleanCancel, Outweighs_that_every_file_failed) {
  const Paths paths = AddFindings(3);
  ScanTree();
  machine_.FailCall(Call::kRemoveFile, 1, Repeat::kFromThenOn);
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 3,
                         [&] { qs_product_scan_cancel_clean(scan_); });
  EXPECT_EQ(CleanPaths(paths), QS_CANCELLED);
  EXPECT_EQ(Block(), Ended(QS_CANCELLED, 3, 0, 3, 0));
  EXPECT_EQ(LeftOf(paths), Utf8(paths));
}

TEST_P(CleanCancel, Asked_for_again_and_again_is_one_cancel) {
  const Paths paths = AddFindings(3);
  ScanTree();
  scan_tests::InsideEveryCall(machine_, Call::kQueryAttributes, [&](std::uint64_t) {
    EXPECT_EQ(qs_product_scan_cancel_clean(scan_), QS_OK);
  });
  EXPECT_EQ(CleanPaths(paths), QS_CANCELLED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(Block(), Ended(QS_CANCELLED, 3, 1, 0, finding_size()));
  EXPECT_EQ(CleanPaths({paths[1]}), QS_OK);
}

TEST_P(CleanCancel, Of_the_scan_is_none_of_the_clean) {
  const Paths paths = AddFindings(3);
  ScanTree();
  scan_tests::InsideEveryCall(machine_, Call::kQueryAttributes, [&](std::uint64_t) {
    EXPECT_EQ(qs_product_scan_cancel(scan_), QS_OK);
  });
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_DONE);
  AddFindings(3);
  EXPECT_EQ(scan_.Start(TreeRequest()), QS_OK) << "nor of the next scan";
}

TEST_P(CleanCancel, Of_a_clean_of_a_thousand_files_leaves_the_rest_untouched) {
  const Paths paths = AddFindings(1'000);
  ScanTree();
  machine_.SetRecording(false);
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 337,
                         [&] { qs_product_scan_cancel_clean(scan_); });
  const std::uint64_t looks = machine_.CallCount(Call::kQueryFileFacts);
  EXPECT_EQ(CleanIds(IdsOfAll()), QS_CANCELLED);
  EXPECT_EQ(Block(), Ended(QS_CANCELLED, 1'000, 337, 0, 337 * finding_size()));
  EXPECT_EQ(machine_.CallCount(Call::kQueryFileFacts) - looks, 337u);
  EXPECT_EQ(LeftOf(paths), Utf8(Paths(paths.begin() + 337, paths.end())));
}

INSTANTIATE_TEST_SUITE_P(Of, CleanCancel, ::testing::ValuesIn(kKinds), support::CaseName());

TEST(CleanCancelFolders, The_folder_of_the_file_at_hand_is_still_removed) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  machine.AddFile(u"C:\\t\\a\\f", "x");
  machine.AddFile(u"C:\\t\\b\\f", "x");
  machine.AddFile(kRulesPath, FolderRules({u"C:\\t"}));
  ScanHandle scan;
  ASSERT_EQ(scan.Start(JunkRequest()), QS_OK);
  scan_tests::InsideCall(machine, Call::kRemoveFile, 1,
                         [&] { qs_product_scan_cancel_clean(scan); });
  EXPECT_EQ(Clean(scan, {0, 1}), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(BlockOf(scan).processed, 1u);
  EXPECT_EQ(Utf8(machine.NamesIn(u"C:\\t")).size(), 1u) << "its folder went with the first file";
}

}  // namespace
}  // namespace quastel::clean_tests
