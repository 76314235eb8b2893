// What each element of the vocabulary walks, and under which name.

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

class JunkScanRules : public JunkScanTest {
 protected:
  // The rows below the one category.
  Lines Found(const std::string& rule) {
    Lines lines = Scanned(InCategory(rule));
    EXPECT_FALSE(lines.empty());
    if (!lines.empty()) {
      EXPECT_EQ(lines[0], "[1<0] c");
      lines.erase(lines.begin());
    }
    return lines;
  }

  void AddFiles(std::initializer_list<TextView> paths) {
    for (const TextView path : paths) {
      machine_.AddFile(path, "x");
    }
  }
};

// ---- Folder

TEST_F(JunkScanRules, A_folder_is_walked_with_all_its_subfolders) {
  AddFiles({u"C:\\t\\a", u"C:\\t\\1\\b", u"C:\\t\\1\\2\\3\\c", u"C:\\u\\d"});
  EXPECT_EQ(Found("<Folder Path='C:\\t'/>"),
            (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a", "g0<1 t: C:\\t\\1\\b",
                   "g0<1 t: C:\\t\\1\\2\\3\\c"}));
}

TEST_F(JunkScanRules, A_folder_is_named_by_the_last_part_of_its_expanded_path) {
  AddFiles({u"C:\\Users\\u\\a", u"C:\\t\\b"});
  EXPECT_EQ(Found("<Folder Path='{UserHome}'/>"),
            (Lines{"[g0<1] u = C:\\Users\\u", "g0<1 u: C:\\Users\\u\\a"}));
  EXPECT_EQ(Found("<Folder Path='{Root}/t'/>"), (Lines{"[g0<1] t = C:\\/t", "g0<1 t: C:\\/t\\b"}));
  EXPECT_EQ(Found("<Folder Path='{Root}t\\'/>"), (Lines{"[g0<1]  = C:\\t\\", "g0<1 : C:\\t\\\\b"}))
      << "the last part of a path that ends in a separator is empty";
  machine_.SetCurrentFolder(u"C:\\");
  EXPECT_EQ(Found("<Folder Path='t'/>"), (Lines{"[g0<1] t = t", "g0<1 t: t\\b"}));
}

TEST_F(JunkScanRules, A_folder_may_have_a_name_of_its_own_even_an_empty_one) {
  AddFiles({u"C:\\t\\a"});
  EXPECT_EQ(Found("<Folder DisplayName='Name' Path='C:\\t'/>"),
            (Lines{"[g0<1] Name = C:\\t", "g0<1 Name: C:\\t\\a"}));
  EXPECT_EQ(Found("<Folder DisplayName='' Path='C:\\t'/>"),
            (Lines{"[g0<1]  = C:\\t", "g0<1 : C:\\t\\a"}));
  EXPECT_EQ(Found("<Folder DisplayName='{Root}' Path='C:\\t'/>"),
            (Lines{"[g0<1] {Root} = C:\\t", "g0<1 {Root}: C:\\t\\a"}))
      << "names are not expanded";
  EXPECT_EQ(Found("<Folder displayname='Name' Path='C:\\t'/>"),
            (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"}));
  EXPECT_EQ(Found("<Folder DisplayName='1' Path='C:\\t' DisplayName='2'/>"),
            (Lines{"[g0<1] 1 = C:\\t", "g0<1 1: C:\\t\\a"}));
}

TEST_F(JunkScanRules, A_pattern_chooses_files_in_every_subfolder) {
  AddFiles({u"C:\\t\\a.log", u"C:\\t\\b.txt", u"C:\\t\\m\\c.LOG", u"C:\\t\\n.log\\d.txt",
            u"C:\\t\\n.log\\e.log"});
  EXPECT_EQ(Found("<Folder Path='C:\\t' Pattern='*.log'/>"),
            (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a.log", "g0<1 t: C:\\t\\n.log\\e.log",
                   "g0<1 t: C:\\t\\m\\c.LOG"}));
  EXPECT_EQ(Found("<Folder Path='C:\\t' Pattern='b.txt'/>"),
            (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\b.txt"}));
  EXPECT_EQ(Found("<Folder Path='C:\\t' Pattern='nothing'/>"), Lines{});
  EXPECT_EQ(Found("<Folder Path='C:\\t' Pattern='{Root}'/>"), Lines{}) << "it is not expanded";
}

TEST_F(JunkScanRules, A_missing_or_empty_pattern_chooses_every_file) {
  AddFiles({u"C:\\t\\a", u"C:\\t\\b.txt"});
  const Lines all = {"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a", "g0<1 t: C:\\t\\b.txt"};
  EXPECT_EQ(Found("<Folder Path='C:\\t'/>"), all);
  EXPECT_EQ(Found("<Folder Path='C:\\t' Pattern=''/>"), all);
  EXPECT_EQ(Found("<Folder Path='C:\\t' Pattern='*'/>"), all);
  EXPECT_EQ(Found("<Folder Path='C:\\t' pattern='b*'/>"), all);
}

TEST_F(JunkScanRules, The_first_of_several_paths_counts) {
  AddFiles({u"C:\\t\\a", u"C:\\u\\b"});
  EXPECT_EQ(Found("<Folder Path='C:\\t' Path='C:\\u'/>"),
            (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"}));
}

TEST_F(JunkScanRules, A_path_ends_at_its_first_nul) {
  AddFiles({u"C:\\t\\a"});
  std::string rule = "<Folder Path='C:\\t?x'/>";
  rule[rule.find('?')] = '\0';
  EXPECT_EQ(Found(rule), (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"}));
}

TEST_F(JunkScanRules, What_is_no_walkable_folder_yields_nothing_and_the_walk_goes_on) {
  AddFiles(
      {u"C:\\file", u"C:\\target\\a", u"C:\\unlistable\\a", u"C:\\unqueryable\\a", u"C:\\t\\a"});
  machine_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\target");
  machine_.AddLink(LinkKind::kFolderLink, u"C:\\link", u"C:\\target");
  machine_.Deny(u"C:\\unlistable", {.listing = true});
  machine_.Deny(u"C:\\unqueryable", {.querying = true});
  for (const std::string path : {"C:\\missing", "C:\\file", "C:\\junction", "C:\\link", "Z:\\",
                                 "C:\\unlistable", "C:\\unqueryable", "C:\\t\\*", "|", " "}) {
    EXPECT_EQ(
        Found("<Folder Path='" + path + "'/><FolderList StartPath='" + path +
              "' EndPath='a'/><ChildrenList StartPath='" + path + "'/><Folder Path='C:\\t'/>"),
        (Lines{"[g1<1] t = C:\\t", "g1<1 t: C:\\t\\a"}))
        << path;
  }
}

TEST_F(JunkScanRules, A_long_folder_is_named_as_the_rule_spells_it_and_its_files_in_the_long_form) {
  const Text folder = support::NestedTo(260, u"C:");
  machine_.AddFile(folder + u"\\a", "x");
  const std::string path = Utf8(folder);
  const std::string leaf = path.substr(path.rfind('\\') + 1);
  EXPECT_EQ(Found("<Folder Path='" + path + "'/>"),
            (Lines{"[g0<1] " + leaf + " = " + path, "g0<1 " + leaf + ": \\\\?\\" + path + "\\a"}));
}

TEST_F(JunkScanRules, No_file_is_spared_for_its_size_its_date_its_name_or_its_place) {
  machine_.AddSizedFile(u"C:\\Windows\\Temp\\pagefile.sys", 1);
  machine_.AddFile(u"C:\\Windows\\Temp\\empty", "");
  machine_.AddFile(
      u"C:\\Windows\\Temp\\hidden", "x",
      {platform::kAttributeHidden | platform::kAttributeSystem | platform::kAttributeReadOnly, 0});
  machine_.AddFile(u"C:\\Users\\u\\AppData\\a", "x");
  Request request = JunkRequest();
  request.protect_system = 1;
  EXPECT_EQ(Scan(InCategory("<Folder Path='{Root}Windows\\Temp'/>"
                            "<Folder Path='{UserHome}\\AppData'/>"),
                 request),
            QS_OK);
  EXPECT_EQ(
      Outline(scan_tests::ReadReport(scan_)),
      (Lines{"[1<0] c", "[g0<1] Temp = C:\\Windows\\Temp", "g0<1 Temp: C:\\Windows\\Temp\\empty",
             "g0<1 Temp: C:\\Windows\\Temp\\hidden", "g0<1 Temp: C:\\Windows\\Temp\\pagefile.sys",
             "[g1<1] AppData = C:\\Users\\u\\AppData", "g1<1 AppData: C:\\Users\\u\\AppData\\a"}));
}

TEST_F(JunkScanRules, The_roots_of_a_request_play_no_part) {
  AddFiles({u"C:\\t\\a", u"C:\\u\\b"});
  Request request = JunkRequest();
  request.roots = {u"C:\\u"};
  EXPECT_EQ(Scan(InCategory("<Folder Path='C:\\t'/>"), request), QS_OK);
  EXPECT_EQ(Outline(scan_tests::ReadReport(scan_)),
            (Lines{"[1<0] c", "[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"}));
}

// ---- FolderList

TEST_F(JunkScanRules, A_folder_list_walks_the_end_path_below_each_subfolder) {
  AddFiles({u"C:\\d\\1\\Cache\\x\\a", u"C:\\d\\1\\other\\b", u"C:\\d\\2\\deep\\Cache\\c",
            u"C:\\d\\3\\Cache\\d", u"C:\\d\\Cache\\e", u"C:\\d\\file"});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='Cache'/>"),
            (Lines{"[g0<1] Cache = C:\\d\\1\\Cache", "g0<1 Cache: C:\\d\\1\\Cache\\x\\a",
                   "[g1<1] Cache = C:\\d\\3\\Cache", "g1<1 Cache: C:\\d\\3\\Cache\\d"}));
}

TEST_F(JunkScanRules, A_folder_list_is_named_by_its_end_path_as_written) {
  AddFiles({u"C:\\d\\1\\a\\b\\x"});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='a/b'/>"),
            (Lines{"[g0<1] a/b = C:\\d\\1\\a/b", "g0<1 a/b: C:\\d\\1\\a/b\\x"}));
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='a\\b\\'/>"),
            (Lines{"[g0<1] a\\b\\ = C:\\d\\1\\a\\b\\", "g0<1 a\\b\\: C:\\d\\1\\a\\b\\\\x"}));
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='a' DisplayName='Name'/>"),
            (Lines{"[g0<1] Name = C:\\d\\1\\a", "g0<1 Name: C:\\d\\1\\a\\b\\x"}));
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='a' DisplayName=''/>"),
            (Lines{"[g0<1]  = C:\\d\\1\\a", "g0<1 : C:\\d\\1\\a\\b\\x"}));
}

TEST_F(JunkScanRules, An_empty_end_path_is_the_subfolder_itself) {
  AddFiles({u"C:\\d\\1\\x"});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath=''/>"),
            (Lines{"[g0<1]  = C:\\d\\1\\", "g0<1 : C:\\d\\1\\\\x"}));
}

TEST_F(JunkScanRules, An_absolute_end_path_replaces_each_subfolder) {
  AddFiles({u"C:\\d\\1\\x", u"C:\\d\\2\\x", u"C:\\t\\a"});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='C:\\t'/>"),
            (Lines{"[g0<1] C:\\t = C:\\t", "g0<1 C:\\t: C:\\t\\a", "[g1<1] C:\\t = C:\\t",
                   "g1<1 C:\\t: C:\\t\\a"}));
}

TEST_F(JunkScanRules, An_end_path_is_not_expanded) {
  AddFiles({u"C:\\d\\1\\{Root}\\x", u"C:\\d\\1\\{UserHome}\\y"});
  EXPECT_EQ(Found("<FolderList StartPath='{Root}d' EndPath='{Root}'/>"),
            (Lines{"[g0<1] {Root} = C:\\d\\1\\{Root}", "g0<1 {Root}: C:\\d\\1\\{Root}\\x"}));
}

TEST_F(JunkScanRules, A_folder_list_takes_the_subfolders_whose_path_contains_a_text) {
  AddFiles({u"C:\\Data\\Profile 1\\c\\a", u"C:\\Data\\profile 2\\c\\a",
            u"C:\\Data\\X.Profile\\c\\a", u"C:\\Data\\other\\c\\Profile"});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\Data' EndPath='c' "
                  "ContainsPath='Profile'/>"),
            (Lines{"[g0<1] c = C:\\Data\\Profile 1\\c", "g0<1 c: C:\\Data\\Profile 1\\c\\a",
                   "[g1<1] c = C:\\Data\\X.Profile\\c", "g1<1 c: C:\\Data\\X.Profile\\c\\a"}))
      << "upper and lower case differ, and the end path does not count";
  EXPECT_EQ(Found("<FolderList StartPath='C:\\Data' EndPath='c' "
                  "ContainsPath='Data\\o'/>"),
            (Lines{"[g0<1] c = C:\\Data\\other\\c", "g0<1 c: C:\\Data\\other\\c\\Profile"}))
      << "the whole path counts, not only its last part";
  EXPECT_EQ(Found("<FolderList StartPath='C:\\data' EndPath='c' ContainsPath='Data'/>"), Lines{})
      << "the path is spelled as the rule spells it";
  EXPECT_EQ(Found("<FolderList StartPath='C:\\Data' EndPath='c' "
                  "ContainsPath='{Root}'/>"),
            Lines{});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\Data' EndPath='c' ContainsPath=''/>").size(), 8u);
  EXPECT_EQ(Found("<FolderList StartPath='C:\\Data' EndPath='c' containspath='o'/>").size(), 8u);
}

TEST_F(JunkScanRules, A_folder_list_has_no_pattern) {
  AddFiles({u"C:\\d\\1\\c\\a.log", u"C:\\d\\1\\c\\b.txt"});
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='c' Pattern='*.log'/>").size(), 3u);
}

TEST_F(JunkScanRules, A_folder_list_lists_its_start_once_and_asks_for_each_end) {
  AddFiles({u"C:\\d\\1\\c\\a", u"C:\\d\\2\\x"});
  machine_.AddFile(kRulesPath, "");
  machine_.SetRecording(true);
  ASSERT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='c'/>").size(), 2u);
  EXPECT_EQ(machine_.CallCountFor(Call::kFindFirst, u"C:\\d\\*"), 1u);
  EXPECT_EQ(machine_.CallCountFor(Call::kQueryAttributes, u"C:\\d\\2\\c"), 1u);
  EXPECT_EQ(machine_.CallCountFor(Call::kFindFirstBasic, u"C:\\d\\2\\c\\*"), 0u);
  EXPECT_LE(machine_.most_open_searches(), 1u) << "the list is complete before a folder is walked";
}

TEST_F(JunkScanRules, A_long_subfolder_of_a_list_is_walked_in_its_long_form) {
  const Text start = support::NestedTo(250, u"C:");
  machine_.AddFile(start + u"\\1\\c\\a", "x");
  const std::string path = "\\\\?\\" + Utf8(start) + "\\1";
  EXPECT_EQ(Found("<FolderList StartPath='" + Utf8(start) + "' EndPath='c'/>"),
            (Lines{"[g0<1] c = " + path + "\\c", "g0<1 c: " + path + "\\c\\a"}));
  EXPECT_EQ(Found("<ChildrenList StartPath='" + Utf8(start) + "'/>"),
            (Lines{"[g0<1] 1 = " + path, "g0<1 1: " + path + "\\c\\a"}));
}

// ---- ChildrenList

TEST_F(JunkScanRules, A_children_list_walks_each_subfolder_and_then_its_own_files) {
  AddFiles(
      {u"C:\\d\\a loose", u"C:\\d\\b\\1", u"C:\\d\\b\\deep\\2", u"C:\\d\\c\\3", u"C:\\d\\z loose"});
  EXPECT_EQ(Found("<ChildrenList StartPath='C:\\d'/>"),
            (Lines{"[g0<1] b = C:\\d\\b", "g0<1 b: C:\\d\\b\\1", "g0<1 b: C:\\d\\b\\deep\\2",
                   "[g1<1] c = C:\\d\\c", "g1<1 c: C:\\d\\c\\3", "1<0 c: C:\\d\\a loose",
                   "1<0 c: C:\\d\\z loose"}));
}

TEST_F(JunkScanRules, A_children_list_has_neither_name_nor_pattern_nor_end) {
  AddFiles({u"C:\\d\\b\\1.txt", u"C:\\d\\loose.txt"});
  EXPECT_EQ(Found("<ChildrenList StartPath='C:\\d' DisplayName='n' "
                  "Pattern='*.log' EndPath='e' "
                  "ContainsPath='q'/>"),
            (Lines{"[g0<1] b = C:\\d\\b", "g0<1 b: C:\\d\\b\\1.txt", "1<0 c: C:\\d\\loose.txt"}));
}

TEST_F(JunkScanRules, A_children_list_keeps_the_spelling_of_its_start) {
  AddFiles({u"C:\\Data\\Sub\\a", u"C:\\Data\\loose"});
  EXPECT_EQ(Found("<ChildrenList StartPath='{Root}data/'/>"),
            (Lines{"[g0<1] Sub = C:\\data/\\Sub", "g0<1 Sub: C:\\data/\\Sub\\a",
                   "1<0 c: C:\\data/\\loose"}));
}

TEST_F(JunkScanRules, A_children_list_without_subfolders_has_its_files) {
  AddFiles({u"C:\\d\\a", u"C:\\d\\b"});
  EXPECT_EQ(Found("<ChildrenList StartPath='C:\\d'/>"),
            (Lines{"1<0 c: C:\\d\\a", "1<0 c: C:\\d\\b"}));
}

// ---- Everything else

TEST_F(JunkScanRules, A_root_without_categories_yields_nothing) {
  AddFiles({u"C:\\t\\a"});
  for (const std::string content :
       {"", "<Folder Path='C:\\t'/>", "<ChildrenList StartPath='C:\\t'/><Other/>", "text",
        "<category DisplayName='x'><Folder Path='C:\\t'/></category>",
        "<Other><Category DisplayName='x'><Folder "
        "Path='C:\\t'/></Category></Other>",
        "<Root><Category DisplayName='x'><Folder "
        "Path='C:\\t'/></Category></Root>",
        "<Folder/><FolderList/><ChildrenList/>"}) {
    EXPECT_EQ(Scanned(InRoot(content)), Lines{}) << content;
    EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_DONE);
  }
}

TEST_F(JunkScanRules, An_unknown_element_is_passed_over_with_all_that_is_in_it) {
  AddFiles({u"C:\\t\\a"});
  const std::string folder = "<Folder Path='C:\\t'/>";
  for (const std::string name : {"Other", "folder", "FOLDER", "Folders", "Folde", "Root",
                                 "category", "FolderLists", "Childrenlist", "x:Folder"}) {
    EXPECT_EQ(
        Found("<" + name + " Path='C:\\t' StartPath='C:\\t' EndPath='' DisplayName='n'>" + folder +
              Category("in", folder) + "<Category/><Folder/></" + name + ">" + folder),
        (Lines{"[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"}))
        << name << " takes no number either";
  }
}

TEST_F(JunkScanRules, What_stands_inside_a_rule_is_not_looked_at) {
  AddFiles({u"C:\\t\\a", u"C:\\d\\1\\c\\a"});
  const std::string inside = "<Folder Path='C:\\t'/><Folder/><Category/></";
  EXPECT_EQ(Found("<Folder Path='C:\\t'>" + inside + "Folder>").size(), 2u);
  EXPECT_EQ(Found("<FolderList StartPath='C:\\d' EndPath='c'>" + inside + "FolderList>").size(),
            2u);
  EXPECT_EQ(Found("<ChildrenList StartPath='C:\\d'>" + inside + "ChildrenList>").size(), 2u);
}

TEST_F(JunkScanRules, Attributes_that_mean_nothing_are_passed_over) {
  AddFiles({u"C:\\t\\a"});
  EXPECT_EQ(Scanned("<Root DisplayName='' a='1'><Category Path='x' DisplayName='c' b=''>"
                    "<Folder StartPath='' EndPath='' Path='C:\\t' "
                    "Other='x'/></Category></Root>"),
            (Lines{"[1<0] c", "[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"}));
}

TEST_F(JunkScanRules, Values_are_taken_as_they_are_decoded) {
  AddFiles({u"C:\\a & b\\x", u"C:\\\u00E9\\y"});
  EXPECT_EQ(Found("<Folder Path='C:\\a &amp; b' DisplayName='&amp;lt;&quot;'/>"),
            (Lines{"[g0<1] <\" = C:\\a & b", "g0<1 <\": C:\\a & b\\x"}));
  EXPECT_EQ(Found("<Folder Path='C:\\\xC3\xA9'/>"),
            (Lines{"[g0<1] \xC3\xA9 = C:\\\xC3\xA9", "g0<1 \xC3\xA9: C:\\\xC3\xA9\\y"}));
}

TEST_F(JunkScanRules, A_root_inside_the_profiles_text_is_expanded_in_rules_too) {
  AddFiles({u"C:\\Users\\v\\a"});
  Request request = JunkRequest();
  request.user_home = u"{Root}Users\\v";
  EXPECT_EQ(Scan(InCategory("<Folder Path='{UserHome}'/>"), request), QS_OK);
  EXPECT_EQ(Outline(scan_tests::ReadReport(scan_)),
            (Lines{"[1<0] c", "[g0<1] v = C:\\Users\\v", "g0<1 v: C:\\Users\\v\\a"}));
}

TEST_F(JunkScanRules, The_document_may_have_any_encoding_that_the_reader_knows) {
  AddFiles({u"C:\\t\\a"});
  const Lines expected = {"[1<0] c", "[g0<1] t = C:\\t", "g0<1 t: C:\\t\\a"};
  const std::string document = InCategory("<Folder Path='C:\\t'/>");
  EXPECT_EQ(Scanned(document), expected);
  EXPECT_EQ(Scanned(std::string(kUtf8Mark) + document), expected);
  EXPECT_EQ(Scanned(std::string(kUtf16Mark) + LittleEndian(support::Wide(document))), expected);
}

}  // namespace
}  // namespace quastel::junk_tests
