#include <gtest/gtest.h>

#include "contract/machine.h"
#include "contract/seam_use.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::Error;
using platform::kMoveReplaceExisting;
using platform::kMoveWriteThrough;
using platform::RenameFile;

TEST(RenameContract, A_file_takes_its_new_name) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "content");
  const Text to = machine.Path(QS_TEXT("To.txt"));
  EXPECT_EQ(RenameFile(from.c_str(), to.c_str(), 0), Error::kNone);
  EXPECT_FALSE(machine.Exists(from));
  EXPECT_EQ(machine.ContentOf(to), "content");
  EXPECT_EQ(NamesFor(machine.Path(QS_TEXT("*"))), std::vector<Text>{QS_TEXT("To.txt")});
}

TEST(RenameContract, It_keeps_its_time) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "x");
  machine.SetLastWrite(from, 130'000'000'000'000'010);
  const Text to = machine.Path(QS_TEXT("to"));
  ASSERT_EQ(RenameFile(from.c_str(), to.c_str(), 0), Error::kNone);
  EXPECT_EQ(platform::QueryFileFacts(to.c_str()).value().last_write, 130'000'000'000'000'010u);
}

TEST(RenameContract, An_existing_file_is_replaced_only_on_demand) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "new");
  const Text to = machine.MakeFile(QS_TEXT("to"), "old");
  EXPECT_EQ(RenameFile(from.c_str(), to.c_str(), 0), Error::kAlreadyExists);
  EXPECT_EQ(machine.ContentOf(to), "old");
  EXPECT_EQ(machine.ContentOf(from), "new");
  EXPECT_EQ(RenameFile(from.c_str(), to.c_str(), kMoveReplaceExisting | kMoveWriteThrough),
            Error::kNone);
  EXPECT_EQ(machine.ContentOf(to), "new");
  EXPECT_FALSE(machine.Exists(from));
}

// Wine 8 leaves the old spelling.
TEST(RenameContract, A_new_spelling_of_the_same_name_is_no_other_file) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("name"), "x");
  EXPECT_EQ(RenameFile(from.c_str(), machine.Path(QS_TEXT("NAME")).c_str(), 0), Error::kNone);
  EXPECT_EQ(machine.ContentOf(from), "x");
  EXPECT_EQ(NamesFor(machine.Path(QS_TEXT("*"))).size(), 1u);
}

TEST(RenameContract, Missing_names_fail) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "x");
  const auto rename = [&](TextView a, TextView b) {
    return RenameFile(machine.Path(a).c_str(), machine.Path(b).c_str(), kMoveReplaceExisting);
  };
  EXPECT_EQ(rename(QS_TEXT("missing"), QS_TEXT("to")), Error::kFileNotFound);
  EXPECT_EQ(rename(QS_TEXT("from"), QS_TEXT("missing\\to")), Error::kPathNotFound);
  EXPECT_TRUE(machine.Exists(from));
}

TEST(RenameContract, A_folder_is_never_replaced) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "x");
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  EXPECT_EQ(RenameFile(from.c_str(), folder.c_str(), kMoveReplaceExisting), Error::kAccessDenied);
  EXPECT_TRUE(machine.Exists(from));
}

TEST(RenameContract, A_file_open_without_delete_sharing_keeps_its_name) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "x");
  const Text to = machine.Path(QS_TEXT("to"));
  machine.Lock(from, platform::kShareRead | platform::kShareWrite);
  EXPECT_EQ(RenameFile(from.c_str(), to.c_str(), 0), Error::kSharingViolation);
  EXPECT_TRUE(machine.Exists(from));
}

TEST(RenameContract, A_target_that_is_open_is_not_replaced) {
  Machine machine;
  const Text from = machine.MakeFile(QS_TEXT("from"), "new");
  const Text to = machine.MakeFile(QS_TEXT("to"), "old");
  machine.Lock(to, platform::kShareRead | platform::kShareWrite);
  EXPECT_NE(RenameFile(from.c_str(), to.c_str(), kMoveReplaceExisting), Error::kNone);
  EXPECT_EQ(machine.ContentOf(to), "old");
  EXPECT_EQ(machine.ContentOf(from), "new");
}

}  // namespace
}  // namespace quastel::contract
