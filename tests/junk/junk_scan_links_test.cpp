// No rule leaves its folder through a junction or a link, at any depth.

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

class JunkScanLinks : public JunkScanTest {
 protected:
  JunkScanLinks() { machine_.AddFile(u"C:\\precious\\deep\\keep", "x"); }

  // Every kind of reparse point inside `folder`.
  void AddWaysOut(const Text& folder) {
    machine_.AddLink(LinkKind::kJunction, folder + u"\\junction", u"C:\\precious");
    machine_.AddLink(LinkKind::kFolderLink, folder + u"\\folder link", u"C:\\precious");
    machine_.AddLink(LinkKind::kFileLink, folder + u"\\file link", u"C:\\precious\\deep\\keep");
    machine_.AddLink(LinkKind::kJunction, folder + u"\\upwards", u"C:\\");
    machine_.AddLink(LinkKind::kJunction, folder + u"\\around", folder);
    machine_.AddLink(LinkKind::kJunction, folder + u"\\broken", u"C:\\nowhere");
    machine_.AddPlaceholder(folder + u"\\in the cloud", 10);
  }

  void ExpectNothingPrecious(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      EXPECT_NE(row.name, u"keep") << Outline(row);
      for (const TextView way :
           {u"junction", u"link", u"upwards", u"around", u"broken", u"cloud"}) {
        EXPECT_EQ(row.path.find(way), Text::npos) << Outline(row);
      }
    }
  }
};

TEST_F(JunkScanLinks, Are_neither_reported_nor_entered_at_any_depth) {
  Text folder = u"C:\\t";
  for (int depth = 0; depth < 5; ++depth) {
    machine_.AddFile(folder + u"\\own", "x");
    AddWaysOut(folder);
    folder += u"\\sub";
  }
  for (const std::string rule :
       {"<Folder Path='C:\\t'/>", "<Folder Path='C:\\t' Pattern='*n*'/>",
        "<FolderList StartPath='C:\\' EndPath='sub'/>",
        "<FolderList StartPath='C:\\t' EndPath=''/>", "<ChildrenList StartPath='C:\\t'/>"}) {
    SCOPED_TRACE(rule);
    const std::vector<Row> rows = Report(InCategory(rule));
    ExpectNothingPrecious(rows);
    EXPECT_GE(scan_tests::Poll(scan_).item_count, 4u);
    EXPECT_EQ(scan_tests::Poll(scan_).files_visited, scan_tests::Poll(scan_).item_count);
  }
}

TEST_F(JunkScanLinks, Are_no_start_for_any_rule) {
  AddWaysOut(u"C:\\t");
  for (const std::string way :
       {"junction", "folder link", "file link", "upwards", "around", "broken", "in the cloud"}) {
    const std::string path = "C:\\t\\" + way;
    EXPECT_EQ(Scanned(InCategory("<Folder Path='" + path + "'/><Folder Path='" + path +
                                 "' Pattern='*p'/><FolderList StartPath='" + path +
                                 "' EndPath='deep'/><ChildrenList StartPath='" + path + "'/>")),
              Lines{"[1<0] c"})
        << path;
  }
}

TEST_F(JunkScanLinks, Are_no_folder_of_a_list_and_take_no_number) {
  AddWaysOut(u"C:\\d");
  machine_.AddFile(u"C:\\d\\sub\\deep\\own", "x");
  machine_.AddLink(LinkKind::kJunction, u"C:\\d\\other\\deep", u"C:\\precious\\deep");
  machine_.AddLink(LinkKind::kFolderLink, u"C:\\d\\third\\deep", u"C:\\precious\\deep");
  EXPECT_EQ(Scanned(InCategory("<FolderList StartPath='C:\\d' EndPath='deep'/>"
                               "<ChildrenList StartPath='C:\\d'/>")),
            (Lines{"[1<0] c", "[g0<1] deep = C:\\d\\sub\\deep", "g0<1 deep: C:\\d\\sub\\deep\\own",
                   "[g2<1] sub = C:\\d\\sub", "g2<1 sub: C:\\d\\sub\\deep\\own"}))
      << "of the children other, sub and third, the first is g1 and empty";
}

// The system takes "other." in the middle of a path for "other".
TEST_F(JunkScanLinks, Are_not_reached_by_the_name_of_a_neighbour) {
  machine_.AddFile(u"C:\\d\\sub\\deep\\own", "x");
  machine_.AddLink(LinkKind::kJunction, u"C:\\d\\other", u"C:\\precious");
  machine_.AddFile(u"\\\\?\\C:\\d\\other.\\deep\\own", "x");
  machine_.AddFolder(u"\\\\?\\C:\\d\\sub.");
  EXPECT_EQ(Scanned(InCategory("<FolderList StartPath='C:\\d' EndPath='deep'/>"
                               "<ChildrenList StartPath='C:\\d'/>")),
            (Lines{"[1<0] c", "[g0<1] deep = C:\\d\\sub\\deep", "g0<1 deep: C:\\d\\sub\\deep\\own",
                   "[g1<1] sub = C:\\d\\sub", "g1<1 sub: C:\\d\\sub\\deep\\own"}));
}

TEST_F(JunkScanLinks, In_the_middle_of_an_end_path_are_not_passed) {
  machine_.AddFile(u"C:\\d\\sub\\AC\\Temp\\own", "x");
  machine_.AddFile(u"C:\\precious\\Temp\\keep", "x");
  machine_.AddLink(LinkKind::kJunction, u"C:\\d\\other\\AC", u"C:\\precious");
  machine_.AddLink(LinkKind::kFolderLink, u"C:\\d\\third\\AC", u"C:\\precious");
  for (const std::string end : {"AC\\Temp", "AC/Temp", "AC\\\\Temp", "AC\\.\\Temp"}) {
    SCOPED_TRACE(end);
    const std::vector<Row> rows =
        Report(InCategory("<FolderList StartPath='C:\\d' EndPath='" + end + "'/>"));
    ExpectNothingPrecious(rows);
    EXPECT_EQ(scan_tests::Poll(scan_).item_count, 1u);
  }
}

TEST_F(JunkScanLinks, That_come_while_the_scan_runs_are_not_entered_either) {
  machine_.AddFile(u"C:\\d\\sub\\own", "x");
  machine_.AddFile(u"C:\\t\\own", "x");
  // Between the listing of C:\d and the walk of its subfolder, that becomes a
  // junction.
  scan_tests::InsideCall(machine_, Call::kQueryAttributes, 2, [&] {
    machine_.Remove(u"C:\\d\\sub");
    machine_.AddLink(LinkKind::kJunction, u"C:\\d\\sub", u"C:\\precious");
  });
  EXPECT_EQ(Scanned(InCategory("<ChildrenList StartPath='C:\\d'/><Folder Path='C:\\t'/>")),
            (Lines{"[1<0] c", "[g1<1] t = C:\\t", "g1<1 t: C:\\t\\own"}));
  machine_.SetHook(nullptr);
}

}  // namespace
}  // namespace quastel::junk_tests
