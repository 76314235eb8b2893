// Walks that keep out of the protected folders.

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calls.h"
#include "support/named_case.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::Lines;
using support::RunWalk;
using support::WalkResult;

struct ProtectionPasses : support::NamedCase {
  const qs_char* pattern;
};

constexpr ProtectionPasses kProtectionPasses[] = {
    {{"Single_pass"}, u"*"},
    {{"Patterned"}, u"*.x"},
};

class EnumerationProtection : public ::testing::TestWithParam<ProtectionPasses> {
 protected:
  EnumerationProtection() {
    for (const qs_char* path :
         {u"C:\\Program Files\\a.x", u"C:\\Program Files (x86)\\a.x", u"C:\\ProgramData\\a.x",
          u"C:\\WINDOWS\\System32\\a.x", u"C:\\$Recycle.Bin\\S-1-5\\a.x", u"C:\\WindowsApps\\a.x",
          u"C:\\Program Files Backup\\a.x", u"C:\\Data\\Windows\\a.x",
          u"C:\\Users\\u\\AppData\\Local\\a.x", u"C:\\Users\\u\\Documents\\a.x",
          u"C:\\Users\\v\\AppData\\a.x", u"C:\\root.x"}) {
      windows_.AddFile(path, "");
    }
    windows_.AddDrive('D');
    windows_.AddFile(u"D:\\Windows\\a.x", "");
  }

  FileWalk WalkOf(const qs_char* root) const {
    return FileWalk{.root = Text(root),
                    .pattern = Text(GetParam().pattern),
                    .protect_system = 1,
                    .system_root = Text(u"C:\\"),
                    .user_home = Text(u"C:\\Users\\u")};
  }

  static Lines Paths(const FileWalk& walk) {
    const WalkResult result = RunWalk(walk);
    EXPECT_EQ(result.status, QS_OK);
    return result.paths();
  }

  const Lines outside_ = {"C:\\\\root.x",
                          "C:\\\\WindowsApps\\a.x",
                          "C:\\\\Users\\v\\AppData\\a.x",
                          "C:\\\\Users\\u\\Documents\\a.x",
                          "C:\\\\Program Files Backup\\a.x",
                          "C:\\\\Data\\Windows\\a.x"};
  SimulatedWindows windows_;
};

INSTANTIATE_TEST_SUITE_P(Enumeration, EnumerationProtection, ::testing::ValuesIn(kProtectionPasses),
                         support::CaseName());

TEST_P(EnumerationProtection, The_system_s_folders_are_not_entered_and_all_others_are) {
  EXPECT_EQ(Paths(WalkOf(u"C:\\")), outside_);
}

TEST_P(EnumerationProtection, Protected_folders_are_not_even_listed) {
  windows_.SetRecording(true);
  Paths(WalkOf(u"C:\\"));
  for (const std::string& search : support::SearchesOf(windows_)) {
    for (const char* folder : {"\\Program Files\\", "\\Program Files (x86)\\", "\\ProgramData\\",
                               "\\WINDOWS\\", "\\$Recycle.Bin\\", "\\u\\AppData\\"}) {
      EXPECT_EQ(search.find(folder), std::string::npos) << search;
    }
  }
  EXPECT_GT(support::SearchesOf(windows_).size(), 6u);
}

TEST_P(EnumerationProtection, Any_non_zero_value_switches_it_on) {
  for (const std::uint32_t value : {2u, 0x80000000u}) {
    FileWalk walk = WalkOf(u"C:\\");
    walk.protect_system = value;
    EXPECT_EQ(Paths(walk), outside_);
  }
}

TEST_P(EnumerationProtection, Without_the_switch_everything_is_reported) {
  FileWalk walk = WalkOf(u"C:\\");
  walk.protect_system = 0;
  EXPECT_EQ(Paths(walk).size(), 12u);
}

TEST_P(EnumerationProtection, Without_one_of_the_two_folders_everything_is_reported) {
  FileWalk no_root = WalkOf(u"C:\\");
  no_root.system_root = std::nullopt;
  EXPECT_EQ(Paths(no_root).size(), 12u);
  FileWalk no_home = WalkOf(u"C:\\");
  no_home.user_home = std::nullopt;
  EXPECT_EQ(Paths(no_home).size(), 12u);
}

TEST_P(EnumerationProtection, Empty_folders_are_given_folders) {
  FileWalk walk = WalkOf(u"C:\\");
  walk.user_home = Text();
  Lines with_data = outside_;
  with_data.insert(with_data.begin() + 4, "C:\\\\Users\\u\\AppData\\Local\\a.x");
  EXPECT_EQ(Paths(walk), with_data);
}

TEST_P(EnumerationProtection, A_protected_root_is_an_empty_walk) {
  windows_.SetRecording(true);
  for (const qs_char* root : {u"C:\\Windows", u"c:/windows/System32/", u"C:\\Data\\..\\Windows",
                              u"C:\\Users\\u\\AppData", u"\\\\?\\C:\\Windows\\System32"}) {
    EXPECT_EQ(Paths(WalkOf(root)), Lines{}) << support::Utf8(root);
  }
  EXPECT_EQ(support::SearchesOf(windows_), Lines{});
}

TEST_P(EnumerationProtection, Another_drive_is_not_protected) {
  EXPECT_EQ(Paths(WalkOf(u"D:\\")), Lines{"D:\\\\Windows\\a.x"});
}

TEST_P(EnumerationProtection, The_spelling_of_the_walk_s_root_makes_no_difference) {
  for (const qs_char* root : {u"c:/", u"C:\\Data\\..", u"."}) {
    const std::size_t start = Text(root).size();
    Lines names;
    for (const std::string& path : Paths(WalkOf(root))) {
      names.push_back("C:\\" + path.substr(start));
    }
    EXPECT_EQ(names, outside_) << support::Utf8(root);
  }
  EXPECT_EQ(Paths(WalkOf(u"\\\\?\\C:\\Users\\u")), Lines{"\\\\?\\C:\\Users\\u\\Documents\\a.x"});
}

TEST_P(EnumerationProtection, The_root_s_own_folder_is_walked_without_the_protected_ones) {
  EXPECT_EQ(Paths(WalkOf(u"C:\\Users\\u")), Lines{"C:\\Users\\u\\Documents\\a.x"});
}

TEST(EnumerationProtectionCost, The_protected_folders_are_made_comparable_once_for_a_walk) {
  // Two questions a folder, each of two calls for the folder's own form: nothing for the others'.
  const auto calls_for = [](int folders) {
    SimulatedWindows windows;
    for (int i = 0; i < folders; ++i) {
      windows.AddFile(u"C:\\t\\d" + support::Wide(std::to_string(i)) + u"\\f", "");
    }
    EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"),
                               .protect_system = 1,
                               .system_root = Text(u"C:\\"),
                               .user_home = Text(u"C:\\Users\\u")})
                  .files.size(),
              static_cast<std::size_t>(folders));
    return windows.CallCount(Call::kFullPathName);
  };
  const std::uint64_t few = calls_for(1);
  EXPECT_LE(calls_for(11), few + 10 * 4);
  EXPECT_LE(few, 2 * 2 + 2 * 4u);
}

TEST(EnumerationProtectionTwice, A_folder_that_comes_under_protection_is_dropped_at_its_turn) {
  // A relative folder's place depends on the current folder: each is tested when it is found and
  // again before it is listed.
  SimulatedWindows windows;
  windows.AddFile(u"C:\\Data\\Windows\\a.x", "");
  windows.AddFile(u"C:\\Data\\z.x", "");
  windows.AddFile(u"C:\\Windows\\b.x", "");
  windows.SetCurrentFolder(u"C:\\Data");
  windows.SetRecording(true);
  const WalkResult result =
      RunWalk(FileWalk{.root = Text(u"."),
                       .protect_system = 1,
                       .system_root = Text(u"C:\\"),
                       .user_home = Text(u"C:\\Users\\u"),
                       .after_file = [&](std::size_t) { windows.SetCurrentFolder(u"C:\\"); }});
  EXPECT_EQ(result.status, QS_OK);
  EXPECT_EQ(result.paths(), Lines{".\\z.x"});
  EXPECT_EQ(support::SearchesOf(windows), Lines{".\\*"});
}

TEST_P(EnumerationProtection, Long_paths_below_a_protected_folder_are_kept_out_as_well) {
  const Text home = support::NestedTo(300, u"C:\\Users");
  windows_.AddFile(home + u"\\AppData\\a.x", "");
  windows_.AddFile(home + u"\\Documents\\b.x", "");
  FileWalk walk = WalkOf(u"C:\\Users");
  walk.user_home = home;
  EXPECT_EQ(Paths(walk), (Lines{"C:\\Users\\v\\AppData\\a.x", "C:\\Users\\u\\Documents\\a.x",
                                "C:\\Users\\u\\AppData\\Local\\a.x",
                                support::Utf8(u"\\\\?\\" + home + u"\\Documents\\b.x")}));
}

TEST_P(EnumerationProtection, Paging_files_are_not_the_walk_s_business) {
  windows_.AddFile(u"D:\\pagefile.x", "");
  windows_.AddFile(u"D:\\pagefile.sys", "");
  const Lines paths = Paths(WalkOf(u"D:\\"));
  EXPECT_EQ(paths.size(), Text(GetParam().pattern) == u"*" ? 3u : 2u);
}

}  // namespace
}  // namespace quastel
