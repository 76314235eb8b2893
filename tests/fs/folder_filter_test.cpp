#include "fs/folder_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "fs/path_rules.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::SimulatedWindows;
using support::Utf8;
using support::Wide;
using Names = std::vector<std::string>;

constexpr std::uint64_t kUnset = 0xABABABABABABABAB;

std::vector<const qs_char*> PointersTo(const std::vector<Text>& texts) {
  std::vector<const qs_char*> out;
  for (const Text& text : texts) {
    out.push_back(text.c_str());
  }
  return out;
}

// The kept folders, by the two calls that a caller makes; checks everything about the outputs.
Names Kept(const std::vector<Text>& input) {
  const std::vector<const qs_char*> paths = PointersTo(input);
  std::uint64_t kept = kUnset;
  std::uint64_t needed = kUnset;
  EXPECT_EQ(qs_filter_dir(paths.data(), paths.size(), nullptr, 0, &kept, &needed),
            QS_BUFFER_TOO_SMALL);
  std::vector<qs_char> buffer(needed + 1, Char{'#'});
  std::uint64_t kept_again = kUnset;
  std::uint64_t needed_again = kUnset;
  EXPECT_EQ(
      qs_filter_dir(paths.data(), paths.size(), buffer.data(), needed, &kept_again, &needed_again),
      QS_OK);
  EXPECT_EQ(kept_again, kept);
  EXPECT_EQ(needed_again, needed);
  EXPECT_EQ(buffer.back(), Char{'#'});
  EXPECT_EQ(buffer[needed - 1], Char{}) << "the list ends in a NUL of its own";

  Names out;
  std::size_t at = 0;
  for (std::uint64_t i = 0; i < kept; ++i) {
    const Text folder(&buffer[at]);
    out.push_back(Utf8(folder));
    at += folder.size() + 1;
  }
  EXPECT_EQ(at + 1, needed);
  EXPECT_EQ(Utf8(OutermostFolders(input)), out);
  return out;
}

struct FilterCase : support::NamedCase {
  std::vector<const char*> input;
  Names kept;
};

const FilterCase kFilterCases[] = {
    {{"Contained_folders_go"}, {"C:\\a\\b", "C:\\a", "c:\\A\\", "C:\\ab"}, {"C:\\a", "C:\\ab"}},
    {{"One"}, {"C:\\a"}, {"C:\\a"}},
    {{"Duplicates_collapse_to_the_first"}, {"c:\\A", "C:\\a", "C:\\a\\"}, {"c:\\A"}},
    {{"The_first_spelling_of_a_folder_stays"}, {"C:\\a\\", "C:\\a"}, {"C:\\a\\"}},
    {{"Shortest_first"}, {"C:\\long", "C:\\mid", "D:\\x"}, {"D:\\x", "C:\\mid", "C:\\long"}},
    {{"Equal_lengths_keep_their_order"}, {"C:\\b", "C:\\a", "C:\\c"}, {"C:\\b", "C:\\a", "C:\\c"}},
    {{"The_length_is_that_of_the_comparable_form"},
     {"C:\\a\\.\\..\\b", "C:\\cc", "C:\\ddd\\\\"},
     {"C:\\a\\.\\..\\b", "C:\\cc", "C:\\ddd\\\\"}},
    {{"A_drive_s_root_holds_everything_on_it"},
     {"C:\\a", "D:\\a", "C:\\", "C:\\b\\c"},
     {"C:\\", "D:\\a"}},
    {{"A_sibling_with_the_same_start_stays"}, {"C:\\ab", "C:\\a"}, {"C:\\a", "C:\\ab"}},
    {{"Slashes_and_dots"}, {"C:/a/./b", "c:\\A"}, {"c:\\A"}},
    {{"Long_form_and_plain"}, {"\\\\?\\C:\\a\\b", "C:\\a"}, {"C:\\a"}},
    {{"Plain_below_the_long_form"}, {"C:\\a\\b", "\\\\?\\C:\\a"}, {"\\\\?\\C:\\a"}},
    {{"Shares"},
     {"\\\\srv\\s\\a", "\\\\SRV\\S", "\\\\srv\\share"},
     {"\\\\SRV\\S", "\\\\srv\\share"}},
    {{"Relative"}, {"x\\y", "X", "C:\\x\\z"}, {"X"}},
    {{"A_chain"}, {"C:\\a\\b\\c\\d", "C:\\a\\b\\c", "C:\\a\\b", "C:\\a"}, {"C:\\a"}},
    {{"Empty_contains_nothing"}, {"", "C:\\a"}, {"", "C:\\a"}},
    {{"Empty_is_contained_in_nothing"}, {"C:\\", "", "C:\\a"}, {"", "C:\\"}},
    {{"Two_empty_ones_stay_both"}, {"", "C:\\a", ""}, {"", "", "C:\\a"}},
    {{"Empty_and_a_rooted_path"}, {"", "\\a"}, {"", "\\a"}},
};

class FilterDirTest : public ::testing::TestWithParam<FilterCase> {
 protected:
  SimulatedWindows windows_;
};

TEST_P(FilterDirTest, Keeps_the_outermost_folders) {
  std::vector<Text> input;
  for (const char* path : GetParam().input) {
    input.push_back(Wide(path));
  }
  EXPECT_EQ(Kept(input), GetParam().kept);
}

INSTANTIATE_TEST_SUITE_P(FilterDir, FilterDirTest, ::testing::ValuesIn(kFilterCases),
                         support::CaseName());

class FilterDir : public ::testing::Test {
 protected:
  SimulatedWindows windows_;
};

TEST_F(FilterDir, An_empty_list_is_a_single_NUL) {
  std::uint64_t kept = kUnset;
  std::uint64_t needed = kUnset;
  EXPECT_EQ(qs_filter_dir(nullptr, 0, nullptr, 0, &kept, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(kept, 0u);
  EXPECT_EQ(needed, 1u);
  qs_char out[2] = {Char{'#'}, Char{'#'}};
  EXPECT_EQ(qs_filter_dir(nullptr, 0, out, 1, &kept, &needed), QS_OK);
  EXPECT_EQ(out[0], Char{});
  EXPECT_EQ(out[1], Char{'#'});
  EXPECT_EQ(needed, 1u);
}

TEST_F(FilterDir, A_missing_list_with_a_count_is_invalid) {
  for (const std::uint64_t count : {std::uint64_t{1}, std::uint64_t{2}, UINT64_MAX}) {
    qs_char out[2] = {Char{'#'}, Char{'#'}};
    std::uint64_t kept = kUnset;
    std::uint64_t needed = kUnset;
    EXPECT_EQ(qs_filter_dir(nullptr, count, out, 2, &kept, &needed), QS_INVALID_ARGUMENT);
    EXPECT_EQ(kept, 0u);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(out[0], Char{'#'});
  }
}

TEST_F(FilterDir, A_missing_entry_is_invalid_wherever_it_stands) {
  for (std::size_t missing = 0; missing < 3; ++missing) {
    const qs_char* paths[] = {u"C:\\a", u"C:\\b", u"C:\\c"};
    paths[missing] = nullptr;
    qs_char out[64] = {Char{'#'}};
    std::uint64_t kept = kUnset;
    std::uint64_t needed = kUnset;
    EXPECT_EQ(qs_filter_dir(paths, 3, out, 64, &kept, &needed), QS_INVALID_ARGUMENT);
    EXPECT_EQ(kept, 0u);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(out[0], Char{'#'});
    EXPECT_EQ(qs_filter_dir(paths, 3, out, 64, nullptr, nullptr), QS_INVALID_ARGUMENT);
  }
}

TEST_F(FilterDir, Entries_beyond_the_count_are_not_read) {
  const qs_char* paths[] = {u"C:\\a", nullptr};
  qs_char out[64] = {};
  EXPECT_EQ(qs_filter_dir(paths, 1, out, 64, nullptr, nullptr), QS_OK);
  EXPECT_EQ(Utf8(out), "C:\\a");
}

TEST_F(FilterDir, A_buffer_that_is_too_small_still_gets_both_counts) {
  const qs_char* paths[] = {u"C:\\a", u"C:\\bb", u"C:\\a\\x"};
  qs_char out[64] = {Char{'#'}};
  std::uint64_t kept = kUnset;
  std::uint64_t needed = kUnset;
  EXPECT_EQ(qs_filter_dir(paths, 3, out, 11, &kept, &needed), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(kept, 2u);
  EXPECT_EQ(needed, 12u);
  EXPECT_EQ(out[0], Char{'#'});
  EXPECT_EQ(qs_filter_dir(paths, 3, out, 12, nullptr, nullptr), QS_OK);
  EXPECT_EQ(Utf8(TextView(out, 12)), Utf8(TextView(u"C:\\a\0C:\\bb\0", 12)));
}

TEST_F(FilterDir, The_result_equals_a_plain_comparison_of_every_pair) {
  const char* const kParts[] = {"a", "A", "b", "ab", "..", ".", ""};
  const char* const kStarts[] = {"C:\\", "c:/", "D:\\", "\\\\?\\C:\\", "", "\\\\s\\h\\"};
  std::mt19937 random(7);
  for (int round = 0; round < 1500; ++round) {
    std::vector<Text> input(random() % 9);
    for (Text& path : input) {
      path = Wide(kStarts[random() % std::size(kStarts)]);
      for (std::size_t parts = random() % 4; parts > 0; --parts) {
        path += Wide(kParts[random() % std::size(kParts)]);
        path += random() % 4 == 0 ? Char{'/'} : Char{'\\'};
      }
    }
    // An entry goes when an earlier one of the sorted list holds it: that one either stays itself
    // or lies in one that does.
    struct Entry {
      Text input;
      Text form;
    };
    std::vector<Entry> sorted;
    for (const Text& path : input) {
      sorted.push_back({path, ToComparablePath(path)});
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Entry& a, const Entry& b) { return a.form.size() < b.form.size(); });
    Names expected;
    for (std::size_t i = 0; i < sorted.size(); ++i) {
      const bool held = std::any_of(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(i),
                                    [&](const Entry& outer) {
                                      return !outer.form.empty() && !sorted[i].form.empty() &&
                                             IsPathUnder(sorted[i].form, outer.form);
                                    });
      if (!held) {
        expected.push_back(Utf8(sorted[i].input));
      }
    }
    ASSERT_EQ(Kept(input), expected) << ::testing::PrintToString(Utf8(input));
  }
}

}  // namespace
}  // namespace quastel
