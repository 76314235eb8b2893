#include <algorithm>

#include "session/session_fixture.h"

namespace quastel::session_tests {
namespace {

class SessionClean : public SessionTest {};

TEST_F(SessionClean, Deletes_the_named_rows_marks_them_and_leaves_all_else) {
  const Paths paths = AddFiles(5);
  machine_.AddFile(u"C:\\other\\f000", "1");
  ScanTree();
  const Lines disk = DiskOf(machine_);
  const ScanBlock scan = ScanOf(session_);
  std::vector<Row> rows = ReadReport(session_);

  EXPECT_EQ(session_.Clean({1, 3}), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 2, 2));
  EXPECT_EQ(GoneSince(disk, machine_), (Lines{"C:\\t\\f001", "C:\\t\\f003"}));
  EXPECT_EQ(NewSince(disk, machine_), Lines{});
  rows[1].deleted = 1;
  rows[3].deleted = 1;
  EXPECT_EQ(ReadReport(session_), rows) << "nothing but the marks changes, and no row goes away";
  EXPECT_EQ(ScanOf(session_), scan);
  EXPECT_EQ(CurrentPathOf(session_), paths.back());
  EXPECT_TRUE(machine_.recycled().empty());
}

TEST_F(SessionClean, Goes_in_the_order_of_the_caller) {
  AddFiles(4);
  ScanTree();
  EXPECT_EQ(session_.Clean({2, 0, 3, 1}), QS_OK);
  EXPECT_EQ(RemovalsOf(machine_), (Lines{"RemoveFile C:\\t\\f002", "RemoveFile C:\\t\\f000",
                                         "RemoveFile C:\\t\\f003", "RemoveFile C:\\t\\f001"}));
}

// Resolving a long path takes the dot off, so that the row has the path of another file.
TEST_F(SessionClean, Of_a_row_whose_name_the_system_shortens_removes_nothing) {
  const Text name = Text(245, Char{'n'});
  for (const Text& path : {u"C:\\t\\" + name, Text(u"C:\\t\\m")}) {
    machine_.AddFile(path, "12345");
    machine_.AddFile(u"\\\\?\\" + path + u".", "54321");
  }
  ScanTree();
  const Lines disk = DiskOf(machine_);
  int refused = 0;
  for (std::uint64_t row = 0; row < RowCountOf(session_); ++row) {
    if (ReadRow(session_, row).name.ends_with(Char{'.'})) {
      EXPECT_EQ(session_.Clean({row}), QS_FAILED);
      EXPECT_EQ(DiskOf(machine_), disk);
      ++refused;
    }
  }
  EXPECT_EQ(refused, 2);
}

TEST_F(SessionClean, Of_no_rows_is_done_at_once_and_touches_nothing) {
  AddFiles(2);
  ScanTree();
  const Lines disk = DiskOf(machine_);
  const std::uint64_t never_read = 99;
  EXPECT_EQ(qs_session_start_clean(session_, nullptr, 0), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 0, 0));
  EXPECT_EQ(qs_session_start_clean(session_, &never_read, 0), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 0, 0));
  EXPECT_EQ(DiskOf(machine_), disk);
  EXPECT_TRUE(machine_.record().empty());
}

TEST_F(SessionClean, Of_no_rows_starts_the_counters_anew) {
  AddFiles(2);
  ScanTree();
  ASSERT_EQ(session_.Clean({0}), QS_OK);
  ASSERT_EQ(session_.Clean({0}), QS_FAILED);
  ASSERT_EQ(CleanOf(session_), Ended(QS_FAILED, 1, 0));
  EXPECT_EQ(session_.Clean({}), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 0, 0));
}

TEST_F(SessionClean, Stops_at_the_first_file_that_changed_and_leaves_the_rest_alone) {
  const Paths paths = AddFiles(3);
  ScanTree();
  machine_.AddSizedFile(paths[1], 1000);
  EXPECT_EQ(session_.Clean({0, 1, 2}), QS_FAILED);
  EXPECT_EQ(CleanOf(session_), Ended(QS_FAILED, 3, 1));
  EXPECT_EQ(LeftOf(paths), (Lines{"C:\\t\\f001", "C:\\t\\f002"}));
  EXPECT_EQ(MarksOf(session_), Ids{0});
  for (const CallRecord& call : machine_.record()) {
    EXPECT_NE(Utf8(call.path), "C:\\t\\f002") << "a row behind the failure may not be looked at";
  }
}

TEST_F(SessionClean, Stops_at_each_place_where_a_file_cannot_be_deleted) {
  for (std::uint64_t bad = 0; bad < 5; ++bad) {
    SCOPED_TRACE(bad);
    const Paths paths = AddFiles(5);
    ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    machine_.SetAttributes(paths[bad], platform::kAttributeReadOnly);
    EXPECT_EQ(session_.Clean(UpTo(5)), QS_FAILED);
    EXPECT_EQ(CleanOf(session_), Ended(QS_FAILED, 5, bad));
    EXPECT_EQ(MarksOf(session_), UpTo(bad));
    EXPECT_EQ(LeftOf(paths).size(), 5 - bad);
  }
}

TEST_F(SessionClean, Goes_on_behind_a_failure_when_it_is_asked_again) {
  const Paths paths = AddFiles(4);
  ScanTree();
  machine_.Lock(paths[1]);
  ASSERT_EQ(session_.Clean(UpTo(4)), QS_FAILED);
  machine_.Unlock(paths[1]);
  EXPECT_EQ(session_.Clean({3, 1, 2}), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, 3, 3));
  EXPECT_EQ(MarksOf(session_), UpTo(4));
  EXPECT_EQ(LeftOf(paths), Lines{});
}

TEST_F(SessionClean, Tries_a_row_again_that_is_deleted_already_and_fails) {
  const Paths paths = AddFiles(3);
  ScanTree();
  ASSERT_EQ(session_.Clean({1}), QS_OK);
  EXPECT_EQ(session_.Clean({0, 1, 2}), QS_FAILED);
  EXPECT_EQ(CleanOf(session_), Ended(QS_FAILED, 3, 1));
  EXPECT_EQ(MarksOf(session_), (Ids{0, 1})) << "the mark of the earlier clean stays";
  EXPECT_EQ(LeftOf(paths), Lines{"C:\\t\\f002"});
}

TEST_F(SessionClean, Deletes_again_what_came_back_exactly_as_it_was) {
  const Paths paths = AddFiles(1);
  ScanTree();
  ASSERT_EQ(session_.Clean({0}), QS_OK);
  AddFiles(1);
  EXPECT_EQ(session_.Clean({0}), QS_OK);
  EXPECT_EQ(LeftOf(paths), Lines{});
  EXPECT_EQ(MarksOf(session_), Ids{0});
}

TEST_F(SessionClean, Never_removes_a_folder) {
  AddFile(u"sub\\deep\\only", 1);
  ScanTree();
  EXPECT_EQ(session_.Clean({0}), QS_OK);
  EXPECT_EQ(machine_.CallCount(Call::kRemoveFolder), 0u);
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\sub\\deep"));
}

TEST_F(SessionClean, Takes_the_rows_of_large_files_by_their_own_index) {
  AddFile(u"a", 1);
  AddFile(u"b", kLarge);
  AddFile(u"c", 1);
  AddFile(u"d", kLarge);
  ScanTree(QS_SESSION_LARGE_FILES);
  EXPECT_EQ(session_.Clean({2}), QS_NOT_FOUND);
  EXPECT_EQ(session_.Clean({1}), QS_OK);
  EXPECT_EQ(Utf8(machine_.NamesIn(u"C:\\t")), (Lines{"a", "b", "c"}));
}

TEST_F(SessionClean, Deletes_a_long_path) {
  const Text path = support::NestedTo(300, u"C:\\t");
  machine_.AddSizedFile(path, 1);
  ScanTree();
  EXPECT_EQ(session_.Clean({0}), QS_OK);
  EXPECT_FALSE(machine_.Exists(path));
}

TEST_F(SessionClean, Deletes_what_was_found_below_any_spelling_of_the_root) {
  machine_.AddShare(u"\\\\server\\share");
  for (const Text& root :
       Paths{u"c:\\T", u"C:\\t\\", u"C:/t", u"\\\\?\\C:\\t", u"t", u"\\\\server\\share\\t"}) {
    SCOPED_TRACE(Utf8(root));
    machine_.AddFile(u"C:\\t\\sub\\f", "1");
    machine_.AddFile(u"\\\\server\\share\\t\\sub\\f", "1");
    ASSERT_EQ(session_.Scan(root), QS_OK);
    ASSERT_EQ(RowCountOf(session_), 1u);
    EXPECT_EQ(session_.Clean({0}), QS_OK);
    EXPECT_NE(machine_.Exists(u"C:\\t\\sub\\f"), machine_.Exists(u"\\\\server\\share\\t\\sub\\f"))
        << "one of the two is gone, and only one";
  }
}

TEST_F(SessionClean, Deletes_a_file_of_no_bytes_and_one_of_many) {
  AddFile(u"none", 0);
  AddFile(u"some", std::uint64_t{1} << 50);
  ScanTree();
  EXPECT_EQ(session_.Clean({0, 1}), QS_OK);
  EXPECT_TRUE(machine_.NamesIn(u"C:\\t").empty());
}

TEST_F(SessionClean, Shows_its_progress_file_by_file) {
  const Paths paths = AddFiles(4);
  ScanTree();
  std::uint64_t removing = 0;
  machine_.SetHook([&](const CallRecord& record) {
    EXPECT_EQ(CleanOf(session_), (CleanBlock{QS_STATE_RUNNING, 4, removing, QS_OK}));
    EXPECT_EQ(MarksOf(session_), UpTo(removing));
    EXPECT_EQ(ScanOf(session_).state, QS_STATE_DONE);
    // The file goes with this call; the next call comes when its row has been marked.
    removing += record.call == Call::kRemoveFile;
  });
  EXPECT_EQ(session_.Clean(UpTo(4)), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(removing, 4u);
}

TEST_F(SessionClean, Shows_no_status_of_an_earlier_clean_while_it_runs) {
  AddFiles(3);
  ScanTree();
  ASSERT_EQ(session_.Clean({0}), QS_OK);
  ASSERT_EQ(session_.Clean({0, 1}), QS_FAILED);
  unsigned looks = 0;
  InsideCall(machine_, Call::kRemoveFile, 1, [&] {
    EXPECT_EQ(CleanOf(session_), (CleanBlock{QS_STATE_RUNNING, 1, 0, QS_OK}));
    ++looks;
  });
  EXPECT_EQ(session_.Clean({1}), QS_OK);
  EXPECT_EQ(looks, 1u);
}

TEST_F(SessionClean, Works_on_its_own_copy_of_the_indexes) {
  const Paths paths = AddFiles(3);
  ScanTree();
  Ids ids = {0, 1};
  InsideCall(machine_, Call::kRemoveFile, 1, [&] { ids = {2, 2}; });
  EXPECT_EQ(session_.Clean(ids), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(LeftOf(paths), Lines{"C:\\t\\f002"});
}

TEST_F(SessionClean, Looks_at_each_file_only_when_its_turn_has_come) {
  const Paths paths = AddFiles(2);
  ScanTree();
  // The second file changes while the first one is being deleted.
  InsideCall(machine_, Call::kRemoveFile, 1, [&] { machine_.SetLastWrite(paths[1], 5); });
  EXPECT_EQ(session_.Clean({0, 1}), QS_FAILED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(LeftOf(paths), Lines{"C:\\t\\f001"});
}

}  // namespace
}  // namespace quastel::session_tests
