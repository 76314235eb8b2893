// The exported path rules.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;
using support::NestedTo;
using support::PaddedTo;
using support::Utf8;

Text Normalized(const Text& path) {
  std::vector<qs_char> buffer(path.size() + 40000);
  std::uint64_t needed = 0;
  EXPECT_EQ(qs_normalize_path(path.c_str(), buffer.data(), buffer.size(), &needed), QS_OK);
  Text result(buffer.data());
  EXPECT_EQ(needed, result.size() + 1);
  return result;
}

Text Combined(const Text& base, const Text& relative) {
  std::vector<qs_char> buffer(base.size() + relative.size() + 2);
  std::uint64_t needed = 0;
  EXPECT_EQ(qs_path_combine(base.c_str(), relative.c_str(), buffer.data(), buffer.size(), &needed),
            QS_OK);
  Text result(buffer.data());
  EXPECT_EQ(needed, result.size() + 1);
  return result;
}

class NormalizePath : public ::testing::Test {
 protected:
  SimulatedWindows windows_;
};

TEST_F(NormalizePath, A_path_of_247_units_comes_back_unit_for_unit) {
  for (const Text& start : {Text(u"rel/./a\\..\\"), Text(u"C:/x/../"), Text(u"\\\\srv\\share\\."),
                            Text(u"c:\\MiXeD\\."), Text(u" leading and trailing ")}) {
    const Text path = PaddedTo(247, start);
    EXPECT_EQ(Utf8(Normalized(path)), Utf8(path));
  }
  EXPECT_EQ(windows_.CallCount(Call::kFullPathName), 0u) << "nothing was resolved";
}

TEST_F(NormalizePath, A_short_path_keeps_its_trailing_separators_and_dots) {
  for (const Text& path : {Text(u""), Text(u"a"), Text(u"C:\\a\\\\"), Text(u"C:/a/"),
                           Text(u"..\\."), Text(u"C:x"), Text(u"\\"), Text(u"\\\\")}) {
    EXPECT_EQ(Utf8(Normalized(path)), Utf8(path));
  }
}

TEST_F(NormalizePath, A_drive_path_of_248_units_is_resolved_and_prefixed) {
  const Text tail = support::Repeated(248 - 9, Char{'x'});
  const Text path = u"C:/a/.././" + tail.substr(1);
  ASSERT_EQ(path.size(), 248u);
  EXPECT_EQ(Utf8(Normalized(path)), Utf8(u"\\\\?\\C:\\" + tail.substr(1)));
}

TEST_F(NormalizePath, A_share_path_of_248_units_gets_the_UNC_prefix) {
  const Text path = NestedTo(248, u"\\\\srv\\share\\a\\..");
  ASSERT_EQ(path.size(), 248u);
  const Text tail = path.substr(Text(u"\\\\srv\\share\\a\\..").size());
  EXPECT_EQ(Utf8(Normalized(path)), Utf8(u"\\\\?\\UNC\\srv\\share" + tail));
}

TEST_F(NormalizePath, A_relative_path_of_248_units_is_made_absolute) {
  windows_.AddFolder(u"C:\\work\\here");
  windows_.SetCurrentFolder(u"C:\\work\\here");
  const Text path = NestedTo(248, u"..\\b");
  EXPECT_EQ(Utf8(Normalized(path)), Utf8(u"\\\\?\\C:\\work\\b" + path.substr(4)));
}

TEST_F(NormalizePath, A_long_path_s_trailing_separator_stays) {
  const Text path = NestedTo(260, u"C:") + u"\\";
  EXPECT_EQ(Utf8(Normalized(path)), Utf8(u"\\\\?\\" + path));
}

TEST_F(NormalizePath, A_prefixed_path_comes_back_unchanged_whatever_its_length_and_case) {
  for (const Text& start :
       {Text(u"\\\\?\\C:\\a\\..\\b/."), Text(u"\\\\?\\UNC\\srv\\share\\..\\"),
        Text(u"\\\\?\\unc\\SRV\\share\\."), Text(u"\\\\?\\Volume{x}\\.."), Text(u"\\\\?\\uNc\\")}) {
    for (const std::size_t length : {std::size_t{30}, std::size_t{247}, std::size_t{248},
                                     std::size_t{249}, std::size_t{1000}}) {
      const Text path = PaddedTo(length, start);
      EXPECT_EQ(Utf8(Normalized(path)), Utf8(path));
    }
  }
  EXPECT_EQ(windows_.CallCount(Call::kFullPathName), 0u);
}

TEST_F(NormalizePath, A_long_path_that_cannot_be_resolved_is_prefixed_as_given) {
  const Text drive = PaddedTo(300, u"C:\\a\\..\\");
  windows_.FailCall(Call::kFullPathName, 1);
  EXPECT_EQ(Utf8(Normalized(drive)), Utf8(u"\\\\?\\" + drive));

  const Text share = PaddedTo(300, u"\\\\srv\\share\\..\\");
  windows_.ClearFaults();
  windows_.FailCall(Call::kFullPathName, 1);
  EXPECT_EQ(Utf8(Normalized(share)), Utf8(u"\\\\?\\UNC\\" + share.substr(2)));
}

TEST_F(NormalizePath, A_long_path_is_resolved_by_one_call) {
  Normalized(NestedTo(300, u"C:"));
  EXPECT_EQ(windows_.CallCount(Call::kFullPathName), 1u);
}

TEST_F(NormalizePath, A_result_of_32767_units_is_used_and_one_more_is_not) {
  windows_.AddFolder(u"C:\\cwd");
  windows_.SetCurrentFolder(u"C:\\cwd");
  const Text fits = support::Repeated(32767 - 7, Char{'f'});
  EXPECT_EQ(Utf8(Normalized(fits)), Utf8(u"\\\\?\\C:\\cwd\\" + fits));
  const Text too_long = support::Repeated(32768 - 7, Char{'f'});
  EXPECT_EQ(Utf8(Normalized(too_long)), Utf8(u"\\\\?\\" + too_long));
}

TEST_F(NormalizePath, A_missing_path_is_invalid_and_nothing_is_written) {
  qs_char buffer[4] = {Char{'k'}, 0, 0, 0};
  EXPECT_EQ(qs_normalize_path(nullptr, buffer, 4, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_normalize_path(nullptr, nullptr, 0, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(buffer[0], Char{'k'});
}

TEST_F(NormalizePath, Without_a_buffer_the_needed_length_is_reported) {
  const Text path = NestedTo(300, u"C:");
  std::uint64_t needed = 0;
  EXPECT_EQ(qs_normalize_path(path.c_str(), nullptr, 0, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(needed, 305u);
  std::vector<qs_char> buffer(needed);
  EXPECT_EQ(qs_normalize_path(path.c_str(), buffer.data(), needed, &needed), QS_OK);
}

struct CombineCase : support::NamedCase {
  const char* base;
  const char* relative;
  const char* result;
};

constexpr CombineCase kCombines[] = {
    {{"One_separator_is_put_between"}, "C:\\a", "b", "C:\\a\\b"},
    {{"Drive_root"}, "C:\\", "x", "C:\\x"},
    {{"Base_with_a_slash"}, "C:\\a/", "b", "C:\\a\\b"},
    {{"Base_with_many_separators"}, "C:\\a\\/\\/", "b", "C:\\a\\b"},
    {{"Inner_separators_stay"}, "C:/a//b", "c/d\\\\e", "C:/a//b\\c/d\\\\e"},
    {{"Trailing_separators_of_the_relative_part_stay"}, "C:\\a", "b\\", "C:\\a\\b\\"},
    {{"Empty_base"}, "", "b", "b"},
    {{"Base_of_separators_only"}, "\\", "b", "b"},
    {{"Base_of_two_separators"}, "\\\\", "b", "b"},
    {{"Base_of_mixed_separators"}, "/\\/", "b", "b"},
    {{"Empty_relative"}, "C:\\dir\\", "", "C:\\dir\\"},
    {{"Empty_relative_and_no_separator"}, "C:\\dir", "", "C:\\dir\\"},
    {{"Both_empty"}, "", "", ""},
    {{"Separators_and_an_empty_relative"}, "\\/", "", ""},
    {{"Absolute_drive_path"}, "C:\\a", "D:\\b", "D:\\b"},
    {{"Drive_relative_path"}, "C:\\a", "C:x", "C:x"},
    {{"Drive_alone"}, "C:\\a", "D:", "D:"},
    {{"Any_unit_before_a_colon"}, "C:\\a", "1:b", "1:b"},
    {{"A_colon_in_third_place_is_relative"}, "C:\\a", "ab:c", "C:\\a\\ab:c"},
    {{"A_colon_alone_is_relative"}, "C:\\a", ":", "C:\\a\\:"},
    {{"Share_path"}, "C:\\a\\\\", "\\\\b", "\\\\b"},
    {{"Prefixed_path"}, "C:\\a", "\\\\?\\C:\\b", "\\\\?\\C:\\b"},
    {{"Leading_backslash"}, "C:\\a", "\\b", "\\b"},
    {{"Leading_slash"}, "C:\\a", "/b/", "/b/"},
    {{"Dots_stay"}, "C:\\a", "..\\b", "C:\\a\\..\\b"},
};

class PathCombineTest : public ::testing::TestWithParam<CombineCase> {};

TEST_P(PathCombineTest, Gives_the_expected_path) {
  const CombineCase& row = GetParam();
  EXPECT_EQ(Utf8(Combined(support::Wide(row.base), support::Wide(row.relative))), row.result);
}

INSTANTIATE_TEST_SUITE_P(PathCombine, PathCombineTest, ::testing::ValuesIn(kCombines),
                         support::CaseName());

TEST(PathCombine, A_missing_part_is_invalid_and_nothing_is_written) {
  qs_char buffer[4] = {Char{'k'}, 0, 0, 0};
  EXPECT_EQ(qs_path_combine(nullptr, u"b", buffer, 4, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_path_combine(u"a", nullptr, buffer, 4, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_path_combine(nullptr, nullptr, nullptr, 0, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_EQ(buffer[0], Char{'k'});
}

TEST(PathCombine, Asks_the_system_for_nothing_even_for_a_long_path) {
  SimulatedWindows windows;
  windows.SetRecording(true);
  const Text base = NestedTo(400, u"C:");
  EXPECT_EQ(Utf8(Combined(base, u"x")), Utf8(base + u"\\x"));
  EXPECT_TRUE(windows.record().empty());
}

struct ContainsCase : support::NamedCase {
  const qs_char* haystack;
  const qs_char* needle;
  std::int32_t answer;
};

constexpr ContainsCase kContains[] = {
    {{"Null_haystack"}, nullptr, u"a", 0},
    {{"Null_haystack_and_empty_needle"}, nullptr, u"", 0},
    {{"Null_haystack_and_null_needle"}, nullptr, nullptr, 0},
    {{"Null_needle"}, u"C:\\Temp", nullptr, 1},
    {{"Empty_needle"}, u"C:\\Temp", u"", 1},
    {{"Empty_needle_in_an_empty_haystack"}, u"", u"", 1},
    {{"Null_needle_in_an_empty_haystack"}, u"", nullptr, 1},
    {{"Needle_in_an_empty_haystack"}, u"", u"a", 0},
    {{"Exact_substring"}, u"C:\\Temp\\x", u"Temp", 1},
    {{"At_the_start"}, u"C:\\Temp\\x", u"C:", 1},
    {{"At_the_end"}, u"C:\\Temp\\x", u"\\x", 1},
    {{"Whole"}, u"C:\\Temp\\x", u"C:\\Temp\\x", 1},
    {{"Longer_needle"}, u"C:\\Temp", u"C:\\Temp\\", 0},
    {{"Other_case"}, u"C:\\Temp\\x", u"temp", 0},
    {{"Other_separator"}, u"C:\\Temp\\x", u"/", 0},
    {{"Across_a_name_s_border"}, u"C:\\Windows\\x", u"ows\\x", 1},
    {{"Part_of_a_name"}, u"C:\\WindowsApps", u"C:\\Windows", 1},
    {{"After_a_false_start"}, u"aaab", u"aab", 1},
};

class PathContainsTest : public ::testing::TestWithParam<ContainsCase> {};

TEST_P(PathContainsTest, Gives_the_expected_answer) {
  EXPECT_EQ(qs_path_contains(GetParam().haystack, GetParam().needle), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(PathContains, PathContainsTest, ::testing::ValuesIn(kContains),
                         support::CaseName());

struct SameCase : support::NamedCase {
  const qs_char* a;
  const qs_char* b;
  std::int32_t answer;
};

constexpr SameCase kSame[] = {
    {{"Null_first"}, nullptr, u"C:\\a", 0},
    {{"Null_second"}, u"C:\\a", nullptr, 0},
    {{"Both_null"}, nullptr, nullptr, 0},
    {{"Other_case"}, u"C:\\A\\x.txt", u"c:\\a\\y.txt", 1},
    {{"A_drive_s_root_is_its_own_parent"}, u"C:\\x", u"C:\\", 1},
    {{"Slashes"}, u"C:\\a\\b\\x", u"C:/a/b/x", 1},
    {{"Dots"}, u"C:\\a\\b\\..\\x", u"C:\\a\\.\\y", 1},
    {{"Trailing_separator"}, u"C:\\a\\x\\", u"C:\\a\\y", 1},
    {{"Relative_and_absolute"}, u"x", u"C:\\cwd\\y", 1},
    {{"Other_folder"}, u"C:\\a\\x", u"C:\\b\\x", 0},
    {{"Folder_and_its_child"}, u"C:\\a", u"C:\\a\\x", 0},
    {{"Other_drive"}, u"C:\\x", u"D:\\x", 0},
    {{"A_folder_with_the_same_start"}, u"C:\\a\\x", u"C:\\ab\\x", 0},
    {{"Letters_beyond_ASCII_keep_their_case"}, u"C:\\\u00C4\\x", u"C:\\\u00E4\\x", 0},
    {{"Same_share"}, u"\\\\Srv\\Share\\x", u"\\\\srv\\share\\y", 1},
    {{"Prefixed_and_plain"}, u"\\\\?\\C:\\a\\b", u"C:\\a\\b", 0},
    {{"Both_prefixed"}, u"\\\\?\\C:\\a\\b", u"\\\\?\\c:\\A\\c", 1},
    {{"Empty_cannot_be_resolved"}, u"", u"x", 0},
};

class SameDirectoryTest : public ::testing::TestWithParam<SameCase> {
 protected:
  SameDirectoryTest() {
    windows_.AddFolder(u"C:\\cwd");
    windows_.SetCurrentFolder(u"C:\\cwd");
  }
  SimulatedWindows windows_;
};

TEST_P(SameDirectoryTest, Gives_the_expected_answer_in_both_orders) {
  EXPECT_EQ(qs_is_in_same_directory(GetParam().a, GetParam().b), GetParam().answer);
  EXPECT_EQ(qs_is_in_same_directory(GetParam().b, GetParam().a), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(SameDirectory, SameDirectoryTest, ::testing::ValuesIn(kSame),
                         support::CaseName());

TEST(SameDirectory, A_path_that_cannot_be_resolved_is_in_no_directory) {
  for (std::uint64_t nth = 1; nth <= 4; ++nth) {
    SimulatedWindows windows;
    windows.FailCall(Call::kFullPathName, nth);
    EXPECT_EQ(qs_is_in_same_directory(u"C:\\a\\x", u"C:\\a\\y"), 0) << "call " << nth;
    EXPECT_EQ(windows.faults_injected(), 1u);
  }
}

}  // namespace
}  // namespace quastel
