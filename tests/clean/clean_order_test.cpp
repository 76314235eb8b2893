// In which order the files of a clean go.

#include <algorithm>
#include <random>
#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

// The files in the order in which the clean looked at them, failed ones included.
Lines VisitedBy(const SimulatedWindows& machine) {
  Lines visited;
  for (const CallRecord& call : machine.record()) {
    if (call.call == Call::kQueryFileFacts) {
      visited.push_back(Utf8(call.path));
    }
  }
  return visited;
}

class CleanOrder : public CleanOfEachKindTest {};

TEST_P(CleanOrder, Is_that_of_the_caller_apart_from_junk_where_long_paths_go_first) {
  const Paths paths = {AddFinding(u"a"),           AddFinding(u"b"),
                       AddFinding(u"sub\\c"),      AddFinding(u"sub\\deeper\\d"),
                       AddFinding(u"a long name"), AddFinding(u"sub\\e")};
  ScanTree();
  const Paths named = {paths[4], paths[1], paths[3], paths[5], paths[0], paths[2]};
  const Paths longest_first = {paths[3], paths[4], paths[5], paths[2], paths[1], paths[0]};
  EXPECT_EQ(CleanPaths(named), QS_OK);
  EXPECT_EQ(VisitedBy(machine_), Utf8(kind_ == QS_SCAN_KIND_JUNK_RULES ? longest_first : named));
}

TEST_P(CleanOrder, Of_paths_with_equal_length_is_that_of_the_caller) {
  // Enough for an unstable sort to show itself.
  Paths named = AddFindings(300);
  std::mt19937 random(7);
  std::shuffle(named.begin(), named.end(), random);
  ScanTree();
  EXPECT_EQ(CleanPaths(named), QS_OK);
  EXPECT_EQ(VisitedBy(machine_), Utf8(named));
}

TEST_P(CleanOrder, Is_stable_among_many_lengths) {
  Paths named;
  for (int i = 0; i < 300; ++i) {
    named.push_back(AddFinding(Text(static_cast<std::size_t>(1 + i % 7), u'n') +
                               Wide(std::to_string(1000 + i))));
  }
  std::mt19937 random(8);
  std::shuffle(named.begin(), named.end(), random);
  ScanTree();
  EXPECT_EQ(CleanPaths(named), QS_OK);
  Paths expected = named;
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    std::stable_sort(expected.begin(), expected.end(),
                     [](const Text& a, const Text& b) { return a.size() > b.size(); });
  }
  EXPECT_EQ(VisitedBy(machine_), Utf8(expected));
}

TEST_P(CleanOrder, Is_kept_when_files_fail) {
  const Paths paths = {AddFinding(u"aaa"), AddFinding(u"bb"), AddFinding(u"c")};
  ScanTree();
  machine_.SetAttributes(paths[0], platform::kAttributeReadOnly);
  machine_.SetAttributes(paths[1], platform::kAttributeReadOnly);
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(VisitedBy(machine_), Utf8(paths));
  EXPECT_EQ(Block(), Ended(QS_OK, 3, 1, 2, finding_size()));
}

TEST_P(CleanOrder, Follows_the_kind_of_the_last_scan_and_not_of_a_refused_one) {
  const Paths named = {AddFinding(u"a"), AddFinding(u"longer")};
  ScanTree();
  Request refused = TreeRequest();
  refused.kind =
      kind_ == QS_SCAN_KIND_JUNK_RULES ? QS_SCAN_KIND_LARGE_FILES : QS_SCAN_KIND_JUNK_RULES;
  refused.roots = {u""};
  ASSERT_EQ(scan_.Start(refused), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanPaths(named), QS_OK);
  EXPECT_EQ(VisitedBy(machine_),
            kind_ == QS_SCAN_KIND_JUNK_RULES ? Utf8({named[1], named[0]}) : Utf8(named));
}

INSTANTIATE_TEST_SUITE_P(Of, CleanOrder, ::testing::ValuesIn(kKinds), support::CaseName());

class CleanCalls : public CleanOfEachKindTest {};

TEST_P(CleanCalls, Of_one_file_are_a_snapshot_test_and_then_a_removal) {
  AddFinding(u"d\\other");
  const Text path = AddFinding(u"d\\f");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  Lines calls;
  for (const CallRecord& call : machine_.record()) {
    calls.push_back(NameOf(call.call) + (" " + Utf8(call.path)));
  }
  // Both steps look at every folder on the way, each for itself.
  Lines expected = {
      "FullPathName C:\\t\\d\\f", "QueryAttributes C:\\t\\d",    "QueryAttributes C:\\t",
      "QueryAttributes C:\\",     "QueryFileFacts C:\\t\\d\\f",  "ToLocalFileTime ",
      "FullPathName C:\\t\\d\\f", "QueryAttributes C:\\t\\d",    "QueryAttributes C:\\t",
      "QueryAttributes C:\\",     "QueryAttributes C:\\t\\d\\f", "RemoveFile C:\\t\\d\\f",
  };
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    // The folder is looked into up to its first file.
    for (const char* call : {"QueryAttributes C:\\t\\d", "FindFirstBasic C:\\t\\d\\*", "FindNext ",
                             "FindNext ", "FindClose "}) {
      expected.push_back(call);
    }
  }
  EXPECT_EQ(calls, expected);
}

TEST_P(CleanCalls, Of_a_changed_file_end_with_the_snapshot_test) {
  const Text path = AddFinding(u"f");
  AddFinding(u"g");
  ScanTree();
  machine_.SetLastWrite(path, 1);
  EXPECT_EQ(CleanPaths({path}), QS_FAILED);
  EXPECT_EQ(machine_.record().back().call, Call::kToLocalFileTime);
  EXPECT_EQ(RemovalsOf(machine_), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Of, CleanCalls, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
