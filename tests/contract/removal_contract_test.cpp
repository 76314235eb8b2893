#include <gtest/gtest.h>

#include "contract/machine.h"
#include "contract/seam_use.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::Error;
using platform::RemoveFile;
using platform::RemoveFolder;

TEST(RemoveFileContract, A_file_goes) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(RemoveFile(file.c_str()), Error::kNone);
  EXPECT_FALSE(machine.Exists(file));
}

TEST(RemoveFileContract, Missing_names_fail) {
  const Machine machine;
  EXPECT_EQ(RemoveFile(machine.Path(QS_TEXT("missing")).c_str()), Error::kFileNotFound);
  EXPECT_EQ(RemoveFile(machine.Path(QS_TEXT("missing\\f")).c_str()), Error::kPathNotFound);
}

TEST(RemoveFileContract, A_folder_is_refused) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  EXPECT_EQ(RemoveFile(folder.c_str()), Error::kAccessDenied);
  EXPECT_TRUE(machine.Exists(folder));
}

TEST(RemoveFileContract, A_read_only_file_is_refused) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  machine.SetAttributes(file, platform::kAttributeReadOnly);
  EXPECT_EQ(RemoveFile(file.c_str()), Error::kAccessDenied);
  EXPECT_TRUE(machine.Exists(file));
}

TEST(RemoveFileContract, A_file_open_without_delete_sharing_is_refused) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  machine.Lock(file, platform::kShareRead | platform::kShareWrite);
  EXPECT_EQ(RemoveFile(file.c_str()), Error::kSharingViolation);
  machine.Unlock(file);
  EXPECT_EQ(RemoveFile(file.c_str()), Error::kNone);
}

TEST(RemoveFileContract, A_file_open_with_delete_sharing_goes_and_stays_readable) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "still here");
  {
    const auto open = OpenToRead(file, platform::kShareAll);
    ASSERT_TRUE(open.ok());
    EXPECT_EQ(RemoveFile(file.c_str()), Error::kNone);
    EXPECT_EQ(ReadAll(open.value()), "still here");
  }
  EXPECT_FALSE(machine.Exists(file));
}

TEST(RemoveFolderContract, An_empty_folder_goes) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  EXPECT_EQ(RemoveFolder(folder.c_str()), Error::kNone);
  EXPECT_FALSE(machine.Exists(folder));
}

TEST(RemoveFolderContract, A_separator_at_the_end_is_tolerated) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  EXPECT_EQ(RemoveFolder((folder + QS_TEXT("\\")).c_str()), Error::kNone);
  EXPECT_FALSE(machine.Exists(folder));
}

TEST(RemoveFolderContract, A_folder_with_something_in_it_is_refused) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  const Text file = machine.MakeFile(QS_TEXT("d\\f"), "x");
  EXPECT_EQ(RemoveFolder(folder.c_str()), Error::kDirectoryNotEmpty);
  EXPECT_TRUE(machine.Exists(file));
}

TEST(RemoveFolderContract, A_file_is_refused) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(RemoveFolder(file.c_str()), Error::kDirectory);
  EXPECT_TRUE(machine.Exists(file));
}

TEST(RemoveFolderContract, Missing_names_fail) {
  const Machine machine;
  EXPECT_EQ(RemoveFolder(machine.Path(QS_TEXT("missing")).c_str()), Error::kFileNotFound);
  EXPECT_EQ(RemoveFolder(machine.Path(QS_TEXT("missing\\d")).c_str()), Error::kPathNotFound);
}

TEST(RemoveFolderContract, A_folder_named_through_a_file_is_refused) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(RemoveFolder(machine.Path(QS_TEXT("f\\d")).c_str()), Error::kPathNotFound);
}

TEST(RemoveFolderContract, The_current_folder_is_refused) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("here"));
  machine.SetCurrentFolder(folder);
  EXPECT_EQ(RemoveFolder(folder.c_str()), Error::kSharingViolation);
  EXPECT_TRUE(machine.Exists(folder));
}

// Wine 8 cannot remove links to folders.
TEST(RemoveFolderContract, What_a_link_leads_to_stays_when_the_link_is_removed) {
  Machine machine;
  const Text target = machine.MakeFolder(QS_TEXT("target"));
  const Text inside = machine.MakeFile(QS_TEXT("target\\inside"), "x");
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), target);
  const Error error = RemoveFolder(link.c_str());
  EXPECT_EQ(machine.Exists(link), error != Error::kNone);
  EXPECT_TRUE(machine.Exists(inside));
}

TEST(RemoveFileContract, A_link_to_a_folder_and_what_it_leads_to_are_refused) {
  Machine machine;
  const Text target = machine.MakeFolder(QS_TEXT("target"));
  const Text inside = machine.MakeFile(QS_TEXT("target\\inside"), "x");
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), target);
  EXPECT_NE(RemoveFile(link.c_str()), Error::kNone);
  EXPECT_TRUE(machine.Exists(link));
  EXPECT_TRUE(machine.Exists(inside));
}

TEST(RemoveFileContract, A_file_with_a_separator_at_its_end_is_refused) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_NE(RemoveFile((file + QS_TEXT("\\")).c_str()), Error::kNone);
  EXPECT_TRUE(machine.Exists(file));
}

TEST(RemoveFileContract, A_name_with_wildcards_removes_nothing) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(RemoveFile(machine.Path(QS_TEXT("*")).c_str()), Error::kInvalidName);
  EXPECT_EQ(RemoveFile(machine.Path(QS_TEXT("?")).c_str()), Error::kInvalidName);
  EXPECT_TRUE(machine.Exists(file));
}

TEST(RemoveFileContract, Dots_and_blanks_at_the_end_count_with_the_long_prefix_alone) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(RemoveFile((QS_TEXT("\\\\?\\") + file + QS_TEXT(".")).c_str()), Error::kFileNotFound);
  EXPECT_TRUE(machine.Exists(file));
  EXPECT_EQ(RemoveFile((file + QS_TEXT(". .")).c_str()), Error::kNone);
  EXPECT_FALSE(machine.Exists(file));
}

TEST(RemoveFileContract, A_file_below_a_link_goes_from_the_target) {
  Machine machine;
  const Text target = machine.MakeFolder(QS_TEXT("target"));
  const Text inside = machine.MakeFile(QS_TEXT("target\\inside"), "x");
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), target);
  EXPECT_EQ(RemoveFile((link + QS_TEXT("\\inside")).c_str()), Error::kNone);
  EXPECT_FALSE(machine.Exists(inside));
}

}  // namespace
}  // namespace quastel::contract
