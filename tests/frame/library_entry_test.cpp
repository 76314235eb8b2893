#include <gtest/gtest.h>

#include "simulated_windows/simulated_windows.h"

extern "C" int DllMain(void* module, unsigned long reason, void* reserved);

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;

constexpr unsigned long kProcessDetach = 0;
constexpr unsigned long kProcessAttach = 1;
constexpr unsigned long kThreadAttach = 2;
constexpr unsigned long kThreadDetach = 3;

TEST(LibraryEntry, Attaching_switches_thread_notifications_off_once) {
  SimulatedWindows windows;
  int module = 0;
  EXPECT_EQ(DllMain(&module, kProcessAttach, nullptr), 1);
  EXPECT_EQ(windows.CallCount(Call::kDisableThreadNotifications), 1u);
}

TEST(LibraryEntry, Other_reasons_succeed_and_do_nothing) {
  SimulatedWindows windows;
  windows.SetRecording(true);
  int module = 0;
  for (const unsigned long reason : {kProcessDetach, kThreadAttach, kThreadDetach, 4ul, ~0ul}) {
    EXPECT_EQ(DllMain(&module, reason, nullptr), 1) << reason;
    EXPECT_EQ(DllMain(&module, reason, &module), 1) << reason;
  }
  EXPECT_TRUE(windows.record().empty());
}

TEST(LibraryEntry, Attaching_asks_the_system_for_nothing_else) {
  SimulatedWindows windows;
  windows.SetRecording(true);
  int module = 0;
  EXPECT_EQ(DllMain(&module, kProcessAttach, nullptr), 1);
  ASSERT_EQ(windows.record().size(), 1u);
  EXPECT_EQ(windows.record()[0].call, Call::kDisableThreadNotifications);
}

}  // namespace
}  // namespace quastel
