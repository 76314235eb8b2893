// The listing of a folder's immediate subfolders.

#include <gtest/gtest.h>

#include <cstdint>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calls.h"
#include "support/walk.h"

namespace quastel {
namespace {

using platform::Error;
using simulated::Call;
using simulated::CallRecord;
using simulated::LinkKind;
using simulated::SimulatedWindows;
using support::FolderResult;
using support::FolderWalk;
using support::Lines;
using support::RunWalk;

class EnumerateDirectories : public ::testing::Test {
 protected:
  Lines List(const Text& root) {
    const FolderResult result = RunWalk(FolderWalk{.root = root});
    EXPECT_EQ(result.status, QS_OK);
    EXPECT_EQ(windows_.open_handles(), 0u);
    return result.paths;
  }

  SimulatedWindows windows_;
};

TEST_F(EnumerateDirectories, Three_subfolders_and_five_files_call_back_three_times) {
  for (const qs_char* name : {u"a", u"b", u"c"}) {
    windows_.AddFile(u"C:\\t\\" + Text(name) + u"\\below\\f", "");
  }
  for (int i = 0; i < 5; ++i) {
    windows_.AddFile(u"C:\\t\\f" + support::Wide(std::to_string(i)), "");
  }
  windows_.SetRecording(true);
  EXPECT_EQ(List(u"C:\\t"), (Lines{"C:\\t\\a", "C:\\t\\b", "C:\\t\\c"}));
  EXPECT_EQ(
      support::CallsOf(windows_, {Call::kFindFirst, Call::kFindFirstBasic, Call::kQueryAttributes}),
      (Lines{"QueryAttributes C:\\t", "FindFirst C:\\t\\*"}))
      << "one listing in the plain way, and no descent";
}

TEST_F(EnumerateDirectories, Subfolders_come_in_listing_order) {
  for (const qs_char* name : {u"b", u"C", u"a", u"_", u"1"}) {
    windows_.AddFolder(u"C:\\t\\" + Text(name));
  }
  Lines expected;
  for (const Text& name : windows_.NamesIn(u"C:\\t")) {
    expected.push_back("C:\\t\\" + support::Utf8(name));
  }
  EXPECT_EQ(List(u"C:\\t"), expected);
}

TEST_F(EnumerateDirectories, A_missing_root_or_a_file_is_an_empty_listing) {
  windows_.AddFile(u"C:\\a.txt", "");
  EXPECT_EQ(List(u"C:\\nowhere"), Lines{});
  EXPECT_EQ(List(u"C:\\a.txt"), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 0u);
}

TEST_F(EnumerateDirectories, A_root_that_is_a_reparse_point_is_an_empty_listing) {
  windows_.AddFolder(u"C:\\target\\sub");
  windows_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\target");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\link", u"C:\\target");
  EXPECT_EQ(List(u"C:\\junction"), Lines{});
  EXPECT_EQ(List(u"C:\\link"), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 0u);
}

TEST_F(EnumerateDirectories, Links_are_not_reported) {
  windows_.AddFolder(u"C:\\target\\sub");
  windows_.AddFolder(u"C:\\t\\own");
  windows_.AddLink(LinkKind::kJunction, u"C:\\t\\junction", u"C:\\target");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\t\\link", u"C:\\target");
  EXPECT_EQ(List(u"C:\\t"), Lines{"C:\\t\\own"});
}

TEST_F(EnumerateDirectories, An_entry_with_invalid_attributes_is_not_taken_for_a_reparse_point) {
  windows_.AddFolder(u"C:\\t\\odd", {platform::kAttributesInvalid, 0});
  EXPECT_EQ(List(u"C:\\t"), Lines{"C:\\t\\odd"});
}

TEST_F(EnumerateDirectories, A_subfolder_that_denies_everything_is_reported) {
  windows_.AddFolder(u"C:\\t\\a");
  windows_.Deny(u"C:\\t\\a",
                {.listing = true, .opening = true, .deleting = true, .querying = true});
  EXPECT_EQ(List(u"C:\\t"), Lines{"C:\\t\\a"});
}

TEST_F(EnumerateDirectories, Protected_folders_are_reported_too) {
  windows_.AddFolder(u"C:\\Windows");
  windows_.AddFolder(u"C:\\Users");
  EXPECT_EQ(List(u"C:\\"), (Lines{"C:\\\\Users", "C:\\\\Windows"}));
}

TEST_F(EnumerateDirectories, A_root_that_denies_listing_is_an_empty_listing) {
  windows_.AddFolder(u"C:\\t\\a");
  windows_.Deny(u"C:\\t", {.listing = true});
  EXPECT_EQ(List(u"C:\\t"), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirst), 1u);
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 0u);
}

TEST_F(EnumerateDirectories, A_root_whose_attributes_cannot_be_read_is_an_empty_listing) {
  windows_.AddFolder(u"C:\\t\\a");
  windows_.Deny(u"C:\\t", {.querying = true});
  EXPECT_EQ(List(u"C:\\t"), Lines{});
}

TEST_F(EnumerateDirectories, A_root_that_vanishes_after_its_check_is_an_empty_listing) {
  windows_.AddFolder(u"C:\\t\\a");
  windows_.SetHook([this](const CallRecord& call) {
    if (call.call == Call::kFindFirst) {
      windows_.Remove(u"C:\\t");
    }
  });
  EXPECT_EQ(List(u"C:\\t"), Lines{});
}

TEST_F(EnumerateDirectories, A_listing_that_breaks_off_keeps_what_was_found) {
  for (const qs_char* path : {u"C:\\t\\a", u"C:\\t\\b", u"C:\\t\\c"}) {
    windows_.AddFolder(path);
  }
  windows_.FailCall(Call::kFindNext, 4, simulated::Repeat::kOnce, Error::kAccessDenied);
  EXPECT_EQ(List(u"C:\\t"), (Lines{"C:\\t\\a", "C:\\t\\b"}));
}

TEST_F(EnumerateDirectories, The_root_keeps_the_caller_s_spelling) {
  windows_.AddFolder(u"C:\\Tree\\Sub");
  EXPECT_EQ(List(u"c:/tree"), Lines{"c:/tree\\Sub"});
  EXPECT_EQ(List(u"c:/tree/"), Lines{"c:/tree/\\Sub"});
  windows_.SetCurrentFolder(u"C:\\Tree");
  EXPECT_EQ(List(u"."), Lines{".\\Sub"});
}

TEST_F(EnumerateDirectories, An_empty_folder_has_no_subfolders) {
  EXPECT_EQ(List(u"C:\\"), Lines{});
  windows_.AddFolder(u"C:\\t");
  EXPECT_EQ(List(u"C:\\t"), Lines{});
}

}  // namespace
}  // namespace quastel
