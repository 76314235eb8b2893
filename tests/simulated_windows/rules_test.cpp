// Rules of Windows that the contract tests cannot show under Wine: limits of paths, wildcards that
// may match nothing, denials, links.

#include <gtest/gtest.h>

#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/process.h"
#include "platform/search.h"
#include "platform/shell.h"
#include "platform/volume.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::Error;
using platform::QueryAttributes;

Text NamesFor(const Text& pattern) {
  Text names;
  platform::FindData entry{};
  const auto search = platform::FindFirst(pattern.c_str(), entry);
  for (Error next = search.error(); next == Error::kNone;
       next = platform::FindNext(search.value(), entry)) {
    const Text name = entry.name;
    names += name == QS_TEXT(".") || name == QS_TEXT("..") ? Text() : name + QS_TEXT(" ");
  }
  return names;
}

platform::Result<platform::FileHandle> Open(const Text& path, std::uint32_t access,
                                            platform::Disposition disposition) {
  return platform::OpenFile(path.c_str(), access, platform::kShareAll, disposition, 0);
}

// A path of exactly `length` code units.
Text PathOfLength(std::size_t length) {
  Text path = QS_TEXT("C:");
  while (path.size() + 41 < length) {
    path += QS_TEXT("\\") + Text(30, Char{'d'});
  }
  path += QS_TEXT("\\");
  return path + Text(length - path.size(), Char{'f'});
}

TEST(PathLimit, Without_the_prefix_259_code_units_are_the_most) {
  SimulatedWindows windows;
  windows.AddFile(PathOfLength(259), "x");
  windows.AddFile(PathOfLength(260), "x");
  EXPECT_TRUE(QueryAttributes(PathOfLength(259).c_str()).ok());
  EXPECT_EQ(QueryAttributes(PathOfLength(260).c_str()).error(), Error::kPathNotFound);
  EXPECT_TRUE(QueryAttributes((QS_TEXT("\\\\?\\") + PathOfLength(260)).c_str()).ok());
}

TEST(PathLimit, A_folder_is_made_with_247_code_units_at_the_most) {
  SimulatedWindows windows;
  EXPECT_EQ(platform::CreateFolderTree(PathOfLength(247).c_str()), Error::kNone);
  EXPECT_EQ(platform::CreateFolderTree(PathOfLength(248).c_str()), Error::kFilenameTooLong);
}

TEST(LongPrefix, Nothing_is_normalised_behind_it) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\d\\f"), "x");
  EXPECT_TRUE(QueryAttributes(QS_TEXT("C:/d/./f")).ok());
  EXPECT_FALSE(QueryAttributes(QS_TEXT("\\\\?\\C:/d/f")).ok());
  EXPECT_EQ(QueryAttributes(QS_TEXT("\\\\?\\C:\\d/f")).error(), Error::kInvalidName);
  EXPECT_EQ(QueryAttributes(QS_TEXT("\\\\?\\C:\\d\\.\\f")).error(), Error::kInvalidName);
  EXPECT_EQ(QueryAttributes(QS_TEXT("\\\\?\\C:\\d\\\\f")).error(), Error::kInvalidName);
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\d\\\\*")), QS_TEXT("f "));
  EXPECT_EQ(NamesFor(QS_TEXT("\\\\?\\C:\\d\\\\*")), QS_TEXT(""));
}

TEST(LongPrefix, Only_there_a_name_can_end_in_a_dot) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f."), "x");
  EXPECT_EQ(QueryAttributes(QS_TEXT("C:\\f.")).error(), Error::kFileNotFound);
  EXPECT_TRUE(QueryAttributes(QS_TEXT("\\\\?\\C:\\f.")).ok());
}

TEST(TrailingSeparator, A_file_with_one_is_an_invalid_name) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  EXPECT_EQ(QueryAttributes(QS_TEXT("C:\\f\\")).error(), Error::kInvalidName);
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\f\\")), Error::kInvalidName);
}

class WildcardRules : public testing::Test {
 protected:
  WildcardRules() {
    for (const auto* path :
         {QS_TEXT("C:\\A"), QS_TEXT("C:\\AB"), QS_TEXT("C:\\ABC"), QS_TEXT("C:\\A.TXT"),
          QS_TEXT("C:\\AB.TXT"), QS_TEXT("C:\\ABC.TXT"), QS_TEXT("C:\\A.B.C")}) {
      windows_.AddFile(path, "x");
    }
  }
  SimulatedWindows windows_;
};

TEST_F(WildcardRules, A_star_and_a_final_dot_match_names_without_extension) {
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\*.")), QS_TEXT("A AB ABC "));
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\a*.")), QS_TEXT("A AB ABC "));
}

TEST_F(WildcardRules, A_question_mark_at_the_end_matches_one_or_no_character) {
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\a?")), QS_TEXT("A AB "));
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\???")), QS_TEXT("A AB ABC "));
}

TEST_F(WildcardRules, A_question_mark_before_a_dot_matches_one_or_no_character) {
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\a?.txt")), QS_TEXT("A.TXT AB.TXT "));
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\??.t??")), QS_TEXT("A.TXT AB.TXT "));
}

TEST_F(WildcardRules, A_dot_before_a_wildcard_matches_the_end_of_a_name_as_well) {
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\a.*")), QS_TEXT("A A.B.C A.TXT "));
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\a.???")), QS_TEXT("A A.TXT "));
}

TEST_F(WildcardRules, A_star_before_a_dot_goes_up_to_the_last_dot) {
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\*.c")), QS_TEXT("A.B.C "));
  EXPECT_EQ(NamesFor(QS_TEXT("C:\\*.b.c")), QS_TEXT("A.B.C "));
}

TEST_F(WildcardRules, The_limit_to_folders_is_honoured_unless_it_is_switched_off) {
  windows_.AddFolder(QS_TEXT("C:\\folder"));
  const auto first = [] {
    platform::FindData entry{};
    const auto search = platform::FindFirstBasic(
        QS_TEXT("C:\\*"), platform::SearchOperation::kLimitToDirectories, entry);
    EXPECT_TRUE(search.ok());
    return Text(entry.name);
  };
  EXPECT_EQ(first(), QS_TEXT("folder"));
  windows_.SetDirectoryLimitHonoured(false);
  EXPECT_EQ(first(), QS_TEXT("A"));
}

TEST(Listing, A_file_is_no_folder_to_list) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  platform::FindData entry{};
  EXPECT_EQ(platform::FindFirst(QS_TEXT("C:\\f\\*"), entry).error(), Error::kDirectory);
}

TEST(Denials, Each_kind_denies_its_own_calls_alone) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\d\\f"), "x");
  const auto state = [] {
    platform::FindData entry{};
    const Error listing = platform::FindFirst(QS_TEXT("C:\\d\\*"), entry).error();
    const Error querying = QueryAttributes(QS_TEXT("C:\\d\\f")).error();
    const Error opening =
        Open(QS_TEXT("C:\\d\\f"), platform::kAccessRead, platform::Disposition::kOpenExisting)
            .error();
    return std::vector<bool>{listing == Error::kAccessDenied, querying == Error::kAccessDenied,
                             opening == Error::kAccessDenied};
  };
  EXPECT_EQ(state(), (std::vector<bool>{false, false, false}));
  Denial denial;
  denial.listing = true;
  windows.Deny(QS_TEXT("C:\\d"), denial);
  EXPECT_EQ(state(), (std::vector<bool>{true, false, false}));
  denial = {};
  windows.Deny(QS_TEXT("C:\\d"), denial);
  denial.querying = true;
  windows.Deny(QS_TEXT("C:\\d\\f"), denial);
  EXPECT_EQ(state(), (std::vector<bool>{false, true, false}));
  denial = {};
  denial.opening = true;
  windows.Deny(QS_TEXT("C:\\d\\f"), denial);
  EXPECT_EQ(state(), (std::vector<bool>{false, false, true}));
  denial = {};
  denial.deleting = true;
  windows.Deny(QS_TEXT("C:\\d\\f"), denial);
  EXPECT_EQ(state(), (std::vector<bool>{false, false, false}));
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\d\\f")), Error::kAccessDenied);
}

TEST(ReadOnly, Neither_writing_nor_removing_nor_replacing_is_allowed) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x", {platform::kAttributeReadOnly, 1});
  windows.AddFile(QS_TEXT("C:\\g"), "y");
  windows.AddFolder(QS_TEXT("C:\\d"));
  windows.SetAttributes(QS_TEXT("C:\\d"), platform::kAttributeReadOnly);
  const std::string before = windows.Describe();
  for (const auto how :
       {platform::Disposition::kOpenExisting, platform::Disposition::kCreateAlways}) {
    EXPECT_EQ(Open(QS_TEXT("C:\\f"), platform::kAccessWrite, how).error(), Error::kAccessDenied);
  }
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\f")), Error::kAccessDenied);
  EXPECT_EQ(platform::RemoveFolder(QS_TEXT("C:\\d")), Error::kAccessDenied);
  EXPECT_EQ(platform::RenameFile(QS_TEXT("C:\\g"), QS_TEXT("C:\\f"), 1), Error::kAccessDenied);
  EXPECT_EQ(windows.Describe(), before);
}

TEST(Rename, The_spelling_alone_can_change) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\name"), "x");
  EXPECT_EQ(platform::RenameFile(QS_TEXT("C:\\name"), QS_TEXT("C:\\NAME"), 0), Error::kNone);
  EXPECT_EQ(windows.Find(QS_TEXT("C:\\name"))->name, QS_TEXT("NAME"));
}

TEST(Rename, A_file_stays_on_its_drive_and_a_folder_outside_itself) {
  SimulatedWindows windows;
  windows.AddDrive('D');
  windows.AddFile(QS_TEXT("C:\\d\\f"), "x");
  EXPECT_EQ(platform::RenameFile(QS_TEXT("C:\\d\\f"), QS_TEXT("D:\\f"), 0), Error{17});
  EXPECT_EQ(platform::RenameFile(QS_TEXT("C:\\d"), QS_TEXT("C:\\d\\e"), 0),
            Error::kSharingViolation);
}

TEST(CurrentFolder, It_cannot_be_removed) {
  SimulatedWindows windows;
  windows.AddFolder(QS_TEXT("C:\\here"));
  windows.SetCurrentFolder(QS_TEXT("C:\\here"));
  EXPECT_EQ(platform::RemoveFolder(QS_TEXT("C:\\here")), Error::kSharingViolation);
}

TEST(Utf8, Half_of_a_surrogate_pair_does_not_fit) {
  const SimulatedWindows windows;
  Char buffer[1];
  EXPECT_EQ(platform::DecodeUtf8("\xF0\x9F\x98\x80", 4, buffer, 1).error(),
            Error::kInsufficientBuffer);
}

TEST(Volumes, Type_and_seek_penalty_are_what_was_given) {
  SimulatedWindows windows;
  windows.AddDrive('D', {platform::kDriveRemovable, SeekPenaltyAnswer::kPenalty});
  windows.AddDrive('E', {platform::kDriveFixed, SeekPenaltyAnswer::kShort});
  windows.AddDrive('F', {platform::kDriveFixed, SeekPenaltyAnswer::kFails});
  windows.AddShare(QS_TEXT("\\\\s\\share"));
  EXPECT_EQ(platform::QueryDriveType(QS_TEXT("D:\\")), platform::kDriveRemovable);
  EXPECT_EQ(platform::QueryDriveType(QS_TEXT("\\\\s\\share\\")), platform::kDriveRemote);
  EXPECT_EQ(platform::QueryDriveType(QS_TEXT("D:\\x\\")), platform::kDriveNoRoot);
  const auto ask = [](const Text& device) {
    const auto open = Open(device, platform::kAccessQuery, platform::Disposition::kOpenExisting);
    EXPECT_TRUE(open.ok());
    return platform::QuerySeekPenalty(open.value());
  };
  EXPECT_FALSE(ask(QS_TEXT("\\\\.\\C:")).value().incurs_seek_penalty);
  EXPECT_EQ(ask(QS_TEXT("\\\\.\\C:")).value().bytes_returned, 12u);
  EXPECT_TRUE(ask(QS_TEXT("\\\\.\\D:")).value().incurs_seek_penalty);
  EXPECT_EQ(ask(QS_TEXT("\\\\.\\E:")).value().bytes_returned, 8u);
  EXPECT_FALSE(ask(QS_TEXT("\\\\.\\F:")).ok());
}

TEST(Volumes, The_volume_of_a_share_is_its_root) {
  SimulatedWindows windows;
  windows.AddShare(QS_TEXT("\\\\s\\share"));
  Char buffer[32];
  EXPECT_EQ(platform::VolumePathName(QS_TEXT("\\\\s\\share\\a\\b"), buffer, 32), Error::kNone);
  EXPECT_EQ(Text(buffer), QS_TEXT("\\\\s\\share\\"));
  EXPECT_EQ(platform::VolumePathName(QS_TEXT("C:\\a"), buffer, 3), Error::kFilenameTooLong);
  EXPECT_NE(platform::VolumePathName(QS_TEXT("Q:\\a"), buffer, 32), Error::kNone);
}

}  // namespace
}  // namespace quastel::simulated
