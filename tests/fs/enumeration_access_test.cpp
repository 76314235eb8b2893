// Which system calls a file walk makes: every one of them counts in a tree of a million files.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>

#include "platform/search.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calls.h"
#include "support/walk.h"

namespace quastel {
namespace {

using platform::Error;
using platform::SearchOperation;
using simulated::Call;
using simulated::CallRecord;
using simulated::Repeat;
using simulated::SimulatedWindows;
using support::CallsOf;
using support::FileWalk;
using support::Lines;
using support::RunWalk;
using support::WalkResult;

class EnumerationAccess : public ::testing::Test {
 protected:
  EnumerationAccess() {
    for (const qs_char* path : {u"C:\\t\\a\\1.txt", u"C:\\t\\a\\2.log", u"C:\\t\\a\\x\\3.txt",
                                u"C:\\t\\b\\4.txt", u"C:\\t\\5.txt"}) {
      windows_.AddFile(path, "");
    }
    windows_.SetRecording(true);
  }

  WalkResult Walk(const qs_char* pattern, std::uint32_t recursive = 1) {
    windows_.ClearRecord();
    const WalkResult result =
        RunWalk(FileWalk{.root = Text(u"C:\\t"), .pattern = Text(pattern), .recursive = recursive});
    EXPECT_EQ(result.status, QS_OK);
    return result;
  }

  // "0 C:\t\*": the search operation and what was searched for.
  Lines BasicSearches() {
    Lines out;
    for (const CallRecord& call : windows_.record()) {
      if (call.call == Call::kFindFirstBasic) {
        out.push_back(std::to_string(call.number) + " " + support::Utf8(call.path));
      }
    }
    return out;
  }

  const Lines all_ = {"C:\\t\\5.txt", "C:\\t\\b\\4.txt", "C:\\t\\a\\1.txt", "C:\\t\\a\\2.log",
                      "C:\\t\\a\\x\\3.txt"};
  const Lines texts_ = {"C:\\t\\5.txt", "C:\\t\\b\\4.txt", "C:\\t\\a\\1.txt", "C:\\t\\a\\x\\3.txt"};
  SimulatedWindows windows_;
};

static_assert(static_cast<std::uint32_t>(SearchOperation::kNameMatch) == 0);
static_assert(static_cast<std::uint32_t>(SearchOperation::kLimitToDirectories) == 1);

TEST_F(EnumerationAccess, Each_folder_is_listed_once_by_a_name_match) {
  EXPECT_EQ(Walk(u"*").paths(), all_);
  EXPECT_EQ(BasicSearches(),
            (Lines{"0 C:\\t\\*", "0 C:\\t\\b\\*", "0 C:\\t\\a\\*", "0 C:\\t\\a\\x\\*"}));
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 0u);
}

TEST_F(EnumerationAccess, A_patterned_walk_lists_each_folder_twice) {
  EXPECT_EQ(Walk(u"*.txt").paths(), texts_);
  EXPECT_EQ(BasicSearches(), (Lines{"0 C:\\t\\*.txt", "1 C:\\t\\*", "0 C:\\t\\b\\*.txt",
                                    "1 C:\\t\\b\\*", "0 C:\\t\\a\\*.txt", "1 C:\\t\\a\\*",
                                    "0 C:\\t\\a\\x\\*.txt", "1 C:\\t\\a\\x\\*"}));
  EXPECT_EQ(windows_.CallCountFor(Call::kFindFirst, u"C:\\t\\*"), 0u);
}

TEST_F(EnumerationAccess, Without_recursion_a_folder_is_listed_once_even_with_a_pattern) {
  Walk(u"*", 0);
  EXPECT_EQ(BasicSearches(), Lines{"0 C:\\t\\*"});
  Walk(u"*.txt", 0);
  EXPECT_EQ(BasicSearches(), Lines{"0 C:\\t\\*.txt"});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 0u);
}

TEST_F(EnumerationAccess, Only_the_very_star_is_walked_in_a_single_pass) {
  Walk(u"**", 1);
  EXPECT_EQ(BasicSearches().front(), "0 C:\\t\\**");
  EXPECT_EQ(BasicSearches().size(), 8u);
  Walk(u"*.*", 1);
  EXPECT_EQ(BasicSearches().size(), 8u);
}

TEST_F(EnumerationAccess, The_listing_is_all_that_is_asked_about_a_file) {
  Walk(u"*");
  EXPECT_EQ(CallsOf(windows_, {Call::kQueryAttributes, Call::kQueryFileFacts, Call::kOpenFile,
                               Call::kFullPathName}),
            Lines{"QueryAttributes C:\\t"});
  Walk(u"*.txt");
  EXPECT_EQ(CallsOf(windows_, {Call::kQueryAttributes, Call::kQueryFileFacts, Call::kOpenFile,
                               Call::kFullPathName}),
            Lines{"QueryAttributes C:\\t"});
}

TEST_F(EnumerationAccess, A_walk_makes_no_call_but_those_of_the_listing_and_the_time) {
  Walk(u"*");
  std::map<std::string, int> counts;
  for (const CallRecord& call : windows_.record()) {
    ++counts[simulated::NameOf(call.call)];
  }
  // One call an entry: the first comes with the search, but the end takes one more. Four folders
  // hold two dots each, five files and three subfolders; in each is a file whose time is asked for.
  EXPECT_EQ(counts, (std::map<std::string, int>{{"QueryAttributes", 1},
                                                {"FindFirstBasic", 4},
                                                {"FindNext", 4 * 2 + 5 + 3},
                                                {"FindClose", 4},
                                                {"ToLocalFileTime", 4}}));
}

TEST_F(EnumerationAccess, One_search_is_open_at_a_time) {
  for (const qs_char* pattern : {u"*", u"*.txt"}) {
    bool open = false;
    windows_.SetHook([&open](const CallRecord& call) {
      if (call.call == Call::kFindFirstBasic || call.call == Call::kFindFirst) {
        EXPECT_FALSE(open);
        open = true;
      } else if (call.call == Call::kFindClose) {
        EXPECT_TRUE(open);
        open = false;
      }
    });
    Walk(pattern);
    EXPECT_FALSE(open);
  }
  EXPECT_EQ(windows_.most_open_searches(), 1u);
  EXPECT_EQ(windows_.open_handles(), 0u);
}

TEST_F(EnumerationAccess, A_folder_search_that_is_refused_is_tried_once_in_the_plain_way) {
  windows_.FailCall(Call::kFindFirstBasic, 2, Repeat::kOnce, Error::kInvalidParameter);
  EXPECT_EQ(Walk(u"*.txt").paths(), texts_);
  const Lines searches = CallsOf(windows_, {Call::kFindFirstBasic, Call::kFindFirst});
  ASSERT_GE(searches.size(), 3u);
  EXPECT_EQ(
      Lines(searches.begin(), searches.begin() + 3),
      (Lines{"FindFirstBasic C:\\t\\*.txt", "FindFirstBasic C:\\t\\*", "FindFirst C:\\t\\*"}));
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 1u);
}

TEST_F(EnumerationAccess, A_folder_pass_that_is_refused_both_ways_is_skipped) {
  windows_.FailCall(Call::kFindFirstBasic, 2);
  windows_.FailCall(Call::kFindFirst, 1);
  EXPECT_EQ(Walk(u"*.txt").paths(), Lines{"C:\\t\\5.txt"});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 1u);
  EXPECT_EQ(windows_.open_handles(), 0u);
}

TEST_F(EnumerationAccess, A_file_pass_that_is_refused_is_skipped_and_not_tried_again) {
  windows_.FailCall(Call::kFindFirstBasic, 1);
  EXPECT_EQ(Walk(u"*.txt").paths(),
            (Lines{"C:\\t\\b\\4.txt", "C:\\t\\a\\1.txt", "C:\\t\\a\\x\\3.txt"}));
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 0u);
}

TEST_F(EnumerationAccess, A_single_pass_that_is_refused_is_not_tried_again) {
  windows_.FailCall(Call::kFindFirstBasic, 1);
  EXPECT_EQ(Walk(u"*").paths(), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 0u);
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 1u);
}

TEST_F(EnumerationAccess, A_system_that_lists_files_as_folders_changes_nothing) {
  const Lines before = Walk(u"*.txt").paths();
  const std::size_t searches = BasicSearches().size();
  windows_.SetDirectoryLimitHonoured(false);
  EXPECT_EQ(Walk(u"*.txt").paths(), before);
  EXPECT_EQ(BasicSearches().size(), searches) << "no file was searched as if it were a folder";
}

TEST_F(EnumerationAccess, The_root_is_asked_for_once_in_the_caller_s_spelling) {
  windows_.ClearRecord();
  RunWalk(FileWalk{.root = Text(u"c:/T/./")});
  EXPECT_EQ(CallsOf(windows_, {Call::kQueryAttributes}), Lines{"QueryAttributes c:/T/./"});
  EXPECT_EQ(support::SearchesOf(windows_).front(), "c:/T/./\\*");
}

}  // namespace
}  // namespace quastel
