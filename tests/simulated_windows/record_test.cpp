// The record of calls, the counts, and the hook.

#include <gtest/gtest.h>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/process.h"
#include "platform/search.h"
#include "platform/thread.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::Error;

TEST(Record, Calls_stand_in_order_with_path_number_and_answer) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "12345");
  windows.SetRecording(true);
  {
    const auto file =
        platform::OpenFile(QS_TEXT("C:\\f"), platform::kAccessRead, platform::kShareAll,
                           platform::Disposition::kOpenExisting, 0);
    ASSERT_TRUE(file.ok());
    char buffer[8];
    EXPECT_EQ(platform::SeekTo(file.value(), 3), Error::kNone);
    EXPECT_TRUE(platform::ReadFrom(file.value(), buffer, 8).ok());
  }
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\missing")), Error::kFileNotFound);
  const std::vector<CallRecord> record = windows.record();
  ASSERT_EQ(record.size(), 5u);
  EXPECT_EQ(record[0].call, Call::kOpenFile);
  EXPECT_EQ(record[0].path, QS_TEXT("C:\\f"));
  EXPECT_EQ(record[1].call, Call::kSeekTo);
  EXPECT_EQ(record[1].number, 3u);
  EXPECT_EQ(record[2].call, Call::kReadFrom);
  EXPECT_EQ(record[2].number, 8u);
  EXPECT_EQ(record[3].call, Call::kCloseFile);
  EXPECT_EQ(record[4].call, Call::kRemoveFile);
  EXPECT_EQ(record[4].result, Error::kFileNotFound);
  EXPECT_EQ(windows.CallCountFor(Call::kOpenFile, QS_TEXT("c:\\F")), 1u);
  EXPECT_EQ(windows.CallCountFor(Call::kOpenFile, QS_TEXT("C:\\g")), 0u);
}

TEST(Record, Counting_needs_no_recording) {
  SimulatedWindows windows;
  static_cast<void>(platform::QueryAttributes(QS_TEXT("C:\\")).ok());
  static_cast<void>(platform::TickMilliseconds());
  EXPECT_EQ(windows.CallCount(Call::kQueryAttributes), 1u);
  EXPECT_EQ(windows.CallCount(Call::kTickMilliseconds), 1u);
  EXPECT_TRUE(windows.record().empty());
  windows.ClearRecord();
  EXPECT_EQ(windows.CallCount(Call::kQueryAttributes), 0u);
}

TEST(Record, An_injected_failure_is_recorded_as_the_answer) {
  SimulatedWindows windows;
  windows.SetRecording(true);
  windows.FailCall(Call::kQueryAttributes, 1, Repeat::kOnce, Error::kNotReady);
  EXPECT_FALSE(platform::QueryAttributes(QS_TEXT("C:\\")).ok());
  EXPECT_EQ(windows.record().at(0).result, Error::kNotReady);
}

TEST(Record, Threads_are_numbered_as_they_come) {
  SimulatedWindows windows;
  windows.SetRecording(true);
  static_cast<void>(platform::SystemFileTime());
  const auto thread = platform::StartThread(
      [](void*) noexcept { static_cast<void>(platform::SystemFileTime()); }, nullptr);
  ASSERT_TRUE(thread.ok());
  platform::JoinThread(thread.value());
  std::vector<std::uint64_t> clock_callers;
  for (const CallRecord& call : windows.record()) {
    if (call.call == Call::kSystemFileTime) {
      clock_callers.push_back(call.thread);
    }
  }
  EXPECT_EQ(clock_callers, (std::vector<std::uint64_t>{0, 1}));
}

TEST(Record, Every_kind_of_call_has_a_name) {
  EXPECT_STREQ(NameOf(Call::kFullPathName), "FullPathName");
  EXPECT_STREQ(NameOf(Call::kProcessorCount), "ProcessorCount");
  EXPECT_STREQ(NameOf(Call::kQueryOperationsAborted), "QueryOperationsAborted");
  EXPECT_STREQ(NameOf(Call::kCount), "unknown call");
}

TEST(Record, Switching_thread_notifications_off_is_recorded_and_needs_no_machine) {
  platform::DisableThreadNotifications(nullptr);
  const SimulatedWindows windows;
  platform::DisableThreadNotifications(nullptr);
  EXPECT_EQ(windows.CallCount(Call::kDisableThreadNotifications), 1u);
}

TEST(Hook, It_comes_before_the_call_and_may_change_the_machine) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  windows.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kRemoveFile && call.path == QS_TEXT("C:\\f")) {
      windows.SetAttributes(call.path, platform::kAttributeReadOnly);
    }
  });
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\f")), Error::kAccessDenied);
  EXPECT_TRUE(windows.Exists(QS_TEXT("C:\\f")));
}

TEST(Hook, What_it_does_is_neither_hooked_nor_counted_nor_failed) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  int calls = 0;
  bool inner_worked = false;
  windows.SetHook([&](const CallRecord&) {
    ++calls;
    inner_worked = platform::QueryFileFacts(QS_TEXT("C:\\f")).ok();
  });
  windows.FailAnyCall(1, Repeat::kFromThenOn);
  EXPECT_FALSE(platform::QueryAttributes(QS_TEXT("C:\\f")).ok());
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(inner_worked);
  EXPECT_EQ(windows.CallCount(Call::kQueryFileFacts), 0u);
  EXPECT_EQ(windows.faults_injected(), 1u);
}

TEST(Hook, It_may_take_itself_away) {
  SimulatedWindows windows;
  int calls = 0;
  windows.SetHook([&](const CallRecord&) {
    ++calls;
    windows.SetHook(nullptr);
  });
  static_cast<void>(platform::ProcessorCount());
  static_cast<void>(platform::ProcessorCount());
  EXPECT_EQ(calls, 1);
}

TEST(Hook, A_file_that_goes_during_a_listing_is_not_listed) {
  SimulatedWindows windows;
  for (const auto* path : {QS_TEXT("C:\\d\\a"), QS_TEXT("C:\\d\\b"), QS_TEXT("C:\\d\\c")}) {
    windows.AddFile(path, "x");
  }
  platform::FindData entry{};
  const auto search = platform::FindFirst(QS_TEXT("C:\\d\\?"), entry);
  ASSERT_TRUE(search.ok());
  while (Text(entry.name) != QS_TEXT("a")) {
    ASSERT_EQ(platform::FindNext(search.value(), entry), Error::kNone);
  }
  windows.Remove(QS_TEXT("C:\\d\\b"));
  windows.AddFile(QS_TEXT("C:\\d\\d"), "x");
  EXPECT_EQ(platform::FindNext(search.value(), entry), Error::kNone);
  EXPECT_EQ(Text(entry.name), QS_TEXT("c"));
  EXPECT_EQ(platform::FindNext(search.value(), entry), Error::kNone);
  EXPECT_EQ(Text(entry.name), QS_TEXT("d"));
  EXPECT_EQ(platform::FindNext(search.value(), entry), Error::kNoMoreFiles);
}

TEST(Inside, The_thread_is_inside_only_during_a_call) {
  SimulatedWindows windows;
  EXPECT_FALSE(InsideSimulation());
  bool inside = false;
  windows.SetHook([&](const CallRecord&) { inside = InsideSimulation(); });
  static_cast<void>(platform::ProcessorCount());
  EXPECT_TRUE(inside);
  EXPECT_FALSE(InsideSimulation());
}

}  // namespace
}  // namespace quastel::simulated
