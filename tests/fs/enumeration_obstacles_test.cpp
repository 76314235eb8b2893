// Roots that cannot be walked, links of every kind, and folders that cannot be listed.

#include <gtest/gtest.h>

#include <cstdint>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/walk.h"

namespace quastel {
namespace {

using platform::Error;
using simulated::Call;
using simulated::CallRecord;
using simulated::LinkKind;
using simulated::Repeat;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::Lines;
using support::RunWalk;
using support::WalkResult;

struct ObstaclePasses : support::NamedCase {
  const qs_char* pattern;
};

constexpr ObstaclePasses kObstaclePasses[] = {
    {{"Single_pass"}, u"*"},
    {{"Patterned"}, u"*.*"},
};

// Everything here holds for the single pass and for the two passes of a pattern.
class EnumerationObstacles : public ::testing::TestWithParam<ObstaclePasses> {
 protected:
  Lines Walk(const Text& root) {
    const WalkResult result = RunWalk(FileWalk{.root = root, .pattern = Text(GetParam().pattern)});
    EXPECT_EQ(result.status, QS_OK);
    EXPECT_EQ(windows_.open_handles(), 0u);
    EXPECT_LE(windows_.most_open_searches(), 1u);
    return result.paths();
  }

  SimulatedWindows windows_;
};

INSTANTIATE_TEST_SUITE_P(Enumeration, EnumerationObstacles, ::testing::ValuesIn(kObstaclePasses),
                         support::CaseName());

// The system takes "a." in the middle of a path for "a".
TEST_P(EnumerationObstacles, A_folder_that_leads_to_its_neighbour_is_not_entered) {
  windows_.AddFile(u"C:\\large\\x.y", "a");
  windows_.AddLink(LinkKind::kJunction, u"C:\\t\\a", u"C:\\large");
  windows_.AddFile(u"\\\\?\\C:\\t\\a.\\x.y", "b");
  windows_.AddFile(u"C:\\t\\b\\x.y", "c");
  windows_.AddFolder(u"\\\\?\\C:\\t\\b.");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\b\\x.y"});
  EXPECT_EQ(Walk(u"\\\\?\\C:\\t"), (Lines{"\\\\?\\C:\\t\\b\\x.y", "\\\\?\\C:\\t\\a.\\x.y"}));
}

TEST_P(EnumerationObstacles, Folders_that_lead_to_their_neighbours_do_not_double_the_walk) {
  Text folder = u"C:\\t";
  for (int depth = 0; depth < 40; ++depth) {
    windows_.AddFolder(u"\\\\?\\" + folder + u"\\a.");
    folder += u"\\a";
  }
  windows_.AddFile(folder + u"\\x.y", "a");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{support::Utf8(folder + u"\\x.y")});
}

// Within a path the system leaves a blank where it is; at its end it does not.
TEST_P(EnumerationObstacles, A_folder_whose_name_ends_in_a_blank_is_listed_where_it_is_meant) {
  for (const std::size_t length : {10u, 244u, 245u, 246u, 247u, 248u, 249u}) {
    SCOPED_TRACE(length);
    const Text neighbour = support::NestedTo(length - 1, u"C:\\t");
    windows_.AddFile(u"C:\\large\\x.y", "a");
    windows_.AddLink(LinkKind::kJunction, neighbour, u"C:\\large");
    windows_.AddFile(u"\\\\?\\" + neighbour + u" \\x.y", "b");
    const Lines found = Walk(u"C:\\t");
    if (length < 248) {
      const Text path = neighbour + u" \\x.y";
      EXPECT_EQ(found, Lines{support::Utf8(path.size() < 248 ? path : u"\\\\?\\" + path)});
    } else {
      EXPECT_EQ(found, Lines{}) << "as long as that, it is the end of a path that is resolved";
    }
    windows_.Remove(neighbour);
    windows_.Remove(u"\\\\?\\" + neighbour + u" \\x.y");
    windows_.Remove(u"\\\\?\\" + neighbour + u" ");
  }
}

TEST_P(EnumerationObstacles, A_root_whose_name_ends_in_a_blank_is_no_way_through_a_junction) {
  windows_.AddFile(u"C:\\large\\x.y", "a");
  windows_.AddFile(u"C:\\t\\x.y", "b");
  windows_.AddLink(LinkKind::kJunction, u"\\\\?\\C:\\t ", u"C:\\large");
  EXPECT_EQ(Walk(u"C:\\t "), Lines{});
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\x.y"});
  windows_.AddFile(u"\\\\?\\C:\\u \\x.y", "c");
  EXPECT_EQ(Walk(u"\\\\?\\C:\\u "), Lines{"\\\\?\\C:\\u \\x.y"});
}

TEST_P(EnumerationObstacles, A_missing_root_is_an_empty_walk) {
  EXPECT_EQ(Walk(u"C:\\nowhere"), Lines{});
  EXPECT_EQ(Walk(u"Q:\\"), Lines{});
  EXPECT_EQ(Walk(u"\\\\nobody\\share"), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 0u);
}

TEST_P(EnumerationObstacles, A_root_that_is_a_file_is_an_empty_walk) {
  windows_.AddFile(u"C:\\a.txt", "a");
  EXPECT_EQ(Walk(u"C:\\a.txt"), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 0u);
}

TEST_P(EnumerationObstacles, A_root_that_is_a_reparse_point_is_an_empty_walk) {
  windows_.AddFile(u"C:\\target\\a.txt", "a");
  windows_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\target");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\link", u"C:\\target");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\file link", u"C:\\target\\a.txt");
  windows_.AddPlaceholder(u"C:\\cloud", 5);
  for (const qs_char* root : {u"C:\\junction", u"C:\\link", u"C:\\file link", u"C:\\cloud"}) {
    EXPECT_EQ(Walk(root), Lines{});
  }
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 0u);
}

TEST_P(EnumerationObstacles, A_root_whose_attributes_cannot_be_read_is_an_empty_walk) {
  windows_.AddFile(u"C:\\t\\a.txt", "a");
  windows_.Deny(u"C:\\t", {.querying = true});
  EXPECT_EQ(Walk(u"C:\\t"), Lines{});
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 0u);
}

TEST_P(EnumerationObstacles, A_junction_is_neither_reported_nor_entered) {
  windows_.AddFile(u"C:\\large\\a\\b.txt", "b");
  windows_.AddFile(u"C:\\t\\own.txt", "o");
  windows_.AddLink(LinkKind::kJunction, u"C:\\t\\junction", u"C:\\large");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\own.txt"});
}

TEST_P(EnumerationObstacles, A_folder_link_is_neither_reported_nor_entered) {
  windows_.AddFile(u"C:\\large\\b.txt", "b");
  windows_.AddFile(u"C:\\t\\own.txt", "o");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\t\\link", u"C:\\large");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\own.txt"});
}

TEST_P(EnumerationObstacles, A_link_back_to_its_own_folder_ends_no_walk_in_a_circle) {
  windows_.AddFile(u"C:\\t\\own.txt", "o");
  windows_.AddLink(LinkKind::kJunction, u"C:\\t\\circle", u"C:\\t");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\own.txt"});
}

TEST_P(EnumerationObstacles, A_file_link_is_not_reported) {
  windows_.AddFile(u"C:\\t\\own.txt", "o");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\t\\link.txt", u"C:\\t\\own.txt");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\own.txt"});
}

TEST_P(EnumerationObstacles, A_cloud_placeholder_is_not_reported) {
  windows_.AddFile(u"C:\\t\\own.txt", "o");
  windows_.AddPlaceholder(u"C:\\t\\cloud.txt", 1000);
  windows_.AddPlaceholder(u"C:\\t\\sub\\cloud.txt", 1000);
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\own.txt"});
}

TEST_P(EnumerationObstacles, Hidden_system_and_offline_entries_are_reported) {
  windows_.AddFile(u"C:\\t\\1", "", {.attributes = platform::kAttributeHidden});
  windows_.AddFile(u"C:\\t\\2", "",
                   {.attributes = platform::kAttributeSystem | platform::kAttributeReadOnly});
  windows_.AddFile(u"C:\\t\\3", "", {.attributes = platform::kAttributeOffline});
  windows_.AddFile(u"C:\\t\\4", "", {.attributes = platform::kAttributeNormal});
  windows_.AddFolder(u"C:\\t\\5", {platform::kAttributeHidden | platform::kAttributeSystem, 0});
  windows_.AddFile(u"C:\\t\\5\\x", "");
  EXPECT_EQ(Walk(u"C:\\t"), (Lines{"C:\\t\\1", "C:\\t\\2", "C:\\t\\3", "C:\\t\\4", "C:\\t\\5\\x"}));
}

TEST_P(EnumerationObstacles, An_entry_with_invalid_attributes_is_not_taken_for_a_reparse_point) {
  windows_.AddFolder(u"C:\\t\\odd", {platform::kAttributesInvalid, 0});
  windows_.AddFile(u"C:\\t\\odd\\x", "");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\odd\\x"});
}

TEST_P(EnumerationObstacles, A_folder_that_denies_listing_is_passed_over) {
  windows_.AddFile(u"C:\\t\\a\\1", "");
  windows_.AddFile(u"C:\\t\\b\\2", "");
  windows_.AddFile(u"C:\\t\\b\\sub\\3", "");
  windows_.AddFile(u"C:\\t\\c\\4", "");
  windows_.Deny(u"C:\\t\\b", {.listing = true});
  EXPECT_EQ(Walk(u"C:\\t"), (Lines{"C:\\t\\c\\4", "C:\\t\\a\\1"}));
}

TEST_P(EnumerationObstacles, A_root_that_denies_listing_is_an_empty_walk) {
  windows_.AddFile(u"C:\\t\\a", "");
  windows_.Deny(u"C:\\t", {.listing = true});
  EXPECT_EQ(Walk(u"C:\\t"), Lines{});
}

TEST_P(EnumerationObstacles, A_file_that_can_be_neither_opened_nor_queried_is_reported) {
  windows_.AddFile(u"C:\\t\\a", "123");
  windows_.Deny(u"C:\\t\\a", {.opening = true, .deleting = true, .querying = true});
  windows_.Lock(u"C:\\t\\a");
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\a"});
}

TEST_P(EnumerationObstacles, A_folder_that_vanishes_before_it_is_listed_is_passed_over) {
  windows_.AddFile(u"C:\\t\\a\\1", "");
  windows_.AddFile(u"C:\\t\\b\\2", "");
  windows_.AddFile(u"C:\\t\\c\\3", "");
  windows_.SetHook([this](const CallRecord& call) {
    if (call.call == Call::kFindFirstBasic && call.path.find(u"C:\\t\\c") == 0 &&
        windows_.Exists(u"C:\\t\\b")) {
      windows_.Remove(u"C:\\t\\b");
    }
  });
  EXPECT_EQ(Walk(u"C:\\t"), (Lines{"C:\\t\\c\\3", "C:\\t\\a\\1"}));
}

TEST_P(EnumerationObstacles, A_folder_that_becomes_a_file_before_it_is_listed_is_passed_over) {
  windows_.AddFile(u"C:\\t\\a\\1", "");
  windows_.AddFile(u"C:\\t\\b\\2", "");
  windows_.SetHook([this](const CallRecord& call) {
    if (call.call == Call::kFindFirstBasic && call.path.find(u"C:\\t\\b") == 0 &&
        windows_.Exists(u"C:\\t\\a\\1")) {
      windows_.Remove(u"C:\\t\\a");
      windows_.AddFile(u"C:\\t\\a", "now a file");
    }
  });
  EXPECT_EQ(Walk(u"C:\\t"), Lines{"C:\\t\\b\\2"});
}

TEST_P(EnumerationObstacles, A_root_that_vanishes_after_its_check_is_an_empty_walk) {
  windows_.AddFile(u"C:\\t\\a", "");
  windows_.SetHook([this](const CallRecord& call) {
    if (call.call == Call::kFindFirstBasic && windows_.Exists(u"C:\\t")) {
      windows_.Remove(u"C:\\t");
    }
  });
  EXPECT_EQ(Walk(u"C:\\t"), Lines{});
}

TEST_P(EnumerationObstacles, Every_listing_that_fails_to_open_is_an_empty_walk) {
  windows_.AddFile(u"C:\\t\\a\\1", "");
  windows_.AddFile(u"C:\\t\\2", "");
  windows_.FailCall(Call::kFindFirstBasic, 1, Repeat::kFromThenOn, Error::kFilenameTooLong);
  windows_.FailCall(Call::kFindFirst, 1, Repeat::kFromThenOn, Error::kFilenameTooLong);
  EXPECT_EQ(Walk(u"C:\\t"), Lines{});
}

class SinglePassObstacles : public ::testing::Test {
 protected:
  SimulatedWindows windows_;
};

TEST_F(SinglePassObstacles, A_listing_that_breaks_off_ends_its_folder_and_not_the_walk) {
  for (const qs_char* path : {u"C:\\t\\a\\1", u"C:\\t\\b", u"C:\\t\\c", u"C:\\t\\d\\2"}) {
    windows_.AddFile(path, "");
  }
  // The entries of the root: ".", "..", "a", "b", "c", "d".
  windows_.FailCall(Call::kFindNext, 4, Repeat::kOnce, Error::kAccessDenied);
  const WalkResult result = RunWalk(FileWalk{.root = Text(u"C:\\t")});
  EXPECT_EQ(result.status, QS_OK);
  EXPECT_EQ(result.paths(), (Lines{"C:\\t\\b", "C:\\t\\a\\1"}));
  EXPECT_EQ(windows_.open_handles(), 0u);
}

TEST_F(SinglePassObstacles, The_entries_of_one_listing_leave_nothing_behind_for_the_next) {
  windows_.AddSizedFile(u"C:\\t\\a-very-long-name-comes-first.txt", 0xFFFFFFFFFF);
  windows_.AddFile(u"C:\\t\\b\\x", "1");
  const WalkResult result = RunWalk(FileWalk{.root = Text(u"C:\\t")});
  ASSERT_EQ(result.files.size(), 2u);
  EXPECT_EQ(result.files[1].name, "x");
  EXPECT_EQ(result.files[1].size, 1u);
}

}  // namespace
}  // namespace quastel
