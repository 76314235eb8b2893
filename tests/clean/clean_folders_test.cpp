// The folders that a junk clean removes behind the last of their files, and those that it leaves.

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {
namespace {

class CleanFolders : public CleanTest {
 protected:
  CleanFolders() : CleanTest(QS_SCAN_KIND_JUNK_RULES) {}

  // Scans with a rule for each of the folders.
  void ScanFolders(const Paths& folders) {
    machine_.AddFile(kRulesPath, FolderRules(folders));
    ScanTree();
  }
  Lines RemovedFolders() const {
    Lines folders;
    for (const CallRecord& call : machine_.record()) {
      if (call.call == Call::kRemoveFolder) {
        folders.push_back(Utf8(call.path) +
                          (call.result == platform::Error::kNone ? "" : " failed"));
      }
    }
    return folders;
  }
  void ExpectBareDriveNeverPassed() const {
    for (const CallRecord& call : machine_.record()) {
      EXPECT_FALSE(call.path == u"C:" || call.path == u"\\\\?\\C:" || call.path == u"D:")
          << NameOf(call.call) << " " << Utf8(call.path);
    }
  }
};

TEST(CleanOfAnObjectWithoutAFolderTest, Removes_no_folder) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\t\\a\\f", "abc");
  scan_tests::OwnKindScan own;
  Request request;
  request.kind = QS_SCAN_KIND_JUNK_RULES;
  EXPECT_EQ(own.Run(request,
                    [](ProductScan& scan, const OwnedRequest&) {
                      ReportRow row = scan_tests::RowOf(RowKind::kJunk, 1, 3, u"C:\\t\\a\\f");
                      row.modified = scan_tests::kDefaultModified;
                      row.name = u"f";
                      row.deletable = true;
                      scan.AppendRow(row);
                      return QS_OK;
                    }),
            QS_OK);
  const std::uint64_t id = 0;
  EXPECT_EQ(own.scan.StartClean(&id, 1), QS_OK);
  EXPECT_FALSE(machine.Exists(u"C:\\t\\a\\f"));
  EXPECT_TRUE(machine.Exists(u"C:\\t\\a"));
}

TEST_F(CleanFolders, The_deeper_file_goes_first_whichever_was_named_first) {
  for (const bool deeper_first : {true, false}) {
    SCOPED_TRACE(deeper_first);
    const Text deep = AddFinding(u"a\\b\\c.tmp");
    const Text near = AddFinding(u"a\\b.tmp");
    AddFinding(u"stays");
    ScanTree();
    EXPECT_EQ(CleanPaths(deeper_first ? Paths{deep, near} : Paths{near, deep}), QS_OK);
    EXPECT_EQ(RemovalsOf(machine_),
              (Lines{"RemoveFile C:\\t\\a\\b\\c.tmp", "RemoveFolder C:\\t\\a\\b",
                     "RemoveFile C:\\t\\a\\b.tmp", "RemoveFolder C:\\t\\a"}));
    EXPECT_FALSE(machine_.Exists(u"C:\\t\\a"));
    EXPECT_EQ(Block(), Ended(QS_OK, 2, 2, 0, 2 * finding_size())) << "folders are not counted";
  }
}

TEST_F(CleanFolders, Only_the_folder_of_the_file_goes_and_not_the_one_around_it) {
  const Text path = AddFinding(u"1\\2\\3\\f");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{"C:\\t\\1\\2\\3"});
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\1\\2"));
  EXPECT_EQ(machine_.NamesIn(u"C:\\t\\1\\2").size(), 0u);
}

TEST_F(CleanFolders, The_folder_of_a_rule_goes_as_well) {
  const Paths paths = AddFindings(2);
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{"C:\\t"});
  EXPECT_FALSE(machine_.Exists(kTree));
}

TEST_F(CleanFolders, A_folder_with_another_file_stays) {
  const Text path = AddFinding(u"a\\f");
  AddFinding(u"a\\g");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{});
}

TEST_F(CleanFolders, A_folder_with_a_file_far_below_stays) {
  const Text path = AddFinding(u"a\\f");
  AddFinding(u"a\\1\\2\\3\\g");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{});
}

TEST_F(CleanFolders, A_file_that_no_rule_names_keeps_its_folder) {
  const Text path = AddFinding(u"a\\f.tmp");
  machine_.AddFile(u"C:\\t\\a\\precious.doc", "x");
  machine_.AddFile(kRulesPath,
                   "<Root><Category DisplayName=\"c\"><Folder Path=\"C:\\t\" Pattern=\"*.tmp\"/>"
                   "</Category></Root>");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{});
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\a\\precious.doc"));
}

TEST_F(CleanFolders, A_folder_with_empty_folders_is_tried_and_stays_with_them) {
  const Text path = AddFinding(u"a\\f");
  machine_.AddFolder(u"C:\\t\\a\\1\\2");
  machine_.AddFolder(u"C:\\t\\a\\3");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{"C:\\t\\a failed"});
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\a\\1\\2"));
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\a\\3"));
  EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, finding_size())) << "that it stays is no failure";
}

TEST_F(CleanFolders, A_folder_that_cannot_be_removed_is_no_failure) {
  const Paths paths = {AddFinding(u"denied\\f"), AddFinding(u"read only\\f"),
                       AddFinding(u"current\\f")};
  ScanTree();
  machine_.Deny(u"C:\\t\\denied", Denial{.deleting = true});
  machine_.SetAttributes(u"C:\\t\\read only",
                         platform::kAttributeDirectory | platform::kAttributeReadOnly);
  machine_.SetCurrentFolder(u"C:\\t\\current");
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 3, 3, 0, 3 * finding_size()));
  EXPECT_EQ(RemovedFolders(),
            (Lines{"C:\\t\\read only failed", "C:\\t\\current failed", "C:\\t\\denied failed"}));
  machine_.SetCurrentFolder(u"C:\\");
}

TEST_F(CleanFolders, A_folder_named_downloads_stays_but_not_one_in_it) {
  const Paths paths = {AddFinding(u"Downloads\\f"), AddFinding(u"a\\dOwNLoads\\f"),
                       AddFinding(u"Downloads\\in it\\f"), AddFinding(u"My Downloads\\f")};
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(RemovedFolders(), (Lines{"C:\\t\\Downloads\\in it", "C:\\t\\My Downloads"}));
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\Downloads"));
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\a\\dOwNLoads"));
}

// By itself the path of the folder means its neighbour, which is empty.
TEST_F(CleanFolders, A_folder_whose_name_ends_in_a_blank_stays_and_so_does_its_neighbour) {
  const Paths paths = {AddFinding(u"b \\f")};
  machine_.AddFolder(u"C:\\t\\b");
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{});
  EXPECT_FALSE(machine_.Exists(u"C:\\t\\b \\f"));
  EXPECT_TRUE(machine_.Exists(u"\\\\?\\C:\\t\\b "));
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\b"));
}

TEST_F(CleanFolders, The_root_of_a_drive_stays) {
  machine_.AddDrive('E');
  machine_.Remove(kTree);
  machine_.AddFile(u"C:\\only.tmp", "x");
  machine_.AddFile(u"E:\\only.tmp", "x");
  ScanFolders({u"C:\\"});
  ASSERT_EQ(scan_tests::Poll(scan_).item_count, 1u);
  AppendRows(scan_, {FindingOf(RowKind::kJunk, 1, 1, u"E:\\only.tmp")});
  EXPECT_EQ(CleanIds({0, 1}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 2, 2, 0, 2));
  EXPECT_TRUE(machine_.NamesIn(u"C:\\").empty());
  EXPECT_TRUE(machine_.NamesIn(u"E:\\").empty());
  ExpectBareDriveNeverPassed();
  for (const std::string& folder : RemovedFolders()) {
    EXPECT_TRUE(folder.ends_with(" failed")) << folder;
  }
  EXPECT_TRUE(machine_.Exists(u"C:\\"));
  EXPECT_TRUE(machine_.Exists(u"E:\\"));
}

TEST_F(CleanFolders, The_current_folder_of_a_drive_is_not_taken_for_its_root) {
  // "C:" alone is the folder where the process works, wherever that is.
  machine_.Remove(kTree);
  machine_.AddFolder(u"C:\\work");
  machine_.AddFile(u"C:\\one.tmp", "x");
  machine_.AddFile(u"C:\\two.tmp", "x");
  ScanFolders({u"C:\\"});
  AppendRows(scan_, {FindingOf(RowKind::kJunk, 1, 1, u"C:\\two.tmp")});
  machine_.SetCurrentFolder(u"C:\\work");
  EXPECT_EQ(CleanIds({0, 2}), QS_OK);
  EXPECT_EQ(machine_.NamesIn(u"C:\\"), Paths{u"work"});
  ExpectBareDriveNeverPassed();
  EXPECT_TRUE(machine_.Exists(u"C:\\work"));
  machine_.SetCurrentFolder(u"C:\\");
}

TEST_F(CleanFolders, The_root_of_a_drive_stays_for_a_file_with_a_long_name) {
  machine_.Remove(kTree);
  const Text path = support::PaddedTo(252, u"C:\\n");
  machine_.AddFile(path, "x");
  ScanFolders({u"C:\\"});
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, 1));
  EXPECT_FALSE(machine_.Exists(path));
  ExpectBareDriveNeverPassed();
}

TEST_F(CleanFolders, The_root_of_a_share_stays) {
  machine_.AddShare(u"\\\\server\\share");
  machine_.AddFile(u"\\\\server\\share\\only.tmp", "x");
  machine_.AddFile(u"\\\\server\\share\\a\\f.tmp", "x");
  ScanFolders({u"\\\\server\\share"});
  EXPECT_EQ(CleanIds(IdsOfAll()), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 2, 2, 0, 2));
  EXPECT_TRUE(machine_.Exists(u"\\\\server\\share"));
  EXPECT_FALSE(machine_.Exists(u"\\\\server\\share\\a"));
}

TEST_F(CleanFolders, Of_long_paths_go_like_others) {
  const Text folder = support::NestedTo(300, u"C:\\t\\l");
  AddFinding(folder.substr(kTree.size() + 1) + u"\\f");
  ScanTree();
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_FALSE(machine_.Exists(folder));
  EXPECT_TRUE(machine_.Exists(folder.substr(0, folder.rfind(u'\\'))));
}

TEST_F(CleanFolders, Short_folders_of_long_paths_go_as_well) {
  // The file has the long form, its folder would not need it.
  const Text folder = support::NestedTo(246, u"C:\\t\\l");
  AddFinding(folder.substr(kTree.size() + 1) + u"\\file");
  ScanTree();
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_FALSE(machine_.Exists(folder));
}

TEST_F(CleanFolders, Are_not_looked_at_when_their_file_could_not_be_deleted) {
  const Paths paths = {AddFinding(u"a\\f"), AddFinding(u"b\\f")};
  ScanTree();
  const Ids ids = IdsOf(paths);
  machine_.Remove(paths[0]);  // an empty folder is left
  machine_.Lock(paths[1]);
  EXPECT_EQ(CleanIds(ids), QS_FAILED);
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\a"));
  EXPECT_EQ(RemovedFolders(), Lines{});
  for (const CallRecord& call : machine_.record()) {
    EXPECT_NE(call.call, Call::kFindFirstBasic);
  }
}

TEST_F(CleanFolders, Are_looked_at_once_for_each_deleted_file) {
  const Paths paths = {AddFinding(u"a\\1"), AddFinding(u"a\\2"), AddFinding(u"a\\3"),
                       AddFinding(u"b\\1")};
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(support::SearchesOf(machine_),
            (Lines{"C:\\t\\a\\*", "C:\\t\\a\\*", "C:\\t\\a\\*", "C:\\t\\b\\*"}));
  EXPECT_EQ(RemovedFolders(), (Lines{"C:\\t\\a", "C:\\t\\b"}));
}

TEST_F(CleanFolders, Links_in_a_folder_keep_it_and_are_kept) {
  const Paths paths = {AddFinding(u"junction\\f"), AddFinding(u"folder link\\f"),
                       AddFinding(u"file link\\f")};
  machine_.AddFile(u"C:\\precious\\p", "x");
  machine_.AddLink(LinkKind::kJunction, u"C:\\t\\junction\\l", u"C:\\precious");
  machine_.AddLink(LinkKind::kFolderLink, u"C:\\t\\folder link\\l", u"C:\\precious");
  machine_.AddLink(LinkKind::kFileLink, u"C:\\t\\file link\\l", u"C:\\precious\\p");
  ScanTree();
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  // Links to folders are no content, so the system is asked and refuses; one to a file is a file.
  EXPECT_EQ(RemovedFolders(), (Lines{"C:\\t\\folder link failed", "C:\\t\\junction failed"}));
  for (const TextView link : {u"C:\\t\\junction\\l", u"C:\\t\\folder link\\l",
                              u"C:\\t\\file link\\l", u"C:\\precious\\p"}) {
    EXPECT_TRUE(machine_.Exists(link)) << Utf8(link);
  }
}

TEST_F(CleanFolders, A_folder_that_became_a_junction_stays_with_its_target) {
  const Text path = AddFinding(u"a\\f");
  machine_.AddFolder(u"C:\\precious");
  ScanTree();
  machine_.SetHook([&](const CallRecord& call) {
    // The first call behind the deletion of the file.
    if (!machine_.Exists(u"C:\\t\\a\\f") && call.call == Call::kQueryAttributes &&
        machine_.Find(u"C:\\t\\a")->attributes == platform::kAttributeDirectory) {
      machine_.Remove(u"C:\\t\\a");
      machine_.AddLink(LinkKind::kJunction, u"C:\\t\\a", u"C:\\precious");
    }
  });
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\a"));
  EXPECT_TRUE(machine_.Exists(u"C:\\precious"));
  EXPECT_EQ(RemovedFolders(), Lines{});
}

TEST_F(CleanFolders, A_folder_that_cannot_be_listed_is_left_to_the_system) {
  const Paths paths = {AddFinding(u"a\\f"), AddFinding(u"b\\f")};
  AddFinding(u"b\\g");
  ScanTree();
  machine_.Deny(u"C:\\t\\a", Denial{.listing = true});
  machine_.Deny(u"C:\\t\\b", Denial{.listing = true});
  EXPECT_EQ(CleanPaths(paths), QS_OK);
  EXPECT_EQ(RemovedFolders(), (Lines{"C:\\t\\a", "C:\\t\\b failed"}));
  EXPECT_TRUE(machine_.Exists(u"C:\\t\\b\\g"));
}

TEST_F(CleanFolders, Both_separators_end_the_folder_of_a_file) {
  AddFinding(u"sub\\f");
  ScanFolders({u"C:/t/sub"});
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{"C:/t/sub"});
  EXPECT_FALSE(machine_.Exists(u"C:\\t\\sub"));

  machine_.AddFile(u"C:\\t\\slash\\f", "x");
  AppendRows(scan_, {FindingOf(RowKind::kJunk, 1, 1, u"C:/t/slash/f")});
  machine_.ClearRecord();
  EXPECT_EQ(CleanIds({1}), QS_OK);
  EXPECT_EQ(RemovedFolders(), Lines{"C:/t/slash"});
}

TEST_F(CleanFolders, A_path_without_a_separator_has_no_folder_that_could_go) {
  machine_.AddFile(u"C:\\work\\f", "x");
  machine_.SetCurrentFolder(u"C:\\work");
  ScanTree();
  AppendRows(scan_, {FindingOf(RowKind::kJunk, 1, 1, u"f")});
  EXPECT_EQ(CleanIds({0}), QS_OK);
  EXPECT_FALSE(machine_.Exists(u"C:\\work\\f"));
  EXPECT_TRUE(machine_.Exists(u"C:\\work"));
  EXPECT_EQ(RemovalsOf(machine_), Lines{"RemoveFile f"});
  EXPECT_EQ(support::SearchesOf(machine_), Lines{});
  machine_.SetCurrentFolder(u"C:\\");
}

TEST_F(CleanFolders, A_file_that_two_rules_found_is_deleted_once_and_failed_once) {
  const Text path = AddFinding(u"a\\f");
  ScanFolders({u"C:\\t", u"C:\\t\\a"});
  ASSERT_EQ(scan_tests::Poll(scan_).item_count, 2u);
  EXPECT_EQ(CleanIds({1, 0}), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, 2, 1, 1, finding_size()));
  EXPECT_EQ(MarksOf(scan_), Ids{1}) << "equal lengths keep the caller's order";
  EXPECT_FALSE(machine_.Exists(u"C:\\t\\a"));
}

TEST_F(CleanFolders, New_files_in_a_folder_keep_it_whenever_they_come) {
  // Between any two calls behind the deletion of the file.
  for (std::uint64_t at = 1;; ++at) {
    SCOPED_TRACE(at);
    const Text path = AddFinding(u"a\\f");
    ScanTree();
    bool added = false;
    std::uint64_t calls = 0;
    machine_.SetHook([&](const CallRecord&) {
      if (!machine_.Exists(u"C:\\t\\a\\f") && ++calls == at && machine_.Exists(u"C:\\t\\a")) {
        machine_.AddFile(u"C:\\t\\a\\new", "just written");
        added = true;
      }
    });
    EXPECT_EQ(CleanPaths({path}), QS_OK);
    machine_.SetHook(nullptr);
    if (!added) {
      EXPECT_FALSE(machine_.Exists(u"C:\\t\\a"));
      EXPECT_GE(at, 8u) << "attributes, a listing, the folders above, attributes, removal";
      break;
    }
    EXPECT_EQ(machine_.ContentOf(u"C:\\t\\a\\new"), "just written");
    EXPECT_EQ(Block(), Ended(QS_OK, 1, 1, 0, finding_size()));
    machine_.Remove(u"C:\\t\\a");
  }
}

class CleanFoldersOfOtherKinds : public CleanOfEachKindTest {};

TEST_P(CleanFoldersOfOtherKinds, Are_left_even_when_they_are_empty) {
  const Text path = AddFinding(u"a\\f");
  ScanTree();
  EXPECT_EQ(CleanPaths({path}), QS_OK);
  const bool junk = kind_ == QS_SCAN_KIND_JUNK_RULES;
  EXPECT_EQ(machine_.Exists(u"C:\\t\\a"), !junk);
  EXPECT_EQ(support::SearchesOf(machine_).empty(), !junk);
}

INSTANTIATE_TEST_SUITE_P(Of, CleanFoldersOfOtherKinds, ::testing::ValuesIn(kKinds),
                         support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
