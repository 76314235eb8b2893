// What a clean refuses, in which order it looks, and that a refusal changes nothing.

#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

class CleanRequest : public CleanOfEachKindTest {
 protected:
  // The answer to a request that must leave everything as it is, without a look at the disk.
  qs_status Refused(const std::uint64_t* ids, std::uint64_t count) {
    const std::string disk = machine_.Describe();
    const std::string report = scan_tests::EverythingOf(scan_);
    const CleanBlock block = Block();
    machine_.ClearRecord();
    machine_.SetRecording(true);
    const qs_status status = qs_product_scan_start_clean(scan_, ids, count);
    EXPECT_EQ(machine_.record().size(), 0u);
    EXPECT_EQ(Block(), block);
    EXPECT_EQ(scan_tests::EverythingOf(scan_), report);
    EXPECT_EQ(machine_.Describe(), disk);
    return status;
  }
  qs_status Refused(const Ids& ids) { return Refused(ids.data(), ids.size()); }
};

TEST_P(CleanRequest, A_null_handle_is_an_invalid_argument_whatever_else_is_given) {
  const std::uint64_t id = 0;
  EXPECT_EQ(qs_product_scan_start_clean(nullptr, nullptr, 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_start_clean(nullptr, nullptr, 1), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_product_scan_start_clean(nullptr, &id, 1), QS_INVALID_ARGUMENT);
}

TEST_P(CleanRequest, A_count_without_ids_is_an_invalid_argument) {
  AddFindings(1);
  ScanTree();
  EXPECT_EQ(Refused(nullptr, 1), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused(nullptr, UINT64_MAX), QS_INVALID_ARGUMENT);
}

TEST_P(CleanRequest, The_arguments_are_checked_before_the_state_of_the_scan) {
  EXPECT_EQ(Refused(nullptr, 1), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused(nullptr, 0), QS_UNSUPPORTED);
}

TEST_P(CleanRequest, The_arguments_are_checked_before_a_running_clean_matters) {
  AddFindings(2);
  ScanTree();
  qs_status answers[2] = {};
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 1, [&] {
    answers[0] = qs_product_scan_start_clean(scan_, nullptr, 1);
    answers[1] = qs_product_scan_start_clean(scan_, nullptr, 0);
  });
  EXPECT_EQ(CleanIds(IdsOfAll()), QS_OK);
  EXPECT_EQ(answers[0], QS_INVALID_ARGUMENT);
  EXPECT_EQ(answers[1], QS_BUSY);
}

TEST_P(CleanRequest, Without_a_scan_there_is_nothing_to_clean) {
  EXPECT_EQ(Refused(nullptr, 0), QS_UNSUPPORTED);
  EXPECT_EQ(Refused({0}), QS_UNSUPPORTED) << "the state comes before the ids";
  EXPECT_EQ(Block(), CleanBlock{});
}

TEST_P(CleanRequest, A_failed_scan_cannot_be_cleaned) {
  const Paths paths = AddFindings(3);
  ScanTree();
  EXPECT_EQ(CleanPaths({paths[0]}), QS_OK);
  // A scan that fails after it has found something keeps its rows.
  machine_.AddFile(kRulesPath,
                   "<Root><Category DisplayName=\"c\"><Folder Path=\"C:\\t\"/></Category>"
                   "<Category/></Root>");
  ASSERT_EQ(scan_.Start(JunkRequest()), QS_FAILED);
  ASSERT_EQ(scan_tests::Poll(scan_).state, QS_STATE_FAILED);
  ASSERT_EQ(scan_tests::Poll(scan_).item_count, 2u);
  EXPECT_EQ(Refused(nullptr, 0), QS_UNSUPPORTED);
  EXPECT_EQ(Refused({0}), QS_UNSUPPORTED);
  EXPECT_EQ(Refused({0, 0, 7}), QS_UNSUPPORTED) << "the state comes before the ids";
  EXPECT_EQ(Block(), CleanBlock{});
  // The next scan makes the handle good again.
  machine_.AddFile(kRulesPath, FolderRules({Text(kTree)}));
  ScanTree();
  EXPECT_EQ(CleanPaths({paths[1]}), QS_OK);
}

TEST_P(CleanRequest, A_cancelled_scan_can_be_cleaned) {
  const Paths paths = AddFindings(2);
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"50");
  scan_tests::InsideCall(machine_, Call::kSleepMilliseconds, 1,
                         [&] { qs_product_scan_cancel(scan_); });
  ASSERT_EQ(scan_.Start(TreeRequest()), QS_CANCELLED);
  machine_.SetHook(nullptr);
  ASSERT_EQ(scan_tests::Poll(scan_).state, QS_STATE_CANCELLED);
  EXPECT_EQ(CleanIds({}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 0, 0, 0, 0));
  // What such a scan had found would stand in its report.
  AppendRows(scan_, {FindingOf(RowKind::kLargeFile, 1, static_cast<std::int64_t>(finding_size()),
                               paths[0])});
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(LeftOf(paths), Lines{Utf8(paths[1])});
}

TEST_P(CleanRequest, Ids_that_cannot_be_taken_refuse_the_whole_request) {
  AddFindings(4);
  ScanTree();
  const std::uint64_t items = scan_tests::Poll(scan_).item_count;
  struct Case {
    const char* name;
    Ids ids;
  };
  const Case cases[] = {
      {"the first id behind the last", {items}},
      {"another id behind the last", {items + 1}},
      {"the id of every header", {QS_NO_ITEM_ID}},
      {"an id of 2^63", {std::uint64_t{1} << 63}},
      {"an id that equals a known one in 32 bits", {std::uint64_t{1} << 32}},
      {"an unknown id at the end", {0, 1, items}},
      {"an unknown id at the beginning", {items, 0, 1}},
      {"an unknown id between known ones", {0, items, 1}},
      {"a header's id between known ones", {0, QS_NO_ITEM_ID, 1}},
      {"the same id twice in a row", {1, 1}},
      {"the same id at both ends", {2, 0, 1, 2}},
      {"the same id three times", {0, 0, 0}},
      {"more ids than there are items", {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Refused(c.ids), QS_INVALID_ARGUMENT);
  }
  EXPECT_EQ(Block(), CleanBlock{}) << "a refusal is no clean";
  EXPECT_EQ(CleanIds({0, 1, 2, 3}), QS_OK);
}

TEST_P(CleanRequest, Refusals_leave_the_outcome_of_the_clean_before_as_it_was) {
  const Paths paths = AddFindings(4);
  ScanTree();
  const Ids ids = IdsOf(paths);
  machine_.Lock(paths[1]);
  ASSERT_EQ(CleanPaths({paths[0], paths[1]}), QS_OK);
  const CleanBlock before = Ended(QS_OK, 2, 1, 1, finding_size());
  ASSERT_EQ(Block(), before);

  EXPECT_EQ(Refused(nullptr, 3), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused({77}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused({ids[0]}), QS_INVALID_ARGUMENT) << "it was deleted";
  EXPECT_EQ(Refused({ids[2], ids[0]}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused({ids[0], ids[2]}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused({ids[2], ids[2]}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Block(), before);
  EXPECT_EQ(MarksOf(scan_), Ids{ids[0]});

  // The one that failed may be named again.
  machine_.Unlock(paths[1]);
  EXPECT_EQ(CleanIds({ids[3], ids[1]}), QS_OK);
  EXPECT_EQ(LeftOf(paths), Lines{Utf8(paths[2])});
}

TEST_P(CleanRequest, A_row_that_may_not_be_deleted_is_refused) {
  const Paths paths = AddFindings(2);
  ScanTree();
  ReportRow row = FindingOf(RowKind::kLargeFile, 1, 5, u"C:\\other");
  row.deletable = false;
  machine_.AddSizedFile(u"C:\\other", 5);
  AppendRows(scan_, {row});
  const std::uint64_t id = scan_tests::Poll(scan_).item_count - 1;
  EXPECT_EQ(Refused({id}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused({0, id}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_TRUE(machine_.Exists(u"C:\\other"));
}

TEST_P(CleanRequest, A_header_is_never_reached_by_the_place_of_its_row) {
  const Paths paths = AddFindings(2);
  ScanTree();
  // Headers among the items: ids and places in the report part.
  AppendRows(scan_, {FindingOf(RowKind::kGroup, 9, 0, u"C:\\group"),
                     FindingOf(RowKind::kGroup, 10, 0, u"C:\\group"),
                     FindingOf(RowKind::kLargeFile, 11, 5, u"C:\\last")});
  machine_.AddSizedFile(u"C:\\group", 0);
  machine_.AddSizedFile(u"C:\\last", 5);
  const std::uint64_t items = scan_tests::Poll(scan_).item_count;
  ASSERT_GE(scan_tests::RowCountOf(scan_), items + 2);
  EXPECT_EQ(Refused({items}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Refused({items + 1}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanIds({items - 1}), QS_OK);
  EXPECT_FALSE(machine_.Exists(u"C:\\last"));
  EXPECT_TRUE(machine_.Exists(u"C:\\group"));
}

TEST_P(CleanRequest, Nothing_at_all_is_a_clean_that_ends_at_once) {
  AddFindings(2);
  ScanTree();
  const std::string disk = machine_.Describe();
  EXPECT_EQ(qs_product_scan_start_clean(scan_, nullptr, 0), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 0, 0, 0, 0));
  const std::uint64_t unread = 12345;
  EXPECT_EQ(qs_product_scan_start_clean(scan_, &unread, 0), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 0, 0, 0, 0));
  EXPECT_EQ(machine_.record().size(), 0u);
  EXPECT_EQ(machine_.Describe(), disk);
  // It is a clean like any other: it replaces what the one before has counted.
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, finding_size()));
  EXPECT_EQ(CleanIds({}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 0, 0, 0, 0));
  EXPECT_EQ(MarksOf(scan_), Ids{0});
}

TEST_P(CleanRequest, Nothing_can_be_cleaned_in_an_empty_report) {
  ScanTree();
  ASSERT_EQ(scan_tests::Poll(scan_).item_count, 0u);
  EXPECT_EQ(Refused({0}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanIds({}), QS_OK);
}

TEST_P(CleanRequest, A_selection_with_gaps_takes_what_it_names_and_nothing_else) {
  const Paths paths = AddFindings(9);
  ScanTree();
  EXPECT_EQ(CleanPaths({paths[7], paths[1], paths[4]}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 3, 3, 0, 3 * finding_size()));
  Paths rest = paths;
  for (const std::size_t gone : {7u, 4u, 1u}) {
    rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(gone));
  }
  EXPECT_EQ(LeftOf(paths), Utf8(rest));
}

TEST_P(CleanRequest, The_ids_are_not_needed_any_more_when_the_clean_runs) {
  const Paths paths = AddFindings(3);
  ScanTree();
  Ids ids = IdsOf({paths[0], paths[1]});
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 1,
                         [&] { ids.assign(2, scan_tests::Poll(scan_).item_count); });
  EXPECT_EQ(qs_product_scan_start_clean(scan_, ids.data(), 2), QS_OK);
  EXPECT_EQ(LeftOf(paths), Lines{Utf8(paths[2])});
}

INSTANTIATE_TEST_SUITE_P(Of, CleanRequest, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
