// What the enumeration exports accept, and the order in which they check it.

#include <gtest/gtest.h>

#include <cstdint>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::LinkKind;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FolderWalk;
using support::Lines;
using support::RunWalk;
using support::WalkResult;

class EnumerationArguments : public ::testing::Test {
 protected:
  EnumerationArguments() {
    windows_.AddFile(u"C:\\t\\a.txt", "a");
    windows_.AddFile(u"C:\\t\\sub\\b.txt", "b");
  }
  SimulatedWindows windows_;
  std::uint32_t cancelled_ = 1;
};

TEST_F(EnumerationArguments, A_missing_or_empty_root_is_invalid) {
  EXPECT_EQ(RunWalk(FileWalk{}).status, QS_INVALID_ARGUMENT);
  EXPECT_EQ(RunWalk(FileWalk{.root = Text()}).status, QS_INVALID_ARGUMENT);
  EXPECT_EQ(RunWalk(FolderWalk{}).status, QS_INVALID_ARGUMENT);
  EXPECT_EQ(RunWalk(FolderWalk{.root = Text()}).status, QS_INVALID_ARGUMENT);
}

TEST_F(EnumerationArguments, A_missing_callback_is_invalid) {
  EXPECT_EQ(qs_enumerate_files(u"C:\\t", nullptr, 1, nullptr, nullptr, nullptr),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(
      qs_enumerate_files_ex(u"C:\\t", nullptr, 1, 0, nullptr, nullptr, nullptr, nullptr, nullptr),
      QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_enumerate_directories(u"C:\\t", nullptr, nullptr, nullptr), QS_INVALID_ARGUMENT);
}

TEST_F(EnumerationArguments, A_refused_argument_costs_no_system_call) {
  windows_.SetRecording(true);
  EXPECT_EQ(RunWalk(FileWalk{.root = Text()}).status, QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_enumerate_files(u"C:\\t", nullptr, 1, nullptr, nullptr, nullptr),
            QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_enumerate_directories(u"C:\\t", nullptr, nullptr, nullptr), QS_INVALID_ARGUMENT);
  EXPECT_TRUE(windows_.record().empty());
}

TEST_F(EnumerationArguments, Arguments_are_checked_before_the_cancel_flag) {
  EXPECT_EQ(RunWalk(FileWalk{.cancel = &cancelled_}).status, QS_INVALID_ARGUMENT);
  EXPECT_EQ(RunWalk(FolderWalk{.cancel = &cancelled_}).status, QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_enumerate_files(u"C:\\t", nullptr, 1, nullptr, nullptr, &cancelled_),
            QS_INVALID_ARGUMENT);
}

TEST_F(EnumerationArguments, A_flag_that_is_set_on_entry_cancels_without_a_callback) {
  const WalkResult result = RunWalk(FileWalk{.root = Text(u"C:\\t"), .cancel = &cancelled_});
  EXPECT_EQ(result.status, QS_CANCELLED);
  EXPECT_EQ(result.paths(), Lines{});
  EXPECT_EQ(windows_.CallCount(simulated::Call::kFindFirstBasic), 0u);
  EXPECT_EQ(RunWalk(FolderWalk{.root = Text(u"C:\\t"), .cancel = &cancelled_}),
            (support::FolderResult{QS_CANCELLED, {}}));
}

TEST_F(EnumerationArguments, The_root_is_checked_before_the_cancel_flag) {
  windows_.AddFolder(u"C:\\elsewhere");
  windows_.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\elsewhere");
  for (const Text& root : {Text(u"C:\\nowhere"), Text(u"C:\\t\\a.txt"), Text(u"C:\\junction")}) {
    EXPECT_EQ(RunWalk(FileWalk{.root = root, .cancel = &cancelled_}).status, QS_OK)
        << support::Utf8(root);
    EXPECT_EQ(RunWalk(FolderWalk{.root = root, .cancel = &cancelled_}).status, QS_OK)
        << support::Utf8(root);
  }
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\Windows"),
                             .protect_system = 1,
                             .system_root = Text(u"C:\\"),
                             .user_home = Text(u"C:\\u"),
                             .cancel = &cancelled_})
                .status,
            QS_OK);
}

TEST_F(EnumerationArguments, A_protected_root_is_dropped_before_the_cancel_flag_is_read) {
  windows_.AddFile(u"C:\\Windows\\x", "x");
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\Windows"),
                             .protect_system = 1,
                             .system_root = Text(u"C:\\"),
                             .user_home = Text(u"C:\\u"),
                             .cancel = &cancelled_})
                .status,
            QS_OK);
}

TEST_F(EnumerationArguments, Every_value_but_zero_of_the_flag_cancels_and_none_is_changed) {
  for (const std::uint32_t value : {1u, 2u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    std::uint32_t flag = value;
    EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"), .cancel = &flag}).status, QS_CANCELLED);
    EXPECT_EQ(flag, value);
  }
  std::uint32_t zero = 0;
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"), .cancel = &zero}).status, QS_OK);
  EXPECT_EQ(zero, 0u);
}

TEST_F(EnumerationArguments, A_missing_or_empty_pattern_selects_everything) {
  const Lines all = {"C:\\t\\a.txt", "C:\\t\\sub\\b.txt"};
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t")}).paths(), all);
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"), .pattern = Text()}).paths(), all);
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"), .pattern = Text(u"*")}).paths(), all);
  EXPECT_EQ(windows_.CallCount(simulated::Call::kFindFirstBasic), 6u)
      << "three walks of two folders, each listed once";
}

TEST_F(EnumerationArguments, Any_non_zero_value_asks_for_subfolders) {
  for (const std::uint32_t recursive : {1u, 2u, 0x80000000u}) {
    EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"C:\\t"), .recursive = recursive}).paths().size(), 2u);
  }
}

struct Seen {
  void* user = nullptr;
  int calls = 0;
};
Seen seen_file;
Seen seen_folder;

TEST_F(EnumerationArguments, The_user_pointer_passes_through_unchanged) {
  const qs_file_callback on_file = [](void* user, const qs_char*, std::uint64_t, std::uint64_t,
                                      const qs_char*) {
    seen_file = {user, seen_file.calls + 1};
  };
  const qs_directory_callback on_folder = [](void* user, const qs_char*) {
    seen_folder = {user, seen_folder.calls + 1};
  };
  int context = 0;
  for (void* const user : {static_cast<void*>(nullptr), static_cast<void*>(&context)}) {
    seen_file = {&seen_file, 0};
    seen_folder = {&seen_folder, 0};
    EXPECT_EQ(qs_enumerate_files(u"C:\\t", nullptr, 0, on_file, user, nullptr), QS_OK);
    EXPECT_EQ(seen_file.user, user);
    EXPECT_EQ(seen_file.calls, 1);
    EXPECT_EQ(qs_enumerate_directories(u"C:\\t", on_folder, user, nullptr), QS_OK);
    EXPECT_EQ(seen_folder.user, user);
    EXPECT_EQ(seen_folder.calls, 1);
  }
}

}  // namespace
}  // namespace quastel
