// How a path may be spelled for the five deletion exports: every form of root, what the system
// makes of a path before it is looked at, long paths.

#include <cstddef>
#include <string>

#include "fs/deletion.h"
#include "fs/deletion_fixture.h"

namespace quastel::deletion_tests {
namespace {

using DeletionPaths = EachDeletion;

INSTANTIATE_TEST_SUITE_P(All, DeletionPaths, ::testing::ValuesIn(kExports), support::CaseName());

// ---- Every form of root

TEST_P(DeletionPaths, A_drive_is_a_root_in_either_case_and_with_either_separator) {
  AddFile(u"C:\\a\\1");
  AddFile(u"C:\\a\\2");
  AddFile(u"C:\\a\\3");
  ExpectDone(u"c:\\a\\1", u"C:\\a\\1");
  ExpectDone(u"C:/a/2", u"C:\\a\\2");
  ExpectDone(u"c:\\A/3", u"C:\\a\\3");
}

TEST_P(DeletionPaths, Server_and_share_are_a_root) {
  windows_.AddShare(u"\\\\srv\\share");
  AddFile(u"\\\\srv\\share\\1");
  AddFile(u"\\\\srv\\share\\a\\2");
  AddFile(u"\\\\srv\\share\\a\\3");
  ExpectDone(u"\\\\srv\\share\\1", u"\\\\srv\\share\\1");
  ExpectDone(u"\\\\srv\\share\\a\\2", u"\\\\srv\\share\\a\\2");
  ExpectDone(u"//SRV/Share/a/3", u"\\\\srv\\share\\a\\3");
}

TEST_P(DeletionPaths, Neither_server_nor_share_is_asked_for_without_the_other) {
  windows_.AddShare(u"\\\\srv\\share");
  AddFile(u"\\\\srv\\share\\a\\f");
  Lines calls = CallsOf(GetParam(), u"\\\\srv\\share\\a\\f");
  ASSERT_GE(calls.size(), 4u);
  calls.resize(4);
  EXPECT_EQ(calls[0], "FullPathName \\\\srv\\share\\a\\f");
  EXPECT_EQ(calls[1], "QueryAttributes \\\\srv\\share\\a");
  EXPECT_EQ(calls[2], "QueryAttributes \\\\srv\\share\\");
  EXPECT_EQ(calls[3], std::string(GetParam().guarded ? "QueryFileFacts" : "QueryAttributes") +
                          " \\\\srv\\share\\a\\f");
}

TEST_P(DeletionPaths, The_extended_form_of_a_drive_is_a_root_with_seven_units) {
  AddFile(u"C:\\a\\f");
  Lines calls = CallsOf(GetParam(), u"\\\\?\\C:\\a\\f");
  ASSERT_GE(calls.size(), 4u);
  calls.resize(4);
  EXPECT_EQ(calls[0], "FullPathName \\\\?\\C:\\a\\f");
  EXPECT_EQ(calls[1], "QueryAttributes \\\\?\\C:\\a");
  EXPECT_EQ(calls[2], "QueryAttributes \\\\?\\C:\\");
  AddFile(u"C:\\a\\g");
  ExpectDone(u"\\\\?\\c:\\A\\g", u"C:\\a\\g");
}

TEST_P(DeletionPaths, The_extended_form_of_a_share_is_a_root_in_either_case) {
  windows_.AddShare(u"\\\\srv\\share");
  for (const Char* prefix : {u"\\\\?\\UNC\\", u"\\\\?\\unc\\", u"\\\\?\\uNc\\"}) {
    AddFile(u"\\\\srv\\share\\a\\f");
    AddFile(u"\\\\srv\\share\\g");
    const Text root = prefix + Text(u"srv\\share\\");
    Lines calls = CallsOf(GetParam(), root + u"a\\f");
    ASSERT_GE(calls.size(), 4u);
    calls.resize(4);
    EXPECT_EQ(calls[0], "FullPathName " + Utf8(root) + "a\\f");
    EXPECT_EQ(calls[1], "QueryAttributes " + Utf8(root) + "a");
    EXPECT_EQ(calls[2], "QueryAttributes " + Utf8(root));
    ExpectDone(root + u"g", u"\\\\srv\\share\\g");
  }
}

TEST_P(DeletionPaths, A_junction_on_a_share_is_refused_in_every_form) {
  windows_.AddShare(u"\\\\srv\\share");
  AddFile(u"\\\\srv\\share\\a\\f");
  windows_.AddLink(LinkKind::kJunction, u"\\\\srv\\share\\j", u"\\\\srv\\share\\a");
  ExpectRefused(u"\\\\srv\\share\\j\\f");
  ExpectRefused(u"//srv/share/j/f");
  ExpectRefused(u"\\\\?\\UNC\\srv\\share\\j\\f");
  ExpectRefused(u"\\\\?\\unc\\srv\\share\\j\\f");
}

TEST_P(DeletionPaths, A_share_that_is_missing_on_the_server_is_refused) {
  windows_.AddShare(u"\\\\srv\\share");
  ExpectRefused(u"\\\\srv\\other\\f");
  ExpectRefused(u"\\\\?\\UNC\\srv\\other\\f");
}

// ---- What the system makes of a path before it is looked at

TEST_P(DeletionPaths, A_relative_path_is_judged_by_the_folders_above_the_current_one) {
  AddFile(u"C:\\work\\here\\f");
  AddFile(u"C:\\work\\here\\sub\\g");
  AddFile(u"C:\\work\\h");
  windows_.SetCurrentFolder(u"C:\\work\\here");
  Lines calls = CallsOf(GetParam(), u"missing");
  EXPECT_EQ(calls[0], "FullPathName missing");
  EXPECT_EQ(calls[1], "QueryAttributes C:\\work\\here");
  EXPECT_EQ(calls[2], "QueryAttributes C:\\work");
  EXPECT_EQ(calls[3], "QueryAttributes C:\\");
  EXPECT_EQ(calls[4],
            std::string(GetParam().guarded ? "QueryFileFacts" : "QueryAttributes") + " missing");
  ExpectDone(u"f", u"C:\\work\\here\\f");
  ExpectDone(u"sub/g", u"C:\\work\\here\\sub\\g");
  ExpectDone(u"..\\h", u"C:\\work\\h");
}

TEST_P(DeletionPaths, Paths_of_the_current_drive_are_taken) {
  AddFile(u"C:\\work\\f");
  AddFile(u"C:\\work\\g");
  windows_.SetCurrentFolder(u"C:\\work");
  ExpectDone(u"C:f", u"C:\\work\\f");
  ExpectDone(u"\\work\\g", u"C:\\work\\g");
}

TEST_P(DeletionPaths, A_current_folder_below_a_junction_is_refused) {
  AddFile(u"C:\\real\\sub\\f");
  windows_.AddLink(LinkKind::kJunction, u"C:\\j", u"C:\\real");
  windows_.AddFolder(u"C:\\plain");
  windows_.SetCurrentFolder(u"C:\\plain");
  ExpectRefused(u"..\\j\\sub\\f");
  ExpectDone(u"..\\real\\sub\\f", u"C:\\real\\sub\\f");
}

TEST_P(DeletionPaths, A_detour_through_a_junction_that_the_text_takes_back_is_no_detour) {
  AddFile(u"C:\\a\\f");
  windows_.AddFolder(u"C:\\elsewhere\\deep");
  windows_.AddLink(LinkKind::kJunction, u"C:\\a\\j", u"C:\\elsewhere\\deep");
  ExpectDone(u"C:\\a\\j\\..\\f", u"C:\\a\\f");
}

TEST_P(DeletionPaths, Dots_and_spaces_at_the_end_name_what_the_system_takes_them_for) {
  AddFile(u"C:\\a\\f");
  AddFile(u"C:\\a\\g");
  ExpectDone(u"C:\\a\\f. .", u"C:\\a\\f");
  ExpectDone(u"C:\\a.\\g", u"C:\\a\\g");
}

// Behind the prefix such names are real ones. The full path drops their dots, and so would lead the
// look at the folders to the neighbour.
TEST_P(DeletionPaths, A_junction_whose_name_ends_in_a_dot_is_not_taken_for_its_neighbour) {
  AddFile(u"C:\\real\\f");
  windows_.AddFolder(u"C:\\a");
  windows_.AddLink(LinkKind::kJunction, u"C:\\a.", u"C:\\real");
  ExpectRefused(u"\\\\?\\C:\\a.\\f");
}

// On the way the system leaves the blank where it is, but not when it is asked for the folder
// alone.
TEST_P(DeletionPaths, A_junction_whose_name_ends_in_a_blank_is_not_taken_for_its_neighbour) {
  AddFile(u"C:\\real\\f");
  windows_.AddFolder(u"C:\\t\\a");
  windows_.AddLink(LinkKind::kJunction, u"\\\\?\\C:\\t\\a ", u"C:\\real");
  ExpectRefused(u"C:\\t\\a \\f");
  ExpectRefused(u"\\\\?\\C:\\t\\a \\f");
}

TEST_P(DeletionPaths, A_folder_whose_name_ends_in_a_blank_is_a_folder) {
  AddFile(u"C:\\t\\a \\f");
  AddFile(u"C:\\t\\a \\g");
  windows_.AddLink(LinkKind::kJunction, u"C:\\t\\a", u"C:\\t");
  ExpectDone(u"C:\\t\\a \\f", u"C:\\t\\a \\f");
}

TEST_P(DeletionPaths, Only_one_of_two_dots_within_a_path_goes) {
  AddFile(u"C:\\real\\f");
  windows_.AddFolder(u"C:\\t\\a");
  windows_.AddLink(LinkKind::kJunction, u"\\\\?\\C:\\t\\a.", u"C:\\real");
  ExpectRefused(u"C:\\t\\a..\\f");
}

TEST(UnsafeAncestor, Is_none_behind_a_separator_that_is_doubled) {
  simulated::SimulatedWindows windows;
  windows.AddFolder(u"C:\\dir");
  EXPECT_FALSE(HasUnsafeAncestor(u"\\\\?\\C:\\\\dir\\f"));
  EXPECT_FALSE(HasUnsafeAncestor(u"\\\\?\\C:\\dir\\\\f"));
  EXPECT_TRUE(HasUnsafeAncestor(u"\\\\?\\C:\\\\dir.\\f"));
}

TEST_P(DeletionPaths, Doubled_separators_count_once) {
  AddFile(u"C:\\a\\b\\f");
  ExpectDone(u"C:\\\\a//b\\\\f", u"C:\\a\\b\\f");
}

TEST_P(DeletionPaths, A_file_with_a_separator_at_its_end_is_refused) {
  AddFile(u"C:\\a\\f");
  ExpectRefused(u"C:\\a\\f\\");
  ExpectRefused(u"C:\\a\\f/");
  ExpectRefused(u"\\\\?\\C:\\a\\f\\");
}

// ---- Long paths

TEST_P(DeletionPaths, Paths_on_both_sides_of_every_limit_are_taken) {
  for (const std::size_t length :
       {std::size_t{246}, std::size_t{247}, std::size_t{248}, std::size_t{259}, std::size_t{260},
        std::size_t{300}, std::size_t{2000}}) {
    const Text path = support::NestedTo(length, u"C:");
    AddFile(path);
    ExpectDone(path, path);
    if (GetParam().removes) {
      AddFile(path);
    }
    ExpectDone(u"\\\\?\\" + path, path);
    windows_.Remove(path.substr(0, 63));
  }
}

TEST_P(DeletionPaths, Long_paths_on_a_share_are_taken) {
  windows_.AddShare(u"\\\\srv\\share");
  const Text path = support::NestedTo(300, u"\\\\srv\\share");
  AddFile(path);
  ExpectDone(path, path);
  if (GetParam().removes) {
    AddFile(path);
  }
  ExpectDone(u"\\\\?\\UNC" + path.substr(1), path);
}

TEST_P(DeletionPaths, A_long_path_is_asked_for_in_its_extended_form_alone) {
  const Text path = support::NestedTo(300, u"C:");
  AddFile(path);
  for (const std::string& call : CallsOf(GetParam(), path)) {
    if (call.rfind("FullPathName ", 0) != 0 && call.find(":\\") != std::string::npos &&
        call.rfind("CreateShellItem ", 0) != 0) {
      EXPECT_NE(call.find(" \\\\?\\C:\\"), std::string::npos) << call;
    }
  }
  EXPECT_GT(windows_.CallCountFor(Call::kQueryAttributes, u"\\\\?\\C:\\"), 0u);
}

TEST_P(DeletionPaths, A_junction_far_up_a_long_path_is_refused) {
  const Text below = support::NestedTo(300, u"C:\\real").substr(7);
  AddFile(u"C:\\real" + below);
  windows_.AddLink(LinkKind::kJunction, u"C:\\j", u"C:\\real");
  ExpectRefused(u"C:\\j" + below);
  ExpectRefused(u"\\\\?\\C:\\j" + below);
  ExpectDone(u"C:\\real" + below, u"C:\\real" + below);
}

TEST_P(DeletionPaths, A_short_relative_path_can_lie_below_long_folders) {
  const Text folder = support::NestedTo(250, u"C:");
  AddFile(folder + u"\\f");
  windows_.SetCurrentFolder(folder);
  ExpectDone(u"f", folder + u"\\f");
}

TEST_P(DeletionPaths, A_junction_above_a_short_relative_path_below_long_folders_is_refused) {
  const Text folder = support::NestedTo(249, u"C:\\real");
  AddFile(folder + u"\\f");
  windows_.AddLink(LinkKind::kJunction, folder + u"\\j", u"C:\\real");
  windows_.SetCurrentFolder(folder);
  ExpectRefused(u"j\\" + folder.substr(8, 60) + u"\\f");
}

TEST_P(DeletionPaths, A_path_at_the_system_s_limit_and_beyond_is_refused_quietly) {
  for (const std::size_t length :
       {std::size_t{32766}, std::size_t{32767}, std::size_t{32768}, std::size_t{40000}}) {
    ExpectRefused(support::NestedTo(length, u"C:"));
    ExpectRefused(support::NestedTo(length, u"\\\\?\\C:"));
  }
}

}  // namespace
}  // namespace quastel::deletion_tests
