// One copy of every set of duplicates always stays.

#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

class CleanDuplicates : public ::testing::Test {
 protected:
  // Files C:\d\<set><number> of equal content within a set; answers the ids in that order.
  void Scan(const std::vector<std::pair<char, int>>& sets) {
    for (const auto& [set, copies] : sets) {
      for (int i = 0; i < copies; ++i) {
        paths_.push_back(PathOf(set, i));
        machine_.AddFile(paths_.back(), std::string("content of set ") + set);
      }
    }
    ASSERT_EQ(scan_.Start(DuplicateRequest({u"C:\\d"})), QS_OK);
    ASSERT_EQ(scan_tests::RowCountOf(scan_), paths_.size());
  }
  static Text PathOf(char set, int i) { return u"C:\\d\\" + Wide(set + std::to_string(i)); }

  // Takes names such as "a0".
  qs_status CleanNamed(const Lines& names) {
    Ids ids;
    const std::vector<Row> rows = scan_tests::ReadReport(scan_);
    for (const std::string& name : names) {
      for (const Row& row : rows) {
        if (row.name == Wide(name)) {
          ids.push_back(row.numbers.item_id);
        }
      }
    }
    EXPECT_EQ(ids.size(), names.size());
    return Clean(scan_, ids);
  }
  Lines Left() const { return Utf8(machine_.NamesIn(u"C:\\d")); }

  SimulatedWindows machine_;
  ScanHandle scan_;
  Paths paths_;
};

TEST_F(CleanDuplicates, Two_of_three_copies_may_go) {
  Scan({{'a', 3}});
  EXPECT_EQ(CleanNamed({"a2", "a0"}), QS_OK);
  EXPECT_EQ(Left(), Lines{"a1"});
}

// The system reads "a0" under both paths: the report calls the first file a copy of itself.
TEST_F(CleanDuplicates, A_row_whose_name_the_system_shortens_is_no_copy_and_never_goes) {
  machine_.AddFile(u"\\\\?\\C:\\d\\a0.", "other words of it");
  Scan({{'b', 2}});
  machine_.AddFile(u"C:\\d\\a0", "content of set  a");
  ASSERT_EQ(scan_.Start(DuplicateRequest({u"C:\\d"})), QS_OK);
  ASSERT_EQ(scan_tests::RowCountOf(scan_), 4u);
  const Lines all = {"a0", "a0.", "b0", "b1"};
  EXPECT_EQ(CleanNamed({"a0"}), QS_INVALID_ARGUMENT) << "no other copy would stay";
  EXPECT_EQ(Left(), all);
  EXPECT_EQ(CleanNamed({"a0."}), QS_FAILED);
  EXPECT_EQ(Left(), all);
}

// Resolving the long path has taken the dot off, and both rows have the path of the one file.
TEST_F(CleanDuplicates, A_long_row_whose_name_was_shortened_is_no_copy_and_never_goes) {
  const Text name = Text(245, Char{'n'});
  machine_.AddFile(u"\\\\?\\C:\\d\\" + name, "one content");
  machine_.AddFile(u"\\\\?\\C:\\d\\" + name + u".", "another one");
  ASSERT_EQ(scan_.Start(DuplicateRequest({u"C:\\d"})), QS_OK);
  ASSERT_EQ(scan_tests::RowCountOf(scan_), 2u);
  const std::vector<scan_tests::Row> rows = scan_tests::ReadReport(scan_);
  ASSERT_EQ(rows[0].path, rows[1].path);
  const std::string before = machine_.Describe();
  for (const scan_tests::Row& row : rows) {
    const bool is_itself = row.name == name;
    EXPECT_EQ(Clean(scan_, {row.numbers.item_id}), is_itself ? QS_INVALID_ARGUMENT : QS_FAILED);
  }
  EXPECT_EQ(machine_.Describe(), before);
}

TEST_F(CleanDuplicates, A_root_may_be_spelled_with_a_dot_at_its_end) {
  machine_.AddFile(u"C:\\d\\a0", "equal");
  machine_.AddFile(u"C:\\d\\a1", "equal");
  ASSERT_EQ(scan_.Start(DuplicateRequest({u"C:\\d."})), QS_OK);
  ASSERT_EQ(scan_tests::RowCountOf(scan_), 2u);
  EXPECT_EQ(Clean(scan_, {0, 1}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Clean(scan_, {0}), QS_OK);
  EXPECT_EQ(Left(), Lines{"a1"});
}

TEST_F(CleanDuplicates, A_copy_in_a_folder_whose_name_ends_in_a_blank_is_one) {
  machine_.AddFile(u"C:\\d\\a0", "equal");
  machine_.AddFile(u"\\\\?\\C:\\d\\b \\a0", "equal");
  ASSERT_EQ(scan_.Start(DuplicateRequest({u"C:\\d"})), QS_OK);
  ASSERT_EQ(scan_tests::RowCountOf(scan_), 2u);
  EXPECT_EQ(Clean(scan_, {0, 1}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Clean(scan_, {1}), QS_OK);
  EXPECT_TRUE(machine_.Exists(u"C:\\d\\a0"));
  EXPECT_FALSE(machine_.Exists(u"\\\\?\\C:\\d\\b \\a0"));
}

TEST_F(CleanDuplicates, All_copies_of_a_set_are_refused_and_none_is_deleted) {
  Scan({{'a', 3}, {'b', 2}});
  const CleanBlock before = BlockOf(scan_);
  EXPECT_EQ(CleanNamed({"a0", "a1", "a2"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanNamed({"b0", "a0", "b1"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanNamed({"a1", "b0", "a0", "b1", "a2"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Left(), (Lines{"a0", "a1", "a2", "b0", "b1"}));
  EXPECT_EQ(BlockOf(scan_), before);
  EXPECT_EQ(CleanNamed({"a0", "b0", "a2"}), QS_OK);
  EXPECT_EQ(Left(), (Lines{"a1", "b1"}));
}

TEST_F(CleanDuplicates, A_copy_survives_two_cleans_one_after_the_other) {
  Scan({{'a', 4}});
  EXPECT_EQ(CleanNamed({"a0", "a1"}), QS_OK);
  EXPECT_EQ(CleanNamed({"a2", "a3"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanNamed({"a3"}), QS_OK);
  EXPECT_EQ(CleanNamed({"a2"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Left(), Lines{"a2"});
  EXPECT_EQ(BlockOf(scan_), Ended(QS_OK, 1, 1, 0, std::string("content of set a").size()))
      << "the last clean that was not refused";
}

TEST_F(CleanDuplicates, A_copy_that_could_not_be_deleted_counts_as_there) {
  Scan({{'a', 3}});
  machine_.Lock(PathOf('a', 1));
  EXPECT_EQ(CleanNamed({"a0", "a1"}), QS_OK);
  machine_.Unlock(PathOf('a', 1));
  EXPECT_EQ(CleanNamed({"a1", "a2"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanNamed({"a2"}), QS_OK);
  EXPECT_EQ(CleanNamed({"a1"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Left(), Lines{"a1"});
}

TEST_F(CleanDuplicates, A_cancelled_clean_counts_what_it_has_deleted) {
  Scan({{'a', 3}});
  scan_tests::InsideCall(machine_, Call::kRemoveFile, 1,
                         [&] { qs_product_scan_cancel_clean(scan_); });
  EXPECT_EQ(CleanNamed({"a0", "a1"}), QS_CANCELLED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(CleanNamed({"a1", "a2"}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(CleanNamed({"a2"}), QS_OK);
  EXPECT_EQ(Left(), Lines{"a1"});
}

TEST_F(CleanDuplicates, Whether_the_survivor_is_still_there_is_not_looked_at) {
  // The rule is about rows. What deletes the survivor between the scan and the clean is a race that
  // whoever asks for the clean has to exclude, by comparing the copies just before.
  Scan({{'a', 3}});
  machine_.Remove(PathOf('a', 2));
  EXPECT_EQ(CleanNamed({"a0", "a1"}), QS_OK);
  EXPECT_EQ(Left(), Lines{});
}

TEST_F(CleanDuplicates, Only_deletable_duplicates_of_a_duplicate_scan_are_counted) {
  Scan({{'a', 2}});
  for (const TextView name : {u"x", u"y", u"z", u"w"}) {
    machine_.AddFile(u"C:\\d\\" + Text(name), "1");
  }
  ReportRow fixed = FindingOf(RowKind::kDuplicate, 8, 1, u"C:\\d\\y");
  fixed.deletable = false;
  AppendRows(scan_, {FindingOf(RowKind::kDuplicate, 8, 1, u"C:\\d\\x"), fixed,
                     FindingOf(RowKind::kJunk, 9, 1, u"C:\\d\\z"),
                     FindingOf(RowKind::kLargeFile, 9, 1, u"C:\\d\\w")});
  // A row that cannot be cleaned is no copy that could be relied on.
  EXPECT_EQ(Clean(scan_, {2}), QS_INVALID_ARGUMENT);
  // Rows of another kind belong to no set.
  EXPECT_EQ(Clean(scan_, {4, 5}), QS_OK);
  EXPECT_EQ(Left(), (Lines{"a0", "a1", "x", "y"}));
}

TEST_F(CleanDuplicates, Sets_far_apart_and_interleaved_are_kept_apart) {
  Scan({{'a', 2}});
  std::vector<ReportRow> rows;
  const std::uint64_t groups[] = {7, UINT64_MAX, 7, UINT64_MAX - 1, UINT64_MAX, UINT64_MAX - 1};
  for (const std::uint64_t group : groups) {
    const Text path = u"C:\\d\\r" + Wide(std::to_string(rows.size()));
    machine_.AddFile(path, "1");
    rows.push_back(FindingOf(RowKind::kDuplicate, group, 1, path));
  }
  AppendRows(scan_, rows);
  EXPECT_EQ(Clean(scan_, {2, 4}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Clean(scan_, {3, 6}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Clean(scan_, {5, 7}), QS_INVALID_ARGUMENT);
  EXPECT_EQ(Clean(scan_, {2, 3, 5}), QS_OK);
  EXPECT_EQ(Left(), (Lines{"a0", "a1", "r2", "r4", "r5"}));
}

class OtherKinds : public CleanOfEachKindTest {};

TEST_P(OtherKinds, May_be_deleted_to_the_last_one) {
  if (kind_ == QS_SCAN_KIND_DUPLICATES) {
    // Only the copy elsewhere allows it here.
    ASSERT_TRUE(machine_.Exists(kKeptCopy));
  }
  const Paths paths = AddFindings(3);
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(LeftOf(paths), Lines{});
}

TEST_P(OtherKinds, Rows_that_say_duplicate_are_a_set_in_a_duplicate_scan_alone) {
  AddFindings(2);
  ScanTree();
  const std::uint64_t first = scan_tests::Poll(scan_).item_count;
  machine_.AddFile(u"C:\\x", "1");
  machine_.AddFile(u"C:\\y", "1");
  AppendRows(scan_, {FindingOf(RowKind::kDuplicate, 1'000, 1, u"C:\\x"),
                     FindingOf(RowKind::kDuplicate, 1'000, 1, u"C:\\y")});
  EXPECT_EQ(CleanIds({first, first + 1}),
            kind_ == QS_SCAN_KIND_DUPLICATES ? QS_INVALID_ARGUMENT : QS_OK);
  EXPECT_EQ(machine_.Exists(u"C:\\x"), kind_ == QS_SCAN_KIND_DUPLICATES);
}

INSTANTIATE_TEST_SUITE_P(Of, OtherKinds, ::testing::ValuesIn(kKinds), support::CaseName());

// Every selection followed by every selection, over a set of three and a set of two.
TEST(CleanSelections, Every_pair_of_cleans_leaves_a_copy_of_each_set) {
  constexpr unsigned kFirstSet = 0b00111;
  constexpr unsigned kSecondSet = 0b11000;
  constexpr unsigned kAll = 0b11111;
  SimulatedWindows machine;
  const Paths paths = {u"C:\\d\\a0", u"C:\\d\\a1", u"C:\\d\\a2", u"C:\\d\\b0", u"C:\\d\\b1"};
  ScanHandle scan;
  const auto ids_of = [](unsigned selection) {
    Ids ids;
    for (unsigned i = 0; i < 5; ++i) {
      if ((selection >> i & 1) != 0) {
        ids.push_back(i);
      }
    }
    return ids;
  };
  // What is left afterwards, and the status.
  const auto expected = [](unsigned left, unsigned selection) {
    const bool takes_gone = (selection & ~left) != 0;
    const bool takes_all = (left & ~selection & kFirstSet) == 0 && (selection & kFirstSet) != 0;
    const bool takes_all_of_second =
        (left & ~selection & kSecondSet) == 0 && (selection & kSecondSet) != 0;
    return takes_gone || takes_all || takes_all_of_second ? std::pair(left, QS_INVALID_ARGUMENT)
                                                          : std::pair(left & ~selection, QS_OK);
  };
  const auto left_now = [&] {
    unsigned left = 0;
    for (unsigned i = 0; i < 5; ++i) {
      left |= (machine.Exists(paths[i]) ? 1u : 0u) << i;
    }
    return left;
  };
  unsigned refused = 0;
  for (unsigned first = 0; first <= kAll; ++first) {
    for (unsigned second = 0; second <= kAll; ++second) {
      SCOPED_TRACE(std::to_string(first) + ", " + std::to_string(second));
      for (unsigned i = 0; i < 5; ++i) {
        machine.AddFile(paths[i], i < 3 ? "first" : "second");
      }
      ASSERT_EQ(scan.Start(DuplicateRequest({u"C:\\d"})), QS_OK);
      unsigned left = kAll;
      for (const unsigned selection : {first, second}) {
        const auto [left_then, status] = expected(left, selection);
        ASSERT_EQ(Clean(scan, ids_of(selection)), status);
        ASSERT_EQ(left_now(), left_then);
        left = left_then;
        refused += status != QS_OK;
      }
      ASSERT_NE(left & kFirstSet, 0u);
      ASSERT_NE(left & kSecondSet, 0u);
    }
  }
  EXPECT_GT(refused, 500u);
}

}  // namespace
}  // namespace quastel::clean_tests
