#include <gtest/gtest.h>

#include "fs/path_rules.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calls.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::LinkKind;
using simulated::SimulatedWindows;
using Lines = std::vector<std::string>;

class DirectoryExists : public ::testing::Test {
 protected:
  // Both ways to ask must agree.
  static std::int32_t Exists(const Text& path) {
    const std::int32_t answer = qs_directory_exists(path.c_str());
    EXPECT_EQ(IsRealDirectory(path), answer == 1);
    return answer;
  }

  SimulatedWindows windows_;
};

TEST_F(DirectoryExists, A_folder_exists) {
  windows_.AddFolder(u"C:\\a\\b");
  EXPECT_EQ(Exists(u"C:\\a\\b"), 1);
  EXPECT_EQ(Exists(u"c:/A/B/"), 1);
}

TEST_F(DirectoryExists, A_drive_s_root_exists) {
  EXPECT_EQ(Exists(u"C:\\"), 1);
}

TEST_F(DirectoryExists, A_share_s_folder_exists) {
  windows_.AddShare(u"\\\\srv\\share");
  windows_.AddFolder(u"\\\\srv\\share\\a");
  EXPECT_EQ(Exists(u"\\\\srv\\share\\a"), 1);
}

TEST_F(DirectoryExists, A_file_is_no_folder) {
  windows_.AddFile(u"C:\\a.txt", "a");
  EXPECT_EQ(Exists(u"C:\\a.txt"), 0);
}

TEST_F(DirectoryExists, A_missing_path_does_not_exist) {
  EXPECT_EQ(Exists(u"C:\\nowhere"), 0);
  EXPECT_EQ(Exists(u"Q:\\"), 0);
  EXPECT_EQ(Exists(u""), 0);
  EXPECT_EQ(qs_directory_exists(nullptr), 0);
}

TEST_F(DirectoryExists, A_junction_counts_as_not_existing) {
  windows_.AddFolder(u"C:\\target");
  windows_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\target");
  EXPECT_EQ(Exists(u"C:\\junction"), 0);
}

TEST_F(DirectoryExists, A_folder_link_counts_as_not_existing) {
  windows_.AddFolder(u"C:\\target");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\link", u"C:\\target");
  EXPECT_EQ(Exists(u"C:\\link"), 0);
}

TEST_F(DirectoryExists, A_file_link_is_no_folder) {
  windows_.AddFile(u"C:\\target.txt", "a");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\link.txt", u"C:\\target.txt");
  EXPECT_EQ(Exists(u"C:\\link.txt"), 0);
}

TEST_F(DirectoryExists, Other_attributes_make_no_difference) {
  windows_.AddFolder(u"C:\\a");
  windows_.SetAttributes(u"C:\\a", platform::kAttributeDirectory | platform::kAttributeHidden |
                                       platform::kAttributeSystem | platform::kAttributeReadOnly);
  EXPECT_EQ(Exists(u"C:\\a"), 1);
}

TEST_F(DirectoryExists, A_folder_whose_attributes_cannot_be_read_does_not_exist) {
  windows_.AddFolder(u"C:\\a");
  windows_.Deny(u"C:\\a", {.querying = true});
  EXPECT_EQ(Exists(u"C:\\a"), 0);
  windows_.Deny(u"C:\\a", {});
  EXPECT_EQ(Exists(u"C:\\a"), 1);
}

TEST_F(DirectoryExists, One_query_in_the_caller_s_spelling_answers_a_short_path) {
  windows_.SetRecording(true);
  qs_directory_exists(u"C:/a/../b\\");
  EXPECT_EQ(support::CallsOf(windows_, {Call::kQueryAttributes, Call::kFullPathName}),
            Lines{"QueryAttributes C:/a/../b\\"});
}

TEST_F(DirectoryExists, A_long_path_is_asked_for_in_its_long_form) {
  for (const std::size_t length :
       {std::size_t{247}, std::size_t{248}, std::size_t{261}, std::size_t{1000}}) {
    const Text path = support::NestedTo(length, u"C:");
    windows_.AddFolder(path);
    windows_.ClearRecord();
    windows_.SetRecording(true);
    EXPECT_EQ(qs_directory_exists(path.c_str()), 1) << length;
    EXPECT_EQ(support::CallsOf(windows_, {Call::kQueryAttributes}),
              Lines{"QueryAttributes " + support::Utf8(length < 248 ? path : u"\\\\?\\" + path)});
  }
}

}  // namespace
}  // namespace quastel
