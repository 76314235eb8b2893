#include "fs/path_rules.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::CallRecord;
using simulated::SimulatedWindows;
using support::Utf8;
using support::Wide;

static_assert(kLongPathThreshold == 248);

struct PathCase : support::NamedCase {
  const char* path;
  const char* result;
};

// ---- Comparable form

constexpr PathCase kComparable[] = {
    {{"Empty"}, "", ""},
    {{"Drive_root_keeps_its_separator"}, "C:\\", "C:\\"},
    {{"Drive_root_with_two_separators"}, "C:\\\\", "C:\\"},
    {{"Drive_root_with_a_slash"}, "C:/", "C:\\"},
    {{"Plain"}, "C:\\a\\b", "C:\\a\\b"},
    {{"Case_stays"}, "c:\\MiXeD", "c:\\MiXeD"},
    {{"Slashes"}, "C:/a/b", "C:\\a\\b"},
    {{"Dots"}, "C:\\a\\.\\b\\..\\c", "C:\\a\\c"},
    {{"Trailing_separator"}, "C:\\a\\", "C:\\a"},
    {{"Trailing_separators"}, "C:\\a\\/\\", "C:\\a"},
    {{"Relative"}, "x\\y", "C:\\cwd\\x\\y"},
    {{"Rooted"}, "\\x", "C:\\x"},
    {{"Share_with_a_trailing_separator"}, "\\\\server\\share\\", "\\\\server\\share"},
    {{"Share"}, "\\\\server\\share\\a", "\\\\server\\share\\a"},
    {{"Prefixed_drive"}, "\\\\?\\C:\\a\\b", "C:\\a\\b"},
    {{"Prefixed_drive_with_a_trailing_separator"}, "\\\\?\\C:\\a\\", "C:\\a"},
    {{"Prefixed_drive_root"}, "\\\\?\\C:\\", "C:\\"},
    {{"Prefixed_share"}, "\\\\?\\UNC\\server\\share\\a", "\\\\server\\share\\a"},
    {{"Prefixed_share_in_lower_case"}, "\\\\?\\unc\\server\\share", "\\\\server\\share"},
    {{"Prefixed_share_in_mixed_case"}, "\\\\?\\uNC\\server\\share\\", "\\\\server\\share"},
    {{"A_name_that_begins_like_the_share_prefix"}, "\\\\?\\UNCLE\\x", "UNCLE\\x"},
};

class ComparablePathTest : public ::testing::TestWithParam<PathCase> {
 protected:
  ComparablePathTest() {
    windows_.AddFolder(u"C:\\cwd");
    windows_.SetCurrentFolder(u"C:\\cwd");
  }
  SimulatedWindows windows_;
};

TEST_P(ComparablePathTest, Is_absolute_and_plain) {
  EXPECT_EQ(Utf8(ToComparablePath(Wide(GetParam().path))), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(ComparablePath, ComparablePathTest, ::testing::ValuesIn(kComparable),
                         support::CaseName());

TEST(ComparablePath, Costs_two_calls) {
  SimulatedWindows windows;
  ToComparablePath(u"C:\\a");
  EXPECT_EQ(windows.CallCount(Call::kFullPathName), 2u);
}

TEST(ComparablePath, Is_the_given_text_when_either_call_fails) {
  for (std::uint64_t nth = 1; nth <= 2; ++nth) {
    SimulatedWindows windows;
    windows.FailCall(Call::kFullPathName, nth);
    EXPECT_EQ(Utf8(ToComparablePath(u"C:/a/../b")), "C:/a/../b");
    EXPECT_EQ(windows.faults_injected(), 1u) << "call " << nth;
  }
}

// Prefix and trailing separators go from a text that could not be resolved as well.
TEST(ComparablePath, An_unresolved_text_still_loses_prefix_and_trailing_separators) {
  constexpr PathCase kCases[] = {
      {{"drive prefix"}, "\\\\?\\C:\\a\\", "C:\\a"},
      {{"share prefix"}, "\\\\?\\UNC\\s\\h\\/", "\\\\s\\h"},
      {{"share prefix alone"}, "\\\\?\\UNC\\", "\\\\"},
      {{"share prefix without its end"}, "\\\\?\\UNC", "UNC"},
      {{"prefix alone"}, "\\\\?\\", ""},
      {{"three separators stay"}, "\\\\\\", "\\\\\\"},
      {{"four separators"}, "\\\\//", "\\\\/"},
      {{"three units keep a separator"}, "ab\\", "ab\\"},
      {{"four units do not"}, "abc/", "abc"},
      {{"down to three units"}, "ab\\\\\\", "ab\\"},
  };
  for (const PathCase& row : kCases) {
    SimulatedWindows windows;
    windows.FailCall(Call::kFullPathName, 1, simulated::Repeat::kFromThenOn);
    EXPECT_EQ(Utf8(ToComparablePath(Wide(row.path))), row.result) << row.name;
  }
}

TEST(ComparablePath, Is_the_given_text_when_the_result_grows_between_the_calls) {
  SimulatedWindows windows;
  windows.AddFolder(u"C:\\a longer folder");
  int calls = 0;
  windows.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kFullPathName && ++calls == 2) {
      windows.SetCurrentFolder(u"C:\\a longer folder");
    }
  });
  EXPECT_EQ(Utf8(ToComparablePath(u"x")), "x");
}

TEST(ComparablePath, A_result_that_shrinks_between_the_calls_is_used) {
  SimulatedWindows windows;
  windows.AddFolder(u"C:\\a longer folder");
  windows.SetCurrentFolder(u"C:\\a longer folder");
  int calls = 0;
  windows.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kFullPathName && ++calls == 2) {
      windows.SetCurrentFolder(u"C:\\");
    }
  });
  EXPECT_EQ(Utf8(ToComparablePath(u"x")), "C:\\x");
}

TEST(ComparablePath, A_long_path_is_resolved_as_well) {
  SimulatedWindows windows;
  const Text path = support::NestedTo(3000, u"C:");
  EXPECT_EQ(Utf8(ToComparablePath(path + u"\\.\\")), Utf8(path));
}

// ---- Parent folder

constexpr PathCase kParents[] = {
    {{"Drive_root"}, "C:\\", "C:\\"},
    {{"In_a_drive_root"}, "C:\\x", "C:\\"},
    {{"In_a_drive_root_with_separators_behind"}, "C:\\x\\\\", "C:\\"},
    {{"Deeper"}, "C:\\a\\b\\c.txt", "C:\\a\\b"},
    {{"Trailing_separator"}, "C:\\a\\b\\", "C:\\a"},
    {{"Slashes"}, "C:/a/b", "C:\\a"},
    {{"Relative"}, "x", "C:\\cwd"},
    {{"Share"}, "\\\\srv\\share\\x", "\\\\srv\\share"},
    {{"The_share_itself"}, "\\\\srv\\share", "\\\\srv"},
    {{"Prefixed_keeps_its_prefix"}, "\\\\?\\C:\\a\\b", "\\\\?\\C:\\a"},
};

class ParentDirectoryTest : public ::testing::TestWithParam<PathCase> {
 protected:
  ParentDirectoryTest() {
    windows_.AddFolder(u"C:\\cwd");
    windows_.SetCurrentFolder(u"C:\\cwd");
  }
  SimulatedWindows windows_;
};

TEST_P(ParentDirectoryTest, Is_the_folder_of_the_absolute_path) {
  const std::optional<Text> parent = ParentDirectoryOf(Wide(GetParam().path));
  ASSERT_TRUE(parent.has_value());
  EXPECT_EQ(Utf8(*parent), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(ParentDirectory, ParentDirectoryTest, ::testing::ValuesIn(kParents),
                         support::CaseName());

TEST(ParentDirectory, Is_missing_when_the_path_cannot_be_resolved) {
  for (std::uint64_t nth = 1; nth <= 2; ++nth) {
    SimulatedWindows windows;
    windows.FailCall(Call::kFullPathName, nth);
    EXPECT_EQ(ParentDirectoryOf(u"C:\\a\\b"), std::nullopt) << "call " << nth;
  }
}

// ---- One path under another

struct UnderCase : support::NamedCase {
  const char* path;
  const char* prefix;
  bool under;
};

constexpr UnderCase kUnder[] = {
    {{"Below"}, "C:\\Windows\\x", "C:\\Windows", true},
    {{"Itself"}, "C:\\Windows", "C:\\Windows", true},
    {{"A_longer_name"}, "C:\\WindowsApps", "C:\\Windows", false},
    {{"A_name_with_an_addition"}, "C:\\Program Files (x86)\\a", "C:\\Program Files", false},
    {{"Other_case_and_a_trailing_separator"}, "c:\\program files\\a", "C:\\Program Files\\", true},
    {{"Prefix_with_many_trailing_separators"}, "C:\\a\\b", "C:\\a\\/\\", true},
    {{"Itself_without_the_prefix_s_separator"}, "C:\\a", "C:\\a\\", true},
    {{"The_path_s_own_trailing_separator"}, "C:\\a\\", "C:\\a", true},
    {{"A_slash_behind_the_prefix"}, "C:\\a/b", "C:\\a", true},
    {{"Separators_inside_are_compared_as_they_are"}, "C:/a/b", "C:\\a", false},
    {{"Shorter_path"}, "C:\\", "C:\\a", false},
    {{"Drive_root"}, "C:\\a", "C:\\", true},
    {{"Drive_root_itself"}, "C:\\", "C:\\", true},
    {{"Drive_without_a_separator"}, "C:", "C:\\", true},
    {{"Drive_relative_path_is_not_below_the_root"}, "C:a", "C:\\", false},
    {{"Other_drive"}, "D:\\a", "C:\\", false},
    {{"Separator_prefix"}, "\\a", "\\", true},
    {{"Separator_prefix_alone"}, "\\", "\\", true},
    {{"Two_separators_shrink_to_one"}, "\\a", "\\\\", true},
    {{"Separator_prefix_and_a_plain_name"}, "a", "\\", false},
    {{"Both_empty"}, "", "", true},
    {{"Empty_prefix_and_a_name"}, "a", "", false},
    {{"Empty_prefix_and_a_separator"}, "\\a", "", true},
    {{"Empty_path"}, "", "a", false},
    {{"Share"}, "\\\\srv\\share\\x", "\\\\SRV\\share", true},
    {{"A_longer_share_name"}, "\\\\srv\\shared", "\\\\srv\\share", false},
};

class PathUnderTest : public ::testing::TestWithParam<UnderCase> {};

TEST_P(PathUnderTest, Respects_whole_names) {
  EXPECT_EQ(IsPathUnder(Wide(GetParam().path), Wide(GetParam().prefix)), GetParam().under);
}

INSTANTIATE_TEST_SUITE_P(PathUnder, PathUnderTest, ::testing::ValuesIn(kUnder),
                         support::CaseName());

TEST(PathUnder, Letters_beyond_ASCII_keep_their_case) {
  EXPECT_FALSE(IsPathUnder(u"C:\\\u00E4\\x", u"C:\\\u00C4"));
}

// ---- Endings that the system drops

TEST(DroppedEnding, Is_a_dot_or_a_blank_at_the_end_of_any_name) {
  for (const TextView path :
       {u"a.", u"a ", u"a..", u"a .", u"C:\\a.", u"C:\\a. ", u"C:\\a \\b", u"C:/a./b",
        u"C:\\a\\b.\\", u"\\\\srv\\share\\a.", u"C:\\...", u" ", u"C:\\..\\a\\b "}) {
    EXPECT_TRUE(HasDroppedEnding(path)) << Utf8(path);
  }
}

TEST(DroppedEnding, Is_not_one_that_the_system_keeps_or_that_leads_somewhere) {
  for (const TextView path : {u"",
                              u"a",
                              u"C:\\",
                              u"C:\\a\\b",
                              u".a",
                              u" a",
                              u"a.b",
                              u"a b",
                              u".",
                              u"..",
                              u"C:\\.",
                              u"C:\\a\\..",
                              u"C:\\a\\.\\b",
                              u"C:\\a\\..\\b",
                              u"./a",
                              u"../a",
                              u"C:\\a\\\\b",
                              u"\\\\srv\\share\\a",
                              u"\\\\?\\C:\\a.",
                              u"\\\\?\\C:\\a \\b"}) {
    EXPECT_FALSE(HasDroppedEnding(path)) << Utf8(path);
  }
}

TEST(LeadsToFile, Is_true_of_a_path_that_ends_in_the_name_as_it_is_on_the_disk) {
  EXPECT_TRUE(LeadsToFile(u"C:\\a\\b", u"b"));
  EXPECT_TRUE(LeadsToFile(u"C:\\a.\\b", u"b"));
  EXPECT_TRUE(LeadsToFile(u"b", u"b"));
  EXPECT_TRUE(LeadsToFile(u"\\\\?\\C:\\a\\b.", u"b."));
  EXPECT_TRUE(LeadsToFile(u"\\\\?\\C:\\a\\b ", u"b "));
  EXPECT_FALSE(LeadsToFile(u"C:\\a\\b.", u"b."));
  EXPECT_FALSE(LeadsToFile(u"C:\\a\\b ", u"b "));
  EXPECT_FALSE(LeadsToFile(u"\\\\?\\C:\\a\\b", u"b."));
  EXPECT_FALSE(LeadsToFile(u"C:\\a\\b", u"B"));
  EXPECT_FALSE(LeadsToFile(u"C:\\a\\b", u""));
}

TEST(LeadsIntoFolder, Is_what_the_system_makes_of_the_name_within_a_path) {
  simulated::SimulatedWindows windows;
  EXPECT_TRUE(LeadsIntoFolder(u"C:\\a\\b", u"b"));
  EXPECT_TRUE(LeadsIntoFolder(u"C:\\a\\b ", u"b "));
  EXPECT_TRUE(LeadsIntoFolder(u"\\\\?\\C:\\a\\b.", u"b."));
  EXPECT_FALSE(LeadsIntoFolder(u"C:\\a\\b.", u"b."));
  EXPECT_FALSE(LeadsIntoFolder(u"C:\\a\\b..", u"b.."));
  EXPECT_FALSE(LeadsIntoFolder(u"\\\\?\\C:\\a\\b", u"b "));
  windows.FailCall(simulated::Call::kFullPathName, 1, simulated::Repeat::kFromThenOn);
  EXPECT_FALSE(LeadsIntoFolder(u"C:\\a\\b ", u"b "));
}

TEST(SameNames, Are_compared_letter_by_letter_and_without_empty_ones) {
  EXPECT_TRUE(HaveSameNames(u"", u""));
  EXPECT_TRUE(HaveSameNames(u"C:\\a\\b", u"C:\\a\\b"));
  EXPECT_TRUE(HaveSameNames(u"\\\\?\\C:\\\\a\\\\\\b\\", u"\\\\?\\C:\\a\\b"));
  EXPECT_FALSE(HaveSameNames(u"C:\\a", u"C:\\a\\b"));
  EXPECT_FALSE(HaveSameNames(u"C:\\a\\b", u"C:\\a"));
  EXPECT_FALSE(HaveSameNames(u"C:\\a.", u"C:\\a"));
  EXPECT_FALSE(HaveSameNames(u"C:\\A", u"C:\\a"));
  EXPECT_FALSE(HaveSameNames(u"C:\\a/b", u"C:\\a\\b"));
}

// ---- Joining

TEST(JoinPath, Puts_one_separator_where_none_is) {
  EXPECT_EQ(Utf8(JoinPath(u"C:\\a", u"b")), "C:\\a\\b");
  EXPECT_EQ(Utf8(JoinPath(u"C:\\", u"b")), "C:\\b");
  EXPECT_EQ(Utf8(JoinPath(u"C:/a/", u"b")), "C:/a/b");
  EXPECT_EQ(Utf8(JoinPath(u"a\\\\", u"b")), "a\\\\b");
  EXPECT_EQ(Utf8(JoinPath(u"", u"b")), "b");
  EXPECT_EQ(Utf8(JoinPath(u"a", u"")), "a\\");
  EXPECT_EQ(Utf8(JoinPath(u"a", u"\\b")), "a\\\\b");
  EXPECT_EQ(Utf8(JoinPath(u"", u"")), "");
}

// ---- Extended-length prefix

TEST(ExtendedPath, Is_recognised_by_its_prefix) {
  EXPECT_TRUE(IsExtendedPath(u"\\\\?\\C:\\a"));
  EXPECT_TRUE(IsExtendedPath(u"\\\\?\\UNC\\srv\\share"));
  EXPECT_TRUE(IsExtendedPath(u"\\\\?\\unc\\srv\\share"));
  EXPECT_TRUE(IsExtendedPath(u"\\\\?\\"));
  EXPECT_FALSE(IsExtendedPath(u"\\\\?"));
  EXPECT_FALSE(IsExtendedPath(u"\\\\.\\C:"));
  EXPECT_FALSE(IsExtendedPath(u"//?/C:/a"));
  EXPECT_FALSE(IsExtendedPath(u"C:\\a"));
  EXPECT_FALSE(IsExtendedPath(u""));
}

TEST(ExtendedPath, Is_made_of_a_path_of_any_length) {
  SimulatedWindows windows;
  EXPECT_EQ(Utf8(ToExtendedPath(u"C:\\a\\..\\b")), "\\\\?\\C:\\b");
  EXPECT_EQ(Utf8(ToExtendedPath(u"\\\\srv\\share\\a")), "\\\\?\\UNC\\srv\\share\\a");
  EXPECT_EQ(Utf8(ToExtendedPath(u"\\\\?\\C:\\a\\..")), "\\\\?\\C:\\a\\..");
  EXPECT_EQ(Utf8(ToLongPath(u"C:\\a\\..\\b")), "C:\\a\\..\\b");
}

}  // namespace
}  // namespace quastel
