// The machine under several threads at a time.

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "platform/clock.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/search.h"
#include "platform/thread.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

struct Work {
  std::atomic<int> next{0};
  std::atomic<int> removed{0};
  std::atomic<std::uint64_t> bytes{0};
};

Text FileNumber(int number) {
  Text path = QS_TEXT("C:\\d\\");
  path += static_cast<Char>('A' + number / 20);
  path += static_cast<Char>('a' + number % 20);
  return path;
}

void ReadListAndRemove(void* argument) noexcept {
  auto& work = *static_cast<Work*>(argument);
  for (int i = work.next++; i < 400; i = work.next++) {
    const Text path = FileNumber(i);
    {
      const auto file = platform::OpenFile(path.c_str(), platform::kAccessRead, platform::kShareAll,
                                           platform::Disposition::kOpenExisting, 0);
      char buffer[16];
      if (file.ok()) {
        work.bytes += platform::ReadFrom(file.value(), buffer, sizeof buffer).value();
      }
    }
    platform::FindData entry{};
    const auto search = platform::FindFirst(QS_TEXT("C:\\d\\*"), entry);
    for (int n = 0; search.ok() && n < 10; ++n) {
      if (platform::FindNext(search.value(), entry) != platform::Error::kNone) {
        break;
      }
    }
    work.removed += platform::RemoveFile(path.c_str()) == platform::Error::kNone ? 1 : 0;
    static_cast<void>(platform::TickMilliseconds());
    platform::SleepMilliseconds(0);
  }
}

TEST(Threads, Many_may_use_the_machine_at_once) {
  SimulatedWindows windows;
  for (int i = 0; i < 400; ++i) {
    windows.AddFile(FileNumber(i), "12345");
  }
  windows.SetRecording(true);
  std::atomic<int> hooked{0};
  windows.SetHook([&](const CallRecord&) { ++hooked; });
  Work work;
  std::vector<platform::ThreadHandle> threads;
  for (int i = 0; i < 4; ++i) {
    auto thread = platform::StartThread(ReadListAndRemove, &work);
    ASSERT_TRUE(thread.ok());
    threads.push_back(std::move(thread).value());
  }
  // The test itself watches and changes the machine meanwhile.
  for (int i = 0; i < 50; ++i) {
    windows.AddFile(QS_TEXT("C:\\other\\f"), "x");
    windows.AdvanceClock(1);
    static_cast<void>(windows.Describe());
  }
  for (const platform::ThreadHandle& thread : threads) {
    platform::JoinThread(thread);
  }
  EXPECT_EQ(work.removed.load(), 400);
  EXPECT_EQ(work.bytes.load(), 2000u);
  EXPECT_TRUE(windows.NamesIn(QS_TEXT("C:\\d")).empty());
  EXPECT_EQ(static_cast<std::size_t>(hooked.load()), windows.record().size());
  threads.clear();
  EXPECT_EQ(windows.open_handles(), 0u);
}

TEST(Threads, A_fiber_slot_outlives_the_machine) {
  std::uint32_t slot = 0;
  int value = 0;
  {
    const SimulatedWindows first;
    slot = platform::AllocateFiberSlot(nullptr);
    EXPECT_TRUE(platform::SetFiberValue(slot, &value));
  }
  const SimulatedWindows second;
  EXPECT_EQ(platform::FiberValue(slot), &value);
  platform::FreeFiberSlot(slot);
}

}  // namespace
}  // namespace quastel::simulated
