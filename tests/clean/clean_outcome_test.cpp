// What a clean deletes, what it leaves alone, and how it counts both.

#include <functional>
#include <utility>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

// ---- What stands in the way of one file.

struct Obstacle : support::NamedCase {
  // Gets in the way of the file, after the scan.
  void (*put)(SimulatedWindows& machine, const Text& file, std::uint64_t size);
  // Whether the same file can be deleted once `clear` was called; null: not any more.
  void (*clear)(SimulatedWindows& machine, const Text& file);
};

void MoveFolderBehindLink(SimulatedWindows& machine, LinkKind kind, const Text& file,
                          std::uint64_t size) {
  // The same names, sizes and times, one link further.
  const Text folder = file.substr(0, file.rfind(u'\\'));
  machine.Remove(folder);
  machine.AddSizedFile(u"C:\\elsewhere\\" + file.substr(folder.size() + 1), size);
  machine.AddLink(kind, folder, u"C:\\elsewhere");
}

const Obstacle kObstacles[] = {
    {{"It_grew"},
     [](auto& m, const Text& file, std::uint64_t size) { m.AddSizedFile(file, size + 1); },
     nullptr},
    {{"It_shrank"},
     [](auto& m, const Text& file, std::uint64_t size) { m.AddSizedFile(file, size - 1); },
     nullptr},
    {{"It_grew_by_4_GiB"},
     [](auto& m, const Text& file, std::uint64_t size) {
       m.AddSizedFile(file, size + (std::uint64_t{1} << 32));
     },
     nullptr},
    {{"It_was_written_a_tick_later"},
     [](auto& m, const Text& file, std::uint64_t) { m.SetLastWrite(file, kDefaultLastWrite + 1); },
     [](auto& m, const Text& file) { m.SetLastWrite(file, kDefaultLastWrite); }},
    {{"It_was_written_a_tick_earlier"},
     [](auto& m, const Text& file, std::uint64_t) { m.SetLastWrite(file, kDefaultLastWrite - 1); },
     [](auto& m, const Text& file) { m.SetLastWrite(file, kDefaultLastWrite); }},
    {{"It_is_gone"}, [](auto& m, const Text& file, std::uint64_t) { m.Remove(file); }, nullptr},
    {{"Its_folder_is_gone"},
     [](auto& m, const Text& file, std::uint64_t) { m.Remove(file.substr(0, file.rfind(u'\\'))); },
     nullptr},
    {{"It_is_in_use"},
     [](auto& m, const Text& file, std::uint64_t) { m.Lock(file); },
     [](auto& m, const Text& file) { m.Unlock(file); }},
    {{"It_is_read_by_someone_who_lets_others_read"},
     [](auto& m, const Text& file, std::uint64_t) { m.Lock(file, 1); },
     [](auto& m, const Text& file) { m.Unlock(file); }},
    {{"It_is_read_only"},
     [](auto& m, const Text& file, std::uint64_t) {
       m.SetAttributes(file, platform::kAttributeReadOnly | platform::kAttributeArchive);
     },
     [](auto& m, const Text& file) { m.SetAttributes(file, platform::kAttributeArchive); }},
    {{"Deleting_it_is_denied"},
     [](auto& m, const Text& file, std::uint64_t) { m.Deny(file, Denial{.deleting = true}); },
     [](auto& m, const Text& file) { m.Deny(file, Denial{}); }},
    {{"Looking_at_it_is_denied"},
     [](auto& m, const Text& file, std::uint64_t) { m.Deny(file, Denial{.querying = true}); },
     [](auto& m, const Text& file) { m.Deny(file, Denial{}); }},
    {{"Looking_at_its_folder_is_denied"},
     [](auto& m, const Text& file, std::uint64_t) {
       m.Deny(file.substr(0, file.rfind(u'\\')), Denial{.querying = true});
     },
     [](auto& m, const Text& file) { m.Deny(file.substr(0, file.rfind(u'\\')), Denial{}); }},
    {{"It_is_an_empty_folder"},
     [](auto& m, const Text& file, std::uint64_t) {
       m.Remove(file);
       m.AddFolder(file);
     },
     nullptr},
    {{"It_is_a_folder_with_something_in_it"},
     [](auto& m, const Text& file, std::uint64_t) {
       m.Remove(file);
       m.AddFile(file + u"\\inside", "x");
     },
     nullptr},
    {{"It_is_a_link_to_such_a_file"},
     [](auto& m, const Text& file, std::uint64_t size) {
       m.AddSizedFile(u"C:\\elsewhere\\f", size);
       m.AddLink(LinkKind::kFileLink, file, u"C:\\elsewhere\\f");
     },
     nullptr},
    {{"It_is_a_junction"},
     [](auto& m, const Text& file, std::uint64_t) {
       m.AddFolder(u"C:\\elsewhere");
       m.AddLink(LinkKind::kJunction, file, u"C:\\elsewhere");
     },
     nullptr},
    {{"It_went_into_the_cloud"},
     [](auto& m, const Text& file, std::uint64_t size) { m.AddPlaceholder(file, size); },
     nullptr},
    {{"Its_folder_is_a_junction"},
     [](auto& m, const Text& file, std::uint64_t size) {
       MoveFolderBehindLink(m, LinkKind::kJunction, file, size);
     },
     nullptr},
    {{"Its_folder_is_a_symbolic_link"},
     [](auto& m, const Text& file, std::uint64_t size) {
       MoveFolderBehindLink(m, LinkKind::kFolderLink, file, size);
     },
     nullptr},
    {{"A_folder_further_up_is_a_junction"},
     [](auto& m, const Text& file, std::uint64_t size) {
       m.Remove(kTree);
       m.AddSizedFile(u"C:\\elsewhere" + file.substr(kTree.size()), size);
       m.AddLink(LinkKind::kJunction, kTree, u"C:\\elsewhere");
     },
     nullptr},
    {{"Its_folder_is_a_file"},
     [](auto& m, const Text& file, std::uint64_t) {
       const Text folder = file.substr(0, file.rfind(u'\\'));
       m.Remove(folder);
       m.AddFile(folder, "x");
     },
     nullptr},
};

class CleanObstacle : public CleanTest,
                      public ::testing::WithParamInterface<std::tuple<Obstacle, KindCase>> {
 protected:
  CleanObstacle() : CleanTest(std::get<1>(GetParam()).kind) {}
  const Obstacle& obstacle() const { return std::get<0>(GetParam()); }
};

TEST_P(CleanObstacle, Alone_it_makes_the_clean_fail_and_stays_as_it_is) {
  const Text file = AddFinding(u"sub\\f");
  ScanTree();
  obstacle().put(machine_, file, finding_size());
  const std::string disk = machine_.Describe();
  const bool exists = machine_.Exists(file);
  EXPECT_EQ(CleanPaths({file}), QS_FAILED);
  EXPECT_EQ(Block(), Ended(QS_FAILED, 1, 0, 1, 0));
  EXPECT_EQ(MarksOf(scan_), Ids{});
  EXPECT_EQ(machine_.Describe(), disk);

  // It was not deleted, so it may be named again.
  const bool clears = obstacle().clear != nullptr;
  if (clears) {
    obstacle().clear(machine_, file);
  }
  EXPECT_EQ(CleanPaths({file}), clears ? QS_OK : QS_FAILED);
  EXPECT_EQ(MarksOf(scan_), clears ? IdsOf({file}) : Ids{});
  EXPECT_EQ(machine_.Exists(file), exists && !clears);
}

TEST_P(CleanObstacle, Does_not_keep_the_others_from_being_deleted) {
  const Paths others = AddFindings(2);
  const Text file = AddFinding(u"sub\\f");
  ScanTree();
  const Ids ids = IdsOf({others[0], file, others[1]});
  const bool moves_others = obstacle().name == std::string("A_folder_further_up_is_a_junction");
  obstacle().put(machine_, file, finding_size());
  EXPECT_EQ(CleanIds(ids), moves_others ? QS_FAILED : QS_OK);
  if (moves_others) {
    EXPECT_EQ(Block(), Ended(QS_FAILED, 3, 0, 3, 0));
    EXPECT_TRUE(machine_.Exists(u"C:\\elsewhere\\sub\\f"));
  } else {
    EXPECT_EQ(Block(), Ended(QS_OK, 3, 2, 1, 2 * finding_size()));
    EXPECT_EQ(MarksOf(scan_), IdsOf(others));
    EXPECT_EQ(LeftOf(others), Lines{});
  }
}

std::string NameOfObstacle(const ::testing::TestParamInfo<std::tuple<Obstacle, KindCase>>& info) {
  return std::string(std::get<1>(info.param).name) + "_" + std::get<0>(info.param).name;
}
INSTANTIATE_TEST_SUITE_P(Of, CleanObstacle,
                         ::testing::Combine(::testing::ValuesIn(kObstacles),
                                            ::testing::ValuesIn(kKinds)),
                         NameOfObstacle);

// ---- Counting.

class CleanOutcome : public CleanOfEachKindTest {};

TEST_P(CleanOutcome, Deletes_what_was_named_and_nothing_else) {
  const Paths paths = AddFindings(5);
  machine_.AddFile(u"C:\\t\\not a finding of every kind", "other content");
  machine_.AddFile(u"C:\\out\\of\\the\\tree", "x");
  ScanTree();
  const std::string report = ReportWithoutMarks(scan_);
  const Ids ids = IdsOf({paths[1], paths[3]});
  EXPECT_EQ(CleanIds(ids), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 2, 2, 0, 2 * finding_size()));
  EXPECT_EQ(MarksOf(scan_), ids);
  EXPECT_EQ(LeftOf(paths), (Lines{"C:\\t\\f000", "C:\\t\\f002", "C:\\t\\f004"}));
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\not a finding of every kind"));
  EXPECT_TRUE(machine_.Exists(u"C:\\out\\of\\the\\tree"));
  EXPECT_EQ(ReportWithoutMarks(scan_), report) << "counts, totals and rows are not reduced";
}

TEST_P(CleanOutcome, Nothing_goes_to_the_recycle_bin) {
  const Paths paths = AddFindings(3);
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_TRUE(machine_.recycled().empty());
  for (const CallRecord& call : machine_.record()) {
    for (const Call other : {Call::kShellDelete, Call::kInitializeCom, Call::kCreateFileOperation,
                             Call::kRenameFile, Call::kOpenFile}) {
      EXPECT_NE(call.call, other) << NameOf(other);
    }
  }
}

TEST_P(CleanOutcome, Everything_failed_is_a_failure_and_one_success_is_none) {
  const Paths paths = AddFindings(4);
  ScanTree();
  for (const Text& path : paths) {
    machine_.Lock(path);
  }
  EXPECT_EQ(CleanPaths(paths), QS_FAILED);
  EXPECT_EQ(Block(), Ended(QS_FAILED, 4, 0, 4, 0));
  machine_.Unlock(paths[2]);
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 4, 1, 3, finding_size()));
  EXPECT_EQ(MarksOf(scan_), IdsOf({paths[2]}));
}

TEST_P(CleanOutcome, The_counters_grow_with_each_file_and_the_marks_with_them) {
  const Paths paths = AddFindings(4);
  ScanTree();
  const Ids ids = IdsOf(paths);
  machine_.SetAttributes(paths[1], platform::kAttributeReadOnly);
  std::vector<CleanBlock> blocks;
  std::vector<Ids> marks;
  scan_tests::InsideEveryCall(machine_, Call::kRemoveFile, [&](std::uint64_t) {
    blocks.push_back(Block());
    marks.push_back(MarksOf(scan_));
  });
  EXPECT_EQ(CleanIds(ids), QS_OK);
  const std::uint64_t size = finding_size();
  const auto running = [](std::uint64_t deleted, std::uint64_t failed, std::uint64_t bytes) {
    return CleanBlock{QS_STATE_RUNNING, 4, deleted, failed, deleted + failed, bytes, QS_OK};
  };
  EXPECT_EQ(blocks, (std::vector<CleanBlock>{running(0, 0, 0), running(1, 0, size),
                                             running(1, 1, size), running(2, 1, 2 * size)}));
  EXPECT_EQ(marks, (std::vector<Ids>{{}, {ids[0]}, {ids[0]}, {ids[0], ids[2]}}));
  EXPECT_EQ(Block(), Ended(QS_OK, 4, 3, 1, 3 * size));
}

TEST_P(CleanOutcome, Hidden_system_and_other_attributes_are_no_obstacle) {
  Paths paths;
  const platform::Attributes all[] = {
      platform::kAttributeHidden, platform::kAttributeSystem, platform::kAttributeNormal,
      platform::kAttributeOffline,
      platform::kAttributeHidden | platform::kAttributeSystem | platform::kAttributeArchive};
  for (const platform::Attributes attributes : all) {
    paths.push_back(
        AddFinding(Wide("a" + std::to_string(paths.size())), {attributes, kDefaultLastWrite}));
  }
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 5, 5, 0, 5 * finding_size()));
  EXPECT_EQ(LeftOf(paths), Lines{});
}

TEST_P(CleanOutcome, Someone_who_allows_deleting_while_he_reads_is_no_obstacle) {
  const Paths paths = AddFindings(2);
  ScanTree();
  machine_.Lock(paths[0], 7);
  EXPECT_EQ(CleanPaths({paths[0]}), QS_OK);
  EXPECT_FALSE(machine_.Exists(paths[0]));
}

TEST_P(CleanOutcome, A_new_name_in_other_letters_is_still_the_same_file) {
  const Text path = AddFinding(u"Some File.TMP");
  AddFinding(u"another one");
  ScanTree();
  const Ids ids = IdsOf({path});
  machine_.Remove(path);
  AddFinding(u"SOME file.tmp");
  EXPECT_EQ(CleanIds(ids), QS_OK);
  EXPECT_FALSE(machine_.Exists(path));
}

TEST_P(CleanOutcome, Long_paths_are_deleted_like_short_ones) {
  Paths paths;
  for (const std::size_t length : {246u, 247u, 248u, 249u, 259u, 260u, 261u, 400u}) {
    const Text path = support::NestedTo(length, Text(kTree) + u"\\l");
    paths.push_back(AddFinding(TextView(path).substr(kTree.size() + 1)));
    ASSERT_EQ(paths.back().size(), length);
  }
  ScanTree();
  const std::string before = machine_.Describe();
  EXPECT_EQ(CleanIds(IdsOfAll()), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 8, 8, 0, 8 * finding_size()));
  EXPECT_EQ(LeftOf(paths), Lines{});
}

TEST_P(CleanOutcome, A_clock_that_was_set_to_another_zone_makes_every_file_another_one) {
  const Paths paths = AddFindings(2);
  machine_.SetTimeZoneOffset(60);
  ScanTree();
  machine_.SetTimeZoneOffset(120);
  EXPECT_EQ(CleanPaths(paths), QS_FAILED);
  EXPECT_EQ(LeftOf(paths), Utf8(paths));
  machine_.SetTimeZoneOffset(60);
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(LeftOf(paths), Lines{});
}

INSTANTIATE_TEST_SUITE_P(Of, CleanOutcome, ::testing::ValuesIn(kKinds), support::CaseName());

// ---- Sizes.

class CleanSizes : public CleanTest {
 protected:
  void Add(std::uint64_t size) {
    const Text path = Text(kTree) + Wide("\\s" + std::to_string(paths_.size()));
    machine_.AddSizedFile(path, size);
    rows_.push_back(FindingOf(RowKind::kLargeFile, 1, static_cast<std::int64_t>(size), path));
    paths_.push_back(path);
  }
  void Scan() {
    ASSERT_EQ(scan_.Start(Request::LargeFiles({u"C:\\nothing"})), QS_OK);
    AppendRows(scan_, rows_);
  }
  std::vector<ReportRow> rows_;
  Paths paths_;
};

TEST_F(CleanSizes, The_bytes_freed_are_the_sum_over_the_deleted) {
  constexpr std::uint64_t kHuge = std::uint64_t{3} << 40;
  for (const std::uint64_t size : {kHuge, std::uint64_t{1}, std::uint64_t{0}, kHuge + 7}) {
    Add(size);
  }
  Scan();
  machine_.Lock(paths_[1]);
  EXPECT_EQ(CleanIds({0, 1, 2, 3}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 4, 3, 1, 2 * kHuge + 7));
}

TEST_F(CleanSizes, An_empty_file_is_deleted_and_frees_nothing) {
  Add(0);
  Scan();
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, 0));
  EXPECT_EQ(LeftOf(paths_), Lines{});
}

TEST_F(CleanSizes, A_negative_size_fits_no_file_and_is_never_counted) {
  Add(5);
  Add(0);
  Add(6);
  rows_[0].size = -5;
  rows_[1].size = INT64_MIN;
  Scan();
  EXPECT_EQ(CleanIds({0, 1, 2}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 3, 1, 2, 6));
  EXPECT_EQ(LeftOf(paths_), (Lines{"C:\\t\\s0", "C:\\t\\s1"}));
}

TEST_F(CleanSizes, A_path_that_is_empty_or_no_file_fails) {
  Scan();
  AppendRows(
      scan_,
      {FindingOf(RowKind::kLargeFile, 1, 0, u""), FindingOf(RowKind::kLargeFile, 1, 0, u"C:\\"),
       FindingOf(RowKind::kLargeFile, 1, 0, u"C:"), FindingOf(RowKind::kLargeFile, 1, 0, u"C:\\t"),
       FindingOf(RowKind::kLargeFile, 1, 0, u"C:\\t\\"),
       FindingOf(RowKind::kLargeFile, 1, 0, u"C:\\t\\*"),
       FindingOf(RowKind::kLargeFile, 1, 0, u"Z:\\nothing")});
  const std::string disk = machine_.Describe();
  EXPECT_EQ(CleanIds({0, 1, 2, 3, 4, 5, 6}), QS_FAILED);
  EXPECT_EQ(Block(), Ended(QS_FAILED, 7, 0, 7, 0));
  EXPECT_EQ(machine_.Describe(), disk);
}

TEST_F(CleanSizes, Files_on_a_share_are_deleted) {
  machine_.AddShare(u"\\\\server\\share");
  machine_.AddSizedFile(u"\\\\server\\share\\a\\b", kLarge);
  machine_.AddSizedFile(u"\\\\server\\share\\c", kLarge);
  ASSERT_EQ(scan_.Start(Request::LargeFiles({u"\\\\server\\share"})), QS_OK);
  EXPECT_EQ(CleanIds({0, 1}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 2, 2, 0, 2 * kLarge));
  EXPECT_FALSE(machine_.Exists(u"\\\\server\\share\\a\\b"));
  EXPECT_FALSE(machine_.Exists(u"\\\\server\\share\\c"));
}

}  // namespace
}  // namespace quastel::clean_tests
