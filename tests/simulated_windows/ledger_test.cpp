#include <gtest/gtest.h>

#include <atomic>

#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/search.h"
#include "platform/shell.h"
#include "platform/thread.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

platform::Result<platform::FileHandle> OpenF() {
  return platform::OpenFile(QS_TEXT("C:\\f"), platform::kAccessRead, platform::kShareAll,
                            platform::Disposition::kOpenExisting, 0);
}

class LedgerDeathTest : public testing::Test {
 protected:
  LedgerDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST(Ledger, Every_kind_of_handle_is_counted_until_it_is_closed) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  {
    const auto file = OpenF();
    platform::FindData entry{};
    const auto search = platform::FindFirst(QS_TEXT("C:\\*"), entry);
    const auto thread = platform::StartThread([](void*) noexcept {}, nullptr);
    ASSERT_EQ(platform::InitializeCom(), platform::kComOk);
    platform::FileOperation operation;
    platform::ShellItem item;
    ASSERT_EQ(platform::CreateFileOperation(operation), platform::kComOk);
    ASSERT_EQ(platform::CreateShellItem(QS_TEXT("C:\\f"), item), platform::kComOk);
    EXPECT_EQ(windows.open_handles(), 5u);
    item.Reset();
    operation.Reset();
    platform::UninitializeCom();
    EXPECT_EQ(windows.open_handles(), 3u);
  }
  EXPECT_EQ(windows.open_handles(), 0u);
}

TEST(Ledger, The_highest_number_of_searches_is_kept) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  platform::FindData entry{};
  EXPECT_EQ(windows.most_open_searches(), 0u);
  { const auto one = platform::FindFirst(QS_TEXT("C:\\*"), entry); }
  EXPECT_EQ(windows.most_open_searches(), 1u);
  {
    const auto one = platform::FindFirst(QS_TEXT("C:\\*"), entry);
    const auto two = platform::FindFirst(QS_TEXT("C:\\*"), entry);
  }
  EXPECT_EQ(windows.most_open_searches(), 2u);
}

TEST(Ledger, A_failed_open_leaves_no_handle) {
  SimulatedWindows windows;
  EXPECT_FALSE(OpenF().ok());
  EXPECT_EQ(windows.open_handles(), 0u);
}

TEST(Ledger, A_thread_without_handle_is_awaited) {
  std::atomic<bool> done{false};
  {
    SimulatedWindows windows;
    windows.SetRealSleep(true);
    auto thread = platform::StartThread(
        [](void* d) noexcept {
          platform::SleepMilliseconds(20);
          *static_cast<std::atomic<bool>*>(d) = true;
        },
        &done);
    ASSERT_TRUE(thread.ok());
  }
  EXPECT_TRUE(done.load());
}

TEST_F(LedgerDeathTest, An_open_handle_at_the_end_ends_the_process) {
  EXPECT_DEATH(
      {
        platform::FileHandle leaked;
        SimulatedWindows windows;
        windows.AddFile(QS_TEXT("C:\\f"), "x");
        leaked = std::move(OpenF()).value();
      },
      "still open: file handle");
}

TEST_F(LedgerDeathTest, A_second_close_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows windows;
        windows.AddFile(QS_TEXT("C:\\f"), "x");
        auto file = OpenF();
        const platform::FileHandle copy(file.value().raw());
        file.value().Reset();
      },
      "is closed already");
}

TEST_F(LedgerDeathTest, The_use_of_a_closed_handle_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows windows;
        windows.AddFile(QS_TEXT("C:\\f"), "x");
        auto file = OpenF();
        platform::FileHandle copy(file.value().raw());
        file.value().Reset();
        char byte = 0;
        static_cast<void>(platform::ReadFrom(copy, &byte, 1).ok());
      },
      "is closed already");
}

TEST_F(LedgerDeathTest, A_handle_of_another_kind_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows windows;
        windows.AddFile(QS_TEXT("C:\\f"), "x");
        auto file = OpenF();
        platform::FindData entry{};
        const platform::SearchHandle search(file.value().raw());
        static_cast<void>(platform::FindNext(search, entry));
      },
      "is of another kind");
}

TEST_F(LedgerDeathTest, COM_that_stays_initialised_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows windows;
        static_cast<void>(platform::InitializeCom());
      },
      "COM is still initialised on 1 threads");
}

TEST_F(LedgerDeathTest, One_uninitialisation_too_many_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows windows;
        platform::UninitializeCom();
      },
      "had not initialised it");
}

TEST_F(LedgerDeathTest, An_object_that_outlives_COM_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows windows;
        static_cast<void>(platform::InitializeCom());
        platform::FileOperation operation;
        static_cast<void>(platform::CreateFileOperation(operation));
        platform::UninitializeCom();
      },
      "released after COM had been uninitialised");
}

TEST_F(LedgerDeathTest, A_seam_call_without_a_machine_ends_the_process) {
  EXPECT_DEATH(static_cast<void>(platform::QueryAttributes(QS_TEXT("C:\\")).ok()),
               "no simulated machine");
}

TEST_F(LedgerDeathTest, A_second_machine_ends_the_process) {
  EXPECT_DEATH(
      {
        SimulatedWindows one;
        SimulatedWindows two;
      },
      "another simulated machine");
}

}  // namespace
}  // namespace quastel::simulated
