#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/process.h"
#include "platform/search.h"
#include "platform/shell.h"
#include "platform/thread.h"
#include "platform/volume.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::Error;

Error Query() {
  return platform::QueryAttributes(QS_TEXT("C:\\f")).error();
}

TEST(FaultPlan, The_chosen_call_fails_once_with_the_chosen_error) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailCall(Call::kQueryAttributes, 2, Repeat::kOnce, Error::kNotReady);
  EXPECT_EQ(Query(), Error::kNone);
  EXPECT_EQ(Query(), Error::kNotReady);
  EXPECT_EQ(Query(), Error::kNone);
  EXPECT_EQ(windows.faults_injected(), 1u);
}

TEST(FaultPlan, From_then_on_means_every_later_call_of_that_kind) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailCall(Call::kQueryAttributes, 2, Repeat::kFromThenOn);
  EXPECT_EQ(Query(), Error::kNone);
  EXPECT_EQ(Query(), Error::kAccessDenied);
  EXPECT_EQ(Query(), Error::kAccessDenied);
  EXPECT_TRUE(platform::QueryFileFacts(QS_TEXT("C:\\f")).ok());
  EXPECT_EQ(windows.faults_injected(), 2u);
}

TEST(FaultPlan, Calls_of_any_kind_are_counted_together) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailAnyCall(2, Repeat::kOnce);
  EXPECT_EQ(Query(), Error::kNone);
  EXPECT_EQ(platform::QueryFileFacts(QS_TEXT("C:\\f")).error(), Error::kAccessDenied);
  EXPECT_EQ(Query(), Error::kNone);
}

TEST(FaultPlan, Any_call_may_fail_with_a_chosen_error) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailAnyCall(2, Repeat::kFromThenOn, Error::kNotReady);
  EXPECT_EQ(Query(), Error::kNone);
  EXPECT_EQ(windows.first_fault(), std::nullopt);
  EXPECT_EQ(platform::QueryFileFacts(QS_TEXT("C:\\f")).error(), Error::kNotReady);
  EXPECT_EQ(Query(), Error::kNotReady);
  EXPECT_EQ(windows.first_fault(), Call::kQueryFileFacts);
  EXPECT_EQ(windows.fallible_calls(), 3u);
  windows.ClearFaults();
  EXPECT_EQ(windows.first_fault(), std::nullopt);
  EXPECT_EQ(windows.fallible_calls(), 0u);
}

TEST(FaultPlan, Each_call_has_its_usual_error_first_and_no_error_twice) {
  for (int i = 0; i < static_cast<int>(Call::kCount); ++i) {
    const auto call = static_cast<Call>(i);
    std::vector<Error> errors = ErrorsOf(call);
    SimulatedWindows windows;
    ASSERT_FALSE(errors.empty()) << NameOf(call);
    if (call == Call::kQueryAttributes) {
      windows.FailAnyCall(1, Repeat::kOnce);
      EXPECT_EQ(Query(), errors.front());
      EXPECT_GE(errors.size(), 5u);
    }
    std::sort(errors.begin(), errors.end());
    EXPECT_EQ(std::adjacent_find(errors.begin(), errors.end()), errors.end()) << NameOf(call);
    EXPECT_EQ(std::count(errors.begin(), errors.end(), Error::kNone), 0) << NameOf(call);
  }
}

TEST(FaultPlan, Calls_that_cannot_fail_are_not_counted) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailAnyCall(1, Repeat::kOnce);
  platform::SleepMilliseconds(1);
  EXPECT_NE(platform::TickMilliseconds(), 0u);
  EXPECT_EQ(platform::ProcessorCount(), 4u);
  EXPECT_EQ(windows.faults_injected(), 0u);
  EXPECT_EQ(Query(), Error::kAccessDenied);
}

TEST(FaultPlan, Clearing_sets_the_counts_back) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailCall(Call::kQueryAttributes, 1, Repeat::kFromThenOn);
  EXPECT_NE(Query(), Error::kNone);
  windows.ClearFaults();
  EXPECT_EQ(windows.faults_injected(), 0u);
  EXPECT_EQ(Query(), Error::kNone);
  windows.ClearFaults();
  windows.FailCall(Call::kQueryAttributes, 1);
  EXPECT_NE(Query(), Error::kNone);
}

TEST(FaultPlan, A_failed_change_leaves_the_disk_as_it_was) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.AddFolder(QS_TEXT("C:\\d"));
  const std::string before = windows.Describe();
  windows.FailAnyCall(1, Repeat::kFromThenOn);
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\f")), Error::kAccessDenied);
  EXPECT_EQ(platform::RemoveFolder(QS_TEXT("C:\\d")), Error::kAccessDenied);
  EXPECT_EQ(platform::RenameFile(QS_TEXT("C:\\f"), QS_TEXT("C:\\g"), 0), Error::kAccessDenied);
  EXPECT_EQ(platform::CreateFolderTree(QS_TEXT("C:\\n")), Error::kAccessDenied);
  EXPECT_NE(platform::ShellDelete(QS_TEXT("C:\\f\0"), 0).code, 0);
  EXPECT_EQ(windows.Describe(), before);
}

TEST(FaultPlan, A_call_that_answers_by_value_fails_with_its_own_value) {
  SimulatedWindows windows;
  windows.SetEnvironment(QS_TEXT("V"), QS_TEXT("1"));
  windows.FailAnyCall(1, Repeat::kFromThenOn);
  Char buffer[16];
  EXPECT_EQ(platform::FullPathName(QS_TEXT("C:\\f"), 16, buffer), 0u);
  EXPECT_EQ(platform::EnvironmentVariable(QS_TEXT("V"), buffer, 16), 0u);
  EXPECT_EQ(platform::QueryDriveType(QS_TEXT("C:\\")), platform::kDriveUnknown);
  EXPECT_EQ(platform::CurrentThreadPriority(), platform::kPriorityError);
  EXPECT_EQ(platform::AllocateFiberSlot(nullptr), platform::kNoFiberSlot);
  EXPECT_EQ(platform::InitializeCom(), 0x80004005u);
  EXPECT_EQ(windows.faults_injected(), 6u);
}

TEST(FaultPlan, A_fiber_value_that_cannot_be_set_is_told) {
  SimulatedWindows windows;
  const std::uint32_t slot = platform::AllocateFiberSlot(nullptr);
  int value = 0;
  windows.FailCall(Call::kSetFiberValue, 1);
  EXPECT_FALSE(platform::SetFiberValue(slot, &value));
  EXPECT_EQ(platform::FiberValue(slot), nullptr);
  EXPECT_TRUE(platform::SetFiberValue(slot, &value));
  platform::FreeFiberSlot(slot);
}

TEST(FaultPlan, A_COM_call_turns_a_system_error_into_a_COM_result) {
  SimulatedWindows windows;
  windows.FailCall(Call::kInitializeCom, 1, Repeat::kOnce, Error::kAccessDenied);
  EXPECT_EQ(platform::InitializeCom(), 0x80070005u);
  windows.FailCall(Call::kInitializeCom, 2, Repeat::kOnce, Error{0x8007000E});
  EXPECT_EQ(platform::InitializeCom(), 0x8007000Eu);
}

TEST(FaultPlan, A_close_that_fails_gives_the_handle_up_nevertheless) {
  SimulatedWindows windows;
  auto file = platform::OpenFile(QS_TEXT("C:\\f"), platform::kAccessWrite, 0,
                                 platform::Disposition::kCreateAlways, 0);
  ASSERT_TRUE(file.ok());
  windows.FailCall(Call::kCloseFile, 1, Repeat::kOnce, Error::kDiskFull);
  EXPECT_EQ(platform::CloseFile(std::move(file).value()), Error::kDiskFull);
  EXPECT_EQ(windows.open_handles(), 0u);
}

TEST(FaultPlan, The_silent_close_of_a_file_is_not_counted_among_the_calls_that_fail) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.FailCall(Call::kCloseFile, 1);
  const auto open = [] {
    return platform::OpenFile(QS_TEXT("C:\\f"), platform::kAccessRead, platform::kShareAll,
                              platform::Disposition::kOpenExisting, 0);
  };
  EXPECT_TRUE(open().ok());
  EXPECT_EQ(windows.CallCount(Call::kCloseFile), 1u);
  EXPECT_EQ(windows.faults_injected(), 0u);
  EXPECT_EQ(platform::CloseFile(std::move(open()).value()), Error::kDiskFull);
  EXPECT_EQ(windows.CallCount(Call::kCloseFile), 2u);
}

TEST(FaultPlan, A_thread_that_cannot_start_does_not_run) {
  SimulatedWindows windows;
  bool ran = false;
  windows.FailCall(Call::kStartThread, 1);
  const auto thread =
      platform::StartThread([](void* r) noexcept { *static_cast<bool*>(r) = true; }, &ran);
  EXPECT_EQ(thread.error(), Error::kNotEnoughMemory);
  EXPECT_FALSE(ran);
}

TEST(Crash, Nothing_reaches_the_disk_from_the_chosen_call_on) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\a"), "a");
  windows.AddFile(QS_TEXT("C:\\b"), "b");
  windows.CrashAtCall(2);
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\a")), Error::kNone);
  const std::string at_crash = windows.Describe();
  EXPECT_NE(platform::RemoveFile(QS_TEXT("C:\\b")), Error::kNone);
  EXPECT_FALSE(platform::QueryAttributes(QS_TEXT("C:\\b")).ok());
  EXPECT_NE(platform::RenameFile(QS_TEXT("C:\\b"), QS_TEXT("C:\\c"), 0), Error::kNone);
  EXPECT_EQ(windows.Describe(), at_crash);
  EXPECT_EQ(windows.faults_injected(), 3u);
}

TEST(Crash, A_file_keeps_what_was_written_before) {
  SimulatedWindows windows;
  {
    const auto file = platform::OpenFile(QS_TEXT("C:\\f"), platform::kAccessWrite, 0,
                                         platform::Disposition::kCreateAlways, 0);
    ASSERT_TRUE(file.ok());
    windows.CrashAtCall(3);  // after the open and the first write
    EXPECT_TRUE(platform::WriteTo(file.value(), "one", 3).ok());
    EXPECT_FALSE(platform::WriteTo(file.value(), "two", 3).ok());
    EXPECT_NE(platform::FlushFile(file.value()), Error::kNone);
  }
  EXPECT_EQ(windows.ContentOf(QS_TEXT("C:\\f")), "one");
  EXPECT_EQ(windows.open_handles(), 0u);
}

TEST(Crash, After_the_restart_the_machine_works_again) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.CrashAtCall(1);
  EXPECT_FALSE(platform::QueryAttributes(QS_TEXT("C:\\f")).ok());
  windows.ClearFaults();
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("C:\\f")).ok());
}

}  // namespace
}  // namespace quastel::simulated
