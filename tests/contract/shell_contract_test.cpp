#include "platform/shell.h"

#include <gtest/gtest.h>

#include "contract/machine.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::CreateFolderTree;
using platform::Error;
using platform::ShellDelete;

constexpr std::uint16_t kSilent = 0x4 | 0x10 | 0x400;  // silent, no confirmation, no error dialog

TEST(FolderTreeContract, Missing_parents_are_made_as_well) {
  Machine machine;
  const Text path = machine.Path(QS_TEXT("a\\b\\c"));
  EXPECT_EQ(CreateFolderTree(path.c_str()), Error::kNone);
  const auto attributes = platform::QueryAttributes(path.c_str());
  ASSERT_TRUE(attributes.ok());
  EXPECT_TRUE(platform::IsDirectory(attributes.value()));
}

TEST(FolderTreeContract, A_folder_that_is_there_is_reported) {
  Machine machine;
  const Text path = machine.MakeFolder(QS_TEXT("a"));
  EXPECT_TRUE(IsAlreadyThere(CreateFolderTree(path.c_str())));
}

TEST(FolderTreeContract, A_file_in_the_way_is_no_folder) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  const Error error = CreateFolderTree(machine.Path(QS_TEXT("f\\below")).c_str());
  EXPECT_NE(error, Error::kNone);
  EXPECT_FALSE(IsAlreadyThere(error));
}

TEST(FolderTreeContract, A_relative_path_is_refused) {
  Machine machine;
  machine.SetCurrentFolder(machine.folder());
  EXPECT_NE(CreateFolderTree(QS_TEXT("relative")), Error::kNone);
  EXPECT_FALSE(machine.Exists(machine.Path(QS_TEXT("relative"))));
}

TEST(FolderTreeContract, A_drive_that_is_missing_holds_no_folder) {
  const Machine machine;
  const Error error = CreateFolderTree(QS_TEXT("R:\\a\\b"));
  EXPECT_NE(error, Error::kNone);
  EXPECT_FALSE(IsAlreadyThere(error));
}

Text TwiceTerminated(const Text& path) {
  return path + Text(1, Char{0});
}

TEST(ShellDeleteContract, A_file_goes) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  const auto result = ShellDelete(TwiceTerminated(file).c_str(), kSilent);
  EXPECT_EQ(result.code, 0);
  EXPECT_FALSE(result.aborted);
  EXPECT_FALSE(machine.Exists(file));
}

TEST(ShellDeleteContract, Every_path_of_the_list_goes) {
  Machine machine;
  const Text a = machine.MakeFile(QS_TEXT("a"), "x");
  const Text b = machine.MakeFile(QS_TEXT("b"), "x");
  const Text kept = machine.MakeFile(QS_TEXT("c"), "x");
  EXPECT_EQ(ShellDelete(TwiceTerminated(a + Text(1, Char{0}) + b).c_str(), kSilent).code, 0);
  EXPECT_FALSE(machine.Exists(a));
  EXPECT_FALSE(machine.Exists(b));
  EXPECT_TRUE(machine.Exists(kept));
}

TEST(ShellDeleteContract, A_missing_file_is_a_failure) {
  const Machine machine;
  const auto result =
      ShellDelete(TwiceTerminated(machine.Path(QS_TEXT("missing"))).c_str(), kSilent);
  EXPECT_TRUE(result.code != 0 || result.aborted);
}

TEST(ComContract, Initialising_twice_is_a_success_that_must_be_undone_twice) {
  const Machine machine;
  EXPECT_EQ(platform::InitializeCom(), platform::kComOk);
  EXPECT_EQ(platform::InitializeCom(), platform::kComAlreadyInitialized);
  EXPECT_TRUE(platform::ComSucceeded(platform::kComAlreadyInitialized));
  platform::UninitializeCom();
  platform::UninitializeCom();
  EXPECT_EQ(platform::InitializeCom(), platform::kComOk);
  platform::UninitializeCom();
}

TEST(ComContract, Without_COM_there_is_no_file_operation) {
  const Machine machine;
  platform::FileOperation operation;
  EXPECT_FALSE(platform::ComSucceeded(platform::CreateFileOperation(operation)));
  EXPECT_FALSE(operation.valid());
}

TEST(ComContract, A_file_operation_is_made_once_COM_is_there) {
  const Machine machine;
  ASSERT_TRUE(platform::ComSucceeded(platform::InitializeCom()));
  {
    platform::FileOperation operation;
    EXPECT_TRUE(platform::ComSucceeded(platform::CreateFileOperation(operation)));
    EXPECT_TRUE(operation.valid());
  }
  platform::UninitializeCom();
}

// Wine 8 makes the operation but cannot perform it, and says so.
TEST(ComContract, A_file_operation_that_reports_a_failure_has_left_the_file) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  const Text other = machine.MakeFile(QS_TEXT("g"), "x");
  ASSERT_TRUE(platform::ComSucceeded(platform::InitializeCom()));
  bool done = false;
  {
    platform::FileOperation operation;
    platform::ShellItem item;
    bool aborted = true;
    ASSERT_TRUE(platform::ComSucceeded(platform::CreateFileOperation(operation)));
    ASSERT_TRUE(platform::ComSucceeded(platform::CreateShellItem(file.c_str(), item)));
    done = platform::ComSucceeded(platform::SetOperationFlags(operation, kSilent)) &&
           platform::ComSucceeded(platform::MarkForDeletion(operation, item)) &&
           platform::ComSucceeded(platform::PerformOperations(operation)) &&
           platform::ComSucceeded(platform::QueryOperationsAborted(operation, aborted)) && !aborted;
  }
  platform::UninitializeCom();
  EXPECT_EQ(machine.Exists(file), !done);
  EXPECT_TRUE(machine.Exists(other));
}

TEST(ComContract, An_operation_that_is_given_up_has_done_nothing) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "still here");
  ASSERT_TRUE(platform::ComSucceeded(platform::InitializeCom()));
  {
    platform::FileOperation operation;
    platform::ShellItem item;
    ASSERT_TRUE(platform::ComSucceeded(platform::CreateFileOperation(operation)));
    ASSERT_TRUE(platform::ComSucceeded(platform::CreateShellItem(file.c_str(), item)));
    static_cast<void>(platform::MarkForDeletion(operation, item));
  }
  platform::UninitializeCom();
  EXPECT_EQ(machine.ContentOf(file), "still here");
}

TEST(ComContract, A_shell_item_is_made_only_of_what_exists) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  ASSERT_TRUE(platform::ComSucceeded(platform::InitializeCom()));
  {
    platform::ShellItem item;
    EXPECT_TRUE(platform::ComSucceeded(platform::CreateShellItem(file.c_str(), item)));
    EXPECT_TRUE(item.valid());
    const Text missing = machine.Path(QS_TEXT("missing"));
    EXPECT_FALSE(platform::ComSucceeded(platform::CreateShellItem(missing.c_str(), item)));
    EXPECT_FALSE(item.valid());
  }
  platform::UninitializeCom();
}

}  // namespace
}  // namespace quastel::contract
