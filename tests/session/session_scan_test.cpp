#include <map>

#include "session/session_fixture.h"
#include "support/walk.h"

namespace quastel::session_tests {
namespace {

class SessionScan : public SessionTest {};

TEST_F(SessionScan, A_row_is_path_name_size_and_time_of_a_file) {
  machine_.AddSizedFile(u"C:\\t\\sub\\Name.Ext", 1234, 0, {.last_write = 77});
  ScanTree();
  EXPECT_EQ(ReadReport(session_), (std::vector<Row>{{u"C:\\t\\sub\\Name.Ext", u"Name.Ext", 1234,
                                                     77 + 504'911'232'000'000'000, 0}}));
}

TEST_F(SessionScan, Times_are_local_times) {
  machine_.SetTimeZoneOffset(-90);
  AddFile(u"f", 1, {.last_write = 133'000'000'000'000'000});
  ScanTree();
  EXPECT_EQ(ReadRow(session_, 0).modified, kDefaultModified - 90 * 60 * std::uint64_t{10'000'000});
}

// Folders in folders, links, a long path, empty files and folders.
void FurnishTree(SimulatedWindows& machine) {
  machine.AddSizedFile(u"C:\\t\\b.log", 10);
  machine.AddSizedFile(u"C:\\t\\a.zip", kLarge);
  machine.AddSizedFile(u"C:\\t\\m\\c.log", kNotLarge);
  machine.AddSizedFile(u"C:\\t\\m\\deep\\d.mkv", kLarge + 1);
  machine.AddSizedFile(u"C:\\t\\n\\zero", 0);
  machine.AddFolder(u"C:\\t\\o\\empty");
  machine.AddSizedFile(support::NestedTo(300, u"C:\\t\\long"), 11);
  machine.AddLink(LinkKind::kJunction, u"C:\\t\\junction", u"C:\\other");
  machine.AddLink(LinkKind::kFolderLink, u"C:\\t\\m\\link", u"C:\\other");
  machine.AddLink(LinkKind::kFileLink, u"C:\\t\\m\\file_link", u"C:\\other\\f.jpg");
  machine.AddPlaceholder(u"C:\\t\\cloud", 12);
  machine.AddSizedFile(u"C:\\other\\f.jpg", 13);
  machine.AddSizedFile(u"C:\\t\\Windows\\pagefile.sys", 14);
}

TEST_F(SessionScan, The_rows_are_what_the_enumeration_reports_in_its_order) {
  FurnishTree(machine_);
  const support::WalkResult walked = support::RunWalk(support::FileWalk{.root = u"C:\\t"});
  ASSERT_EQ(walked.files.size(), 7u);
  ScanTree();
  std::vector<support::FoundFile> rows;
  for (const Row& row : ReadReport(session_)) {
    EXPECT_EQ(row.deleted, 0u);
    rows.push_back({Utf8(row.path), row.size, row.modified, Utf8(row.name)});
  }
  EXPECT_EQ(rows, walked.files);
}

TEST_F(SessionScan, Files_of_a_folder_come_before_its_subfolders_and_the_last_subfolder_first) {
  machine_.AddSizedFile(u"C:\\t\\a\\3", 1);
  machine_.AddSizedFile(u"C:\\t\\b\\x\\2", 1);
  machine_.AddSizedFile(u"C:\\t\\b\\1", 1);
  machine_.AddSizedFile(u"C:\\t\\z0", 1);
  ScanTree();
  EXPECT_EQ(PathsOf(ReadReport(session_)),
            (Paths{u"C:\\t\\z0", u"C:\\t\\b\\1", u"C:\\t\\b\\x\\2", u"C:\\t\\a\\3"}));
}

TEST_F(SessionScan, Nothing_is_protected) {
  machine_.AddSizedFile(u"C:\\Windows\\System32\\a.dll", 1);
  machine_.AddSizedFile(u"C:\\pagefile.sys", 2);
  machine_.AddSizedFile(u"C:\\$Recycle.Bin\\b", 3);
  EXPECT_EQ(session_.Scan(u"C:\\"), QS_OK);
  EXPECT_EQ(RowCountOf(session_), 3u);
}

TEST_F(SessionScan, The_mode_decides_which_files_have_rows_and_all_are_counted) {
  FurnishTree(machine_);
  const std::uint64_t bytes = 10 + kLarge + kNotLarge + kLarge + 1 + 11 + 14;
  ScanTree(QS_SESSION_ALL_FILES);
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 7, bytes, 7, QS_OK}));
  const std::vector<Row> all = ReadReport(session_);
  ScanTree(QS_SESSION_INSPECT);
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 7, bytes, 7, QS_OK}));
  EXPECT_EQ(ReadReport(session_), all);
  ScanTree(QS_SESSION_LARGE_FILES);
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 7, bytes, 2, QS_OK}));
  EXPECT_EQ(PathsOf(ReadReport(session_)), (Paths{u"C:\\t\\a.zip", u"C:\\t\\m\\deep\\d.mkv"}));
}

TEST_F(SessionScan, Only_files_above_10_MiB_are_large) {
  const std::uint64_t sizes[] = {0,       1,          10'485'759,       10'485'760,      10'485'761,
                                 1 << 30, 0xFFFFFFFF, 0x1'0000'0000ULL, 0x1'0000'0001ULL};
  std::uint64_t at = 0;
  for (const std::uint64_t size : sizes) {
    AddFile(Wide(std::to_string(at++)), size);
  }
  ScanTree(QS_SESSION_LARGE_FILES);
  EXPECT_EQ(Utf8(PathsOf(ReadReport(session_))),
            (Lines{"C:\\t\\4", "C:\\t\\5", "C:\\t\\6", "C:\\t\\7", "C:\\t\\8"}));
  EXPECT_EQ(ScanOf(session_).files_visited, 9u);
}

TEST_F(SessionScan, The_current_path_is_the_last_file_seen_kept_or_not) {
  AddFile(u"a", kLarge);
  AddFile(u"b", 1);
  ScanTree(QS_SESSION_LARGE_FILES);
  EXPECT_EQ(CurrentPathOf(session_), u"C:\\t\\b");
  EXPECT_EQ(PathsOf(ReadReport(session_)), Paths{u"C:\\t\\a"});
}

TEST_F(SessionScan, Current_path_counters_and_rows_follow_every_file) {
  Paths paths;
  Text folder;
  for (std::uint64_t size = 1; size <= 5; ++size, folder += u"sub\\") {
    paths.push_back(AddFile(folder + u"a", size));
  }
  std::size_t converted = 0;
  unsigned looks = 0;
  machine_.SetHook([&](const CallRecord& record) {
    const std::uint64_t bytes = converted * (converted + 1) / 2;
    EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_RUNNING, converted, bytes, converted, QS_OK}));
    EXPECT_EQ(CurrentPathOf(session_), converted == 0 ? Text() : paths[converted - 1]);
    EXPECT_EQ(PathsOf(ReadReport(session_)),
              Paths(paths.begin(), paths.begin() + static_cast<std::ptrdiff_t>(converted)));
    ++looks;
    // The first file of a folder is handed over once its time has been converted.
    converted += record.call == Call::kToLocalFileTime;
  });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(converted, 5u);
  EXPECT_GT(looks, 10u);
  EXPECT_EQ(CurrentPathOf(session_), paths.back()) << "it stays after the scan";
}

TEST_F(SessionScan, A_root_that_cannot_be_walked_gives_no_rows_and_is_done) {
  AddFiles(2);
  machine_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\t");
  machine_.AddFolder(u"C:\\denied");
  machine_.AddFile(u"C:\\denied\\f", "1");
  machine_.Deny(u"C:\\denied", {.listing = true});
  for (const Text& root :
       Paths{u"C:\\missing", u"C:\\t\\f000", u"C:\\junction", u"C:\\denied", u"X:\\", u"<>|"}) {
    SCOPED_TRACE(Utf8(root));
    ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    EXPECT_EQ(session_.Scan(root), QS_OK);
    EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 0, 0, 0, QS_OK}));
    EXPECT_EQ(CurrentPathOf(session_), u"");
    EXPECT_EQ(session_.Clean({}), QS_OK);
    EXPECT_EQ(session_.Clean({0}), QS_NOT_FOUND);
  }
}

TEST_F(SessionScan, A_folder_that_cannot_be_listed_is_passed_over) {
  AddFile(u"a", 1);
  AddFile(u"denied\\b", 1);
  AddFile(u"c\\d", 1);
  machine_.Deny(u"C:\\t\\denied", {.listing = true});
  ScanTree();
  EXPECT_EQ(PathsOf(ReadReport(session_)), (Paths{u"C:\\t\\a", u"C:\\t\\c\\d"}));
}

TEST_F(SessionScan, A_folder_that_fails_for_any_reason_is_passed_over) {
  using platform::Error;
  AddFile(u"a", 1);
  AddFile(u"m\\b", 2);
  AddFile(u"z\\c", 4);
  for (const Error error :
       {Error::kFileNotFound, Error::kPathNotFound, Error::kAccessDenied, Error::kNotReady,
        Error::kCrc, Error::kSharingViolation, Error::kBadNetworkPath, Error::kFilenameTooLong}) {
    SCOPED_TRACE(static_cast<std::uint32_t>(error));
    // The root, then its last subfolder, then its first one.
    const std::uint64_t bytes_without[] = {0, 1 + 2, 1 + 4};
    for (std::uint64_t nth = 1; nth <= 3; ++nth) {
      machine_.ClearFaults();
      machine_.FailCall(Call::kFindFirstBasic, nth, Repeat::kOnce, error);
      EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
      const std::uint64_t files = nth == 1 ? 0 : 2;
      EXPECT_EQ(ScanOf(session_),
                (ScanBlock{QS_STATE_DONE, files, bytes_without[nth - 1], files, QS_OK}));
    }
  }
}

TEST_F(SessionScan, A_root_keeps_the_spelling_of_the_caller) {
  machine_.AddSizedFile(u"C:\\Folder\\Sub\\f", 1);
  machine_.SetCurrentFolder(u"C:\\Folder");
  for (const auto& [root, path] : std::map<Text, Text>{
           {u"c:\\FOLDER", u"c:\\FOLDER\\Sub\\f"},
           {u"C:\\Folder\\", u"C:\\Folder\\\\Sub\\f"},
           {u"C:/Folder/Sub", u"C:/Folder/Sub\\f"},
           {u"Sub", u"Sub\\f"},
           {u"\\\\?\\C:\\Folder", u"\\\\?\\C:\\Folder\\Sub\\f"},
       }) {
    SCOPED_TRACE(Utf8(root));
    EXPECT_EQ(session_.Scan(root), QS_OK);
    EXPECT_EQ(Utf8(PathsOf(ReadReport(session_))), Lines{Utf8(path)});
  }
}

TEST_F(SessionScan, A_long_path_is_reported_in_its_extended_form) {
  const Text path = support::NestedTo(260, u"C:\\t");
  machine_.AddSizedFile(path, 1);
  ScanTree();
  EXPECT_EQ(PathsOf(ReadReport(session_)), Paths{u"\\\\?\\" + path});
  EXPECT_EQ(CurrentPathOf(session_), u"\\\\?\\" + path);
}

TEST_F(SessionScan, A_new_start_discards_everything_of_the_old_scan_before_it_finds_anything) {
  AddFiles(3);
  ScanTree();
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"25");
  unsigned sleeps = 0;
  InsideCall(machine_, Call::kSleepMilliseconds, 1, [&] {
    EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_RUNNING, 0, 0, 0, QS_OK}));
    EXPECT_EQ(CurrentPathOf(session_), u"");
    ++sleeps;
  });
  EXPECT_EQ(session_.Scan(u"C:\\missing"), QS_OK);
  EXPECT_EQ(sleeps, 1u);
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 0, 0, 0, QS_OK}));
}

TEST_F(SessionScan, A_status_of_an_earlier_scan_does_not_show_while_the_next_one_runs) {
  AddFiles(3);
  InsideCall(machine_, Call::kFindNext, 1, [&] { qs_session_cancel_scan(session_); });
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_CANCELLED);
  unsigned looks = 0;
  machine_.SetHook([&](const CallRecord&) {
    EXPECT_EQ(ScanOf(session_).state, QS_STATE_RUNNING);
    EXPECT_EQ(ScanOf(session_).status, QS_OK);
    ++looks;
  });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_GT(looks, 5u);
}

TEST_F(SessionScan, Refused_arguments_leave_everything_as_it_was) {
  AddFiles(3);
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ASSERT_EQ(session_.Clean({1}), QS_OK);
  const std::string before = EverythingOf(session_);
  machine_.ClearRecord();
  machine_.SetRecording(true);
  EXPECT_EQ(qs_session_start_scan(session_, nullptr, 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_session_start_scan(session_, u"", 2), QS_INVALID_ARGUMENT);
  for (const std::uint32_t mode : {3u, 4u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(session_.Scan(u"C:\\missing", mode), QS_INVALID_ARGUMENT) << mode;
  }
  EXPECT_EQ(qs_session_start_scan(session_, nullptr, 3), QS_INVALID_ARGUMENT);
  EXPECT_EQ(EverythingOf(session_), before);
  EXPECT_TRUE(machine_.record().empty());
  EXPECT_EQ(session_.Clean({0}), QS_OK) << "no mode of a refused start may stay";
}

TEST_F(SessionScan, The_clean_of_an_earlier_report_still_shows_after_a_new_scan) {
  AddFiles(3);
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  machine_.SetAttributes(u"C:\\t\\f001", platform::kAttributeReadOnly);
  ASSERT_EQ(session_.Clean({0, 1, 2}), QS_FAILED);
  const CleanBlock after_clean = Ended(QS_FAILED, 3, 1);
  ASSERT_EQ(CleanOf(session_), after_clean);
  InsideCall(machine_, Call::kFindNext, 1, [&] { EXPECT_EQ(CleanOf(session_), after_clean); });
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  EXPECT_EQ(CleanOf(session_), after_clean);
  EXPECT_EQ(MarksOf(session_), Ids{}) << "the new rows are those of files that are there";
  EXPECT_EQ(RowCountOf(session_), 2u);
}

}  // namespace
}  // namespace quastel::session_tests
