// What the rows of a junk scan say, field by field, and how their groups are
// numbered.

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

using JunkScanRows = JunkScanTest;

TEST_F(JunkScanRows, Fills_every_field_of_every_kind_of_row) {
  machine_.AddFile(u"C:\\Users\\u\\Temp\\a.tmp", "12345");
  machine_.AddFile(u"C:\\Users\\u\\Temp\\sub\\b.log", "1");
  machine_.AddFile(u"C:\\Data\\one\\Cache\\c", "123");
  machine_.AddFile(u"C:\\Logs\\app\\d.log", "1234");
  machine_.AddFile(u"C:\\Logs\\loose.log", "12");
  machine_.AddFile(u"C:\\More\\loose.log", "");
  EXPECT_EQ(
      Report(InRoot(Category("first",
                             "<Folder Path='{UserHome}\\Temp' DisplayName='Temporary'/>"
                             "<Category DisplayName='inner'>"
                             "<FolderList StartPath='{Root}Data' EndPath='Cache'/>"
                             "<ChildrenList StartPath='{Root}More'/>"
                             "</Category>") +
                    Category("second", "<ChildrenList StartPath='C:\\Logs'/>"))),
      (std::vector<Row>{
          CategoryRow(1, 0, u"first"),
          FolderRow(kFirstGroup, 1, u"Temporary", u"C:\\Users\\u\\Temp"),
          FileRow(0, kFirstGroup, 1, u"Temporary", u"C:\\Users\\u\\Temp\\a.tmp", 5),
          FileRow(1, kFirstGroup, 1, u"Temporary", u"C:\\Users\\u\\Temp\\sub\\b.log", 1),
          CategoryRow(kFirstGroup + 1, 1, u"inner"),
          FolderRow(kFirstGroup + 2, kFirstGroup + 1, u"Cache", u"C:\\Data\\one\\Cache"),
          FileRow(2, kFirstGroup + 2, kFirstGroup + 1, u"Cache", u"C:\\Data\\one\\Cache\\c", 3),
          FileRow(3, kFirstGroup + 1, kFirstGroup + 1, u"inner", u"C:\\More\\loose.log", 0),
          CategoryRow(2, 0, u"second"),
          FolderRow(kFirstGroup + 3, 2, u"app", u"C:\\Logs\\app"),
          FileRow(4, kFirstGroup + 3, 2, u"app", u"C:\\Logs\\app\\d.log", 4),
          FileRow(5, 2, 0, u"second", u"C:\\Logs\\loose.log", 2),
      }));
}

TEST_F(JunkScanRows, Counts_ids_over_files_alone) {
  machine_.AddFile(u"C:\\t\\a", "x");
  machine_.AddFile(u"C:\\t\\b", "x");
  const std::vector<Row> rows = Report(InRoot(Category("c", "<ChildrenList StartPath='C:\\t'/>")));
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].numbers.item_id, UINT64_MAX);
  EXPECT_EQ(rows[1].numbers.item_id, 0u);
  EXPECT_EQ(rows[2].numbers.item_id, 1u);
}

TEST_F(JunkScanRows, Reports_size_and_local_last_write_time_of_the_file) {
  machine_.SetTimeZoneOffset(-90);
  machine_.AddSizedFile(u"C:\\t\\huge", std::uint64_t{5} << 40, 0,
                        {platform::kAttributeArchive, 132'000'000'000'000'007});
  const std::vector<Row> rows = Report(InCategory("<Folder Path='C:\\t'/>"));
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[2].numbers.size, std::int64_t{5} << 40);
  EXPECT_EQ(rows[2].numbers.modified,
            132'000'000'000'000'007 - std::uint64_t{90} * 60 * 10'000'000 + kTicksAt1601);
}

TEST_F(JunkScanRows, Numbers_top_level_categories_in_document_order) {
  EXPECT_EQ(Scanned(InRoot(Category("a", "") + "<Other/>" + Category("b", "") +
                           "<Folder Path='C:\\t'/>" + Category("a", ""))),
            (Lines{"[1<0] a", "[2<0] b", "[3<0] a"}));
}

TEST_F(JunkScanRows, Appends_a_category_at_once_and_a_folder_group_with_its_first_file) {
  machine_.AddFolder(u"C:\\empty\\deep");
  EXPECT_EQ(
      Scanned(InRoot(Category("a", "<Folder Path='C:\\empty'/>" +
                                       Category("b", "<ChildrenList StartPath='C:\\empty'/>") +
                                       Category("c", "")))),
      (Lines{"[1<0] a", "[g1<1] b", "[g3<1] c"}));
}

TEST_F(JunkScanRows, Shows_a_header_once_and_before_its_files) {
  for (const TextView name : {u"C:\\t\\a", u"C:\\t\\m\\b", u"C:\\t\\n\\c"}) {
    machine_.AddFile(name, "x");
  }
  EXPECT_EQ(Scanned(InCategory("<Folder Path='C:\\t'/>")),
            (Lines{"[1<0] c", "[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a", "g0<1 t: C:\\t\\n\\c",
                   "g0<1 t: C:\\t\\m\\b"}));
}

TEST_F(JunkScanRows, A_folder_without_files_shows_no_header_but_takes_a_number) {
  machine_.AddFolder(u"C:\\empty");
  machine_.AddFile(u"C:\\t\\a", "x");
  EXPECT_EQ(Scanned(InCategory("<Folder Path='C:\\empty'/><Folder Path='C:\\missing'/>"
                               "<Folder Path='C:\\t' Pattern='*.log'/><Folder Path='C:\\t'/>")),
            (Lines{"[1<0] c", "[g3<1] t = C:\\t", "g3<1 t: C:\\t\\a"}));
}

TEST_F(JunkScanRows, A_folder_of_a_list_takes_a_number_only_when_it_exists) {
  machine_.AddFolder(u"C:\\d\\1\\Cache");
  machine_.AddFolder(u"C:\\d\\2");
  machine_.AddFile(u"C:\\d\\3\\Cache", "a file");
  machine_.AddFile(u"C:\\d\\4\\Cache\\a", "x");
  EXPECT_EQ(Scanned(InCategory("<FolderList StartPath='C:\\d' EndPath='Cache'/>"
                               "<FolderList StartPath='C:\\missing' EndPath='Cache'/>"
                               "<Folder Path='C:\\d\\2'/><Folder Path='C:\\d\\4'/>")),
            (Lines{"[1<0] c", "[g1<1] Cache = C:\\d\\4\\Cache", "g1<1 Cache: C:\\d\\4\\Cache\\a",
                   "[g3<1] 4 = C:\\d\\4", "g3<1 4: C:\\d\\4\\Cache\\a"}));
}

TEST_F(JunkScanRows, Every_child_of_a_children_list_takes_a_number) {
  machine_.AddFolder(u"C:\\d\\1");
  machine_.AddFile(u"C:\\d\\2\\a", "x");
  machine_.AddFile(u"C:\\d\\not a folder", "x");
  machine_.AddFolder(u"C:\\d\\3");
  machine_.AddFile(u"C:\\d\\4\\a", "x");
  EXPECT_EQ(Scanned(InCategory("<ChildrenList StartPath='C:\\d'/>")),
            (Lines{"[1<0] c", "[g1<1] 2 = C:\\d\\2", "g1<1 2: C:\\d\\2\\a", "[g3<1] 4 = C:\\d\\4",
                   "g3<1 4: C:\\d\\4\\a", "1<0 c: C:\\d\\not a folder"}));
}

TEST_F(JunkScanRows, Numbers_run_on_over_categories_depth_first) {
  machine_.AddFile(u"C:\\t\\a", "x");
  const std::string folder = "<Folder Path='C:\\t'/>";
  EXPECT_EQ(Scanned(InRoot(Category("A", Category("B", Category("C", folder) + folder) + folder) +
                           Category("D", folder + Category("E", "")))),
            (Lines{"[1<0] A", "[g0<1] B", "[g1<g0] C", "[g2<g1] t = C:\\t", "g2<g1 t: C:\\t\\a",
                   "[g3<g0] t = C:\\t", "g3<g0 t: C:\\t\\a", "[g4<1] t = C:\\t", "g4<1 t: C:\\t\\a",
                   "[2<0] D", "[g5<2] t = C:\\t", "g5<2 t: C:\\t\\a", "[g6<2] E"}));
}

TEST_F(JunkScanRows, Numbers_begin_again_with_every_scan) {
  machine_.AddFile(u"C:\\t\\a", "x");
  const std::string document = InCategory("<Folder Path='C:\\t'/>");
  const std::vector<Row> first = Report(document);
  EXPECT_EQ(first.size(), 3u);
  EXPECT_EQ(Report(document), first);
}

TEST_F(JunkScanRows, Loose_files_of_a_nested_category_carry_its_id_as_their_parents_too) {
  machine_.AddFile(u"C:\\d\\loose", "x");
  machine_.AddFile(u"C:\\d\\sub\\a", "x");
  EXPECT_EQ(Scanned(InRoot(
                Category("A", Category("B", Category("C", "<ChildrenList StartPath='C:\\d'/>"))))),
            (Lines{"[1<0] A", "[g0<1] B", "[g1<g0] C", "[g2<g1] sub = C:\\d\\sub",
                   "g2<g1 sub: C:\\d\\sub\\a", "g1<g1 C: C:\\d\\loose"}));
}

TEST_F(JunkScanRows, A_file_that_two_rules_reach_is_reported_twice) {
  machine_.AddFile(u"C:\\t\\sub\\a", "xyz");
  EXPECT_EQ(
      Scanned(InRoot(Category("A", "<Folder Path='C:\\t'/><Folder Path='C:\\t\\sub'/>") +
                     Category("B", "<Folder Path='c:/T'/>"))),
      (Lines{"[1<0] A", "[g0<1] t = C:\\t", "g0<1 t: C:\\t\\sub\\a", "[g1<1] sub = C:\\t\\sub",
             "g1<1 sub: C:\\t\\sub\\a", "[2<0] B", "[g2<2] T = c:/T", "g2<2 T: c:/T\\sub\\a"}));
  EXPECT_EQ(scan_tests::Poll(scan_).item_count, 3u);
  EXPECT_EQ(scan_tests::Poll(scan_).total_bytes, 9u);
}

// ---- Which files are offered pre-selected.

TEST_F(JunkScanRows, Files_of_the_downloads_category_are_not_selected) {
  machine_.AddFile(u"C:\\t\\a", "x");
  machine_.AddFile(u"C:\\d\\sub\\b", "x");
  machine_.AddFile(u"C:\\d\\loose", "x");
  const std::string rules =
      "<Folder Path='C:\\t'/>" + Category("nested", "<ChildrenList StartPath='C:\\d'/>" +
                                                        Category("deeper",
                                                                 "<FolderList "
                                                                 "StartPath='C:\\d' EndPath=''/>"));
  EXPECT_EQ(
      Scanned(InRoot(Category(kDownloads, rules) + Category("other", "<Folder Path='C:\\t'/>"))),
      (Lines{std::string("[1<0] ") + kDownloads, "[g0<1] t = C:\\t",
             "g0<1 t: C:\\t\\a (not selected)", "[g1<1] nested", "[g2<g1] sub = C:\\d\\sub",
             "g2<g1 sub: C:\\d\\sub\\b (not selected)", "g1<g1 nested: C:\\d\\loose (not selected)",
             "[g3<g1] deeper", "[g4<g3]  = C:\\d\\sub\\", "g4<g3 : C:\\d\\sub\\\\b (not selected)",
             "[2<0] other", "[g5<2] t = C:\\t", "g5<2 t: C:\\t\\a"}));
}

TEST_F(JunkScanRows, Only_the_exact_name_at_the_top_level_is_the_downloads_category) {
  machine_.AddFile(u"C:\\t\\a", "x");
  const std::string folder = "<Folder Path='C:\\t'/>";
  const std::string name = kDownloads;
  std::string upper = name;
  upper[0] = 'p';
  for (const std::string& document :
       {Category(name + " ", folder), Category(upper, folder), Category("Downloads", folder),
        Category(name + "s", folder), Category(name.substr(1), folder),
        Category("other", Category(name, folder)),
        Category("other", "<Folder Path='C:\\t' DisplayName='" + name + "'/>")}) {
    const std::vector<Row> rows = Report(InRoot(document));
    ASSERT_GE(rows.size(), 3u) << document;
    EXPECT_EQ(rows.back().numbers.preselect, 1u) << document;
    EXPECT_EQ(rows.back().numbers.deletable, 1u) << document;
  }
  const std::vector<Row> rows =
      Report(InRoot(Category(name, folder) + Category("b", folder) + Category(name, folder)));
  ASSERT_EQ(rows.size(), 9u);
  EXPECT_EQ(rows[2].numbers.preselect, 0u);
  EXPECT_EQ(rows[2].numbers.deletable, 1u);
  EXPECT_EQ(rows[5].numbers.preselect, 1u);
  EXPECT_EQ(rows[8].numbers.preselect, 0u) << "the name may come twice";
}

}  // namespace
}  // namespace quastel::junk_tests
