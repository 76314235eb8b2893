#include "fs/protection.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::Repeat;
using simulated::SimulatedWindows;

struct NameCase : support::NamedCase {
  const qs_char* path;
  std::int32_t ignored;
};

constexpr NameCase kNames[] = {
    {{"Null"}, nullptr, 0},
    {{"Empty"}, u"", 0},
    {{"Paging_file"}, u"C:\\pagefile.sys", 1},
    {{"Swap_file"}, u"C:\\swapfile.sys", 1},
    {{"Hibernation_file"}, u"C:\\hiberfil.sys", 1},
    {{"Name_alone"}, u"pagefile.sys", 1},
    {{"Other_case_in_a_deep_folder_of_another_drive"}, u"D:\\backup\\PAGEFILE.SYS", 1},
    {{"Mixed_case"}, u"E:\\a\\b\\HiberFil.sys", 1},
    {{"Slashes"}, u"D:/backup/swapfile.SYS", 1},
    {{"Long_form"}, u"\\\\?\\C:\\pagefile.sys", 1},
    {{"With_an_extension_behind"}, u"C:\\pagefile.sys.bak", 0},
    {{"With_letters_before"}, u"C:\\xpagefile.sys", 0},
    {{"Cut_short"}, u"C:\\pagefile.sy", 0},
    {{"Without_an_extension"}, u"C:\\pagefile", 0},
    {{"Trailing_separator"}, u"C:\\pagefile.sys\\", 0},
    {{"Trailing_slash"}, u"C:\\pagefile.sys/", 0},
    {{"As_a_folder_of_the_path"}, u"C:\\pagefile.sys\\x", 0},
    {{"Trailing_blank"}, u"C:\\pagefile.sys ", 0},
    {{"Trailing_dot"}, u"C:\\pagefile.sys.", 0},
    {{"After_a_colon"}, u"C:pagefile.sys", 0},
    {{"A_letter_that_folds_only_beyond_ASCII"}, u"C:\\pagefile.\u017Fys", 0},
    {{"Another_system_file"}, u"C:\\bootmgr.sys", 0},
};

class IsIgnoredTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(IsIgnoredTest, Looks_at_the_last_name_alone) {
  EXPECT_EQ(qs_is_ignored(GetParam().path), GetParam().ignored);
  EXPECT_EQ(IsIgnoredFile(ViewOf(GetParam().path)), GetParam().ignored == 1);
}

INSTANTIATE_TEST_SUITE_P(IsIgnored, IsIgnoredTest, ::testing::ValuesIn(kNames),
                         support::CaseName());

struct PlaceCase : support::NamedCase {
  const qs_char* path;
  std::int32_t is_protected;
};

// With the system root C:\ and the profile C:\Users\u.
constexpr PlaceCase kPlaces[] = {
    {{"Windows"}, u"C:\\Windows", 1},
    {{"Below_Windows_in_lower_case"}, u"c:\\windows\\system32\\x.dll", 1},
    {{"Windows_with_a_separator"}, u"C:\\Windows\\", 1},
    {{"Windows_with_slashes"}, u"C:/Windows/Temp", 1},
    {{"Windows_by_way_of_dots"}, u"C:\\Users\\..\\Windows\\.\\x", 1},
    {{"Windows_in_the_long_form"}, u"\\\\?\\C:\\Windows\\x", 1},
    {{"Windows_relative_to_the_current_folder"}, u"Windows\\x", 1},
    {{"Program_Files"}, u"C:\\Program Files", 1},
    {{"Below_Program_Files"}, u"C:\\program files\\a\\b", 1},
    {{"Program_Files_x86"}, u"C:\\Program Files (X86)\\a", 1},
    {{"ProgramData"}, u"C:\\PROGRAMDATA\\a", 1},
    {{"Recycle_Bin"}, u"C:\\$RECYCLE.BIN\\S-1-5", 1},
    {{"Application_data"}, u"C:\\Users\\u\\AppData", 1},
    {{"Local_temporary_files"}, u"C:\\Users\\u\\AppData\\Local\\Temp", 1},
    {{"Roaming_in_other_case"}, u"c:\\users\\U\\appdata\\roaming", 1},
    {{"A_name_that_goes_on"}, u"C:\\WindowsApps", 0},
    {{"Program_Files_with_an_addition"}, u"C:\\Program Files Backup", 0},
    {{"Program_Files_x86_with_an_addition"}, u"C:\\Program Files (x86) old\\a", 0},
    {{"AppData_with_an_addition"}, u"C:\\Users\\u\\AppData2", 0},
    {{"Another_drive"}, u"D:\\Windows", 0},
    {{"Deeper_in_the_tree"}, u"C:\\Backup\\Windows\\x", 0},
    {{"Documents"}, u"C:\\Users\\u\\Documents", 0},
    {{"The_profile_itself"}, u"C:\\Users\\u", 0},
    {{"Another_profile"}, u"C:\\Users\\v\\AppData\\Local", 0},
    {{"The_system_root_itself"}, u"C:\\", 0},
    {{"Leaving_Windows_by_dots"}, u"C:\\Windows\\..\\a", 0},
    {{"A_share"}, u"\\\\srv\\C$\\Windows", 0},
    {{"Empty"}, u"", 0},
};

class IsInWhitelistTest : public ::testing::TestWithParam<PlaceCase> {
 protected:
  SimulatedWindows windows_;
};

TEST_P(IsInWhitelistTest, Gives_the_expected_answer) {
  EXPECT_EQ(qs_is_in_whitelist(GetParam().path, u"C:\\", u"C:\\Users\\u"), GetParam().is_protected);
}

TEST_P(IsInWhitelistTest, Gives_the_same_answer_for_other_spellings_of_the_roots) {
  for (const qs_char* root : {u"c:/", u"\\\\?\\C:\\", u"C:\\Users\\..", u"C:\\\\"}) {
    for (const qs_char* home : {u"c:/users/U/", u"\\\\?\\C:\\Users\\u", u"Users\\u"}) {
      EXPECT_EQ(qs_is_in_whitelist(GetParam().path, root, home), GetParam().is_protected)
          << support::Utf8(root) << ' ' << support::Utf8(home);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(IsInWhitelist, IsInWhitelistTest, ::testing::ValuesIn(kPlaces),
                         support::CaseName());

class IsInWhitelist : public ::testing::Test {
 protected:
  SimulatedWindows windows_;
};

TEST_F(IsInWhitelist, A_missing_argument_is_not_protected) {
  EXPECT_EQ(qs_is_in_whitelist(nullptr, u"C:\\", u"C:\\Users\\u"), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Windows", nullptr, u"C:\\Users\\u"), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Windows", u"C:\\", nullptr), 0);
}

TEST_F(IsInWhitelist, The_protected_folders_lie_below_the_given_root) {
  EXPECT_EQ(qs_is_in_whitelist(u"D:\\Sys\\Windows\\x", u"D:\\Sys", u"C:\\Users\\u"), 1);
  EXPECT_EQ(qs_is_in_whitelist(u"D:\\Sys\\Windows\\x", u"D:\\Sys\\", u"C:\\Users\\u"), 1);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Windows\\x", u"D:\\Sys", u"C:\\Users\\u"), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"\\\\srv\\c\\ProgramData", u"\\\\srv\\c\\", u"C:\\Users\\u"), 1);
}

TEST_F(IsInWhitelist, A_profile_that_is_a_drive_s_root_protects_no_application_data) {
  // The root keeps its separator, so the joined text has two of them and no path begins with it.
  EXPECT_EQ(qs_is_in_whitelist(u"E:\\AppData\\x", u"C:\\", u"E:\\"), 0);
}

TEST_F(IsInWhitelist, Empty_roots_protect_nothing) {
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Windows\\x", u"", u"C:\\Users\\u"), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Users\\u\\AppData", u"C:\\", u""), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Windows\\x", u"C:\\", u""), 1);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Users\\u\\AppData", u"", u"C:\\Users\\u"), 1);
}

TEST_F(IsInWhitelist, Paths_that_cannot_be_resolved_are_compared_as_given) {
  windows_.FailCall(Call::kFullPathName, 1, Repeat::kFromThenOn);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\Windows\\x", u"C:\\", u"C:\\Users\\u"), 1);
  EXPECT_EQ(qs_is_in_whitelist(u"C:\\a\\..\\Windows\\x", u"C:\\", u"C:\\Users\\u"), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"C:/Windows/x", u"C:\\", u"C:\\Users\\u"), 0);
  EXPECT_EQ(qs_is_in_whitelist(u"Windows\\x", u"", u"C:\\Users\\u"), 1);
}

TEST_F(IsInWhitelist, A_long_path_is_tested_like_a_short_one) {
  const Text inside = support::NestedTo(2000, u"C:\\Windows");
  const Text outside = support::NestedTo(2000, u"C:\\WindowsOld");
  EXPECT_EQ(qs_is_in_whitelist(inside.c_str(), u"C:\\", u"C:\\Users\\u"), 1);
  EXPECT_EQ(qs_is_in_whitelist((u"\\\\?\\" + inside).c_str(), u"C:\\", u"C:\\Users\\u"), 1);
  EXPECT_EQ(qs_is_in_whitelist(outside.c_str(), u"C:\\", u"C:\\Users\\u"), 0);
}

TEST_F(IsInWhitelist, Folders_made_comparable_once_cost_two_calls_for_each_question) {
  const ProtectedFolders folders(u"C:\\", u"C:\\Users\\u");
  const std::uint64_t before = windows_.CallCount(Call::kFullPathName);
  EXPECT_TRUE(folders.Contains(u"C:\\Windows"));
  EXPECT_FALSE(folders.Contains(u"C:\\Users"));
  EXPECT_EQ(windows_.CallCount(Call::kFullPathName), before + 4);
}

TEST_F(IsInWhitelist, A_file_of_an_open_folder_is_tested_by_its_name_with_the_same_answer) {
  const ProtectedFolders folders(u"C:\\", u"C:\\Users\\u");
  const std::vector<Text> open_folders = {
      u"C:",      u"C:\\Users\\u", u"C:\\Users", u"C:\\data\\Windows",  u"D:",
      u"C:/data", u"\\\\?\\C:",    u"data",      u"\\\\?\\C:\\Users\\u"};
  const std::vector<Text> names = {
      u"Windows",       u"WINDOWS",  u"Windows.",      u"Windows. .",  u"Windows ",
      u"AppData",       u"appdata.", u"Program Files", u"ProgramData", u"Program Files (x86)",
      u"$RECYCLE.BIN ", u"a.txt",    u"Windows.old",   u"NUL",         u"AppData2"};
  int protected_files = 0;
  for (const Text& folder : open_folders) {
    for (const Text& name : names) {
      const Text path = folder + u"\\" + name;
      EXPECT_EQ(folders.ContainsFile(path, name), folders.Contains(path)) << support::Utf8(path);
      protected_files += folders.Contains(path) ? 1 : 0;
    }
  }
  EXPECT_GT(protected_files, 10);
}

TEST_F(IsInWhitelist, An_ordinary_file_of_an_open_folder_costs_no_call) {
  const ProtectedFolders folders(u"C:\\", u"C:\\Users\\u");
  const std::uint64_t before = windows_.CallCount(Call::kFullPathName);
  EXPECT_FALSE(folders.ContainsFile(u"C:\\data\\a.txt", u"a.txt"));
  EXPECT_FALSE(folders.ContainsFile(u"C:\\data\\", u""));
  EXPECT_EQ(windows_.CallCount(Call::kFullPathName), before);
}

}  // namespace
}  // namespace quastel
