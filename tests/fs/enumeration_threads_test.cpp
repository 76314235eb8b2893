// Walks on several threads at once.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <thread>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::SimulatedWindows;
using support::FileWalk;
using support::FolderWalk;
using support::RunWalk;
using support::WalkResult;

class EnumerationThreads : public ::testing::Test {
 protected:
  EnumerationThreads() {
    for (int folder = 0; folder < 10; ++folder) {
      for (int file = 0; file < 20; ++file) {
        windows_.AddFile(u"C:\\t\\d" + support::Wide(std::to_string(folder)) + u"\\f" +
                             support::Wide(std::to_string(file)),
                         "");
      }
    }
  }
  SimulatedWindows windows_;
};

TEST_F(EnumerationThreads, Every_callback_runs_on_the_thread_that_called) {
  windows_.SetRecording(true);
  std::set<std::thread::id> seen;
  std::thread::id caller;
  std::thread([&] {
    caller = std::this_thread::get_id();
    RunWalk(FileWalk{.root = Text(u"C:\\t"), .after_file = [&seen](std::size_t) {
                       seen.insert(std::this_thread::get_id());
                     }});
    RunWalk(FolderWalk{.root = Text(u"C:\\t"), .after_folder = [&seen](std::size_t) {
                         seen.insert(std::this_thread::get_id());
                       }});
  }).join();
  EXPECT_EQ(seen, std::set<std::thread::id>{caller});
  for (const simulated::CallRecord& call : windows_.record()) {
    EXPECT_EQ(call.thread, 0u) << "one thread alone asked the system";
  }
}

TEST_F(EnumerationThreads, Walks_at_the_same_time_do_not_disturb_each_other) {
  const WalkResult alone = RunWalk(FileWalk{.root = Text(u"C:\\t")});
  ASSERT_EQ(alone.files.size(), 200u);
  std::vector<WalkResult> results(4);
  std::uint32_t shared_flag = 0;
  std::vector<std::thread> threads;
  for (WalkResult& result : results) {
    threads.emplace_back([&result, &shared_flag] {
      result = RunWalk(FileWalk{.root = Text(u"C:\\t"), .cancel = &shared_flag});
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const WalkResult& result : results) {
    EXPECT_EQ(result, alone);
  }
}

TEST_F(EnumerationThreads, A_flag_set_by_another_thread_stops_every_walk_that_shares_it) {
  alignas(std::atomic_ref<std::uint32_t>::required_alignment) std::uint32_t flag = 0;
  std::atomic<int> waiting{0};
  std::vector<WalkResult> results(3);
  std::vector<std::thread> threads;
  for (WalkResult& result : results) {
    threads.emplace_back([&] {
      result = RunWalk(
          FileWalk{.root = Text(u"C:\\t"), .cancel = &flag, .after_file = [&](std::size_t count) {
                     if (count != 5) {
                       return;
                     }
                     ++waiting;
                     while (std::atomic_ref<std::uint32_t>(flag).load() == 0) {
                       std::this_thread::yield();
                     }
                   }});
    });
  }
  while (waiting.load() != 3) {
    std::this_thread::yield();
  }
  std::atomic_ref<std::uint32_t>(flag).store(1);
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const WalkResult& result : results) {
    EXPECT_EQ(result.status, QS_CANCELLED);
    EXPECT_EQ(result.files.size(), 5u);
  }
  EXPECT_EQ(windows_.open_handles(), 0u);
}

TEST_F(EnumerationThreads, What_was_written_before_the_flag_is_seen_after_the_cancel) {
  alignas(std::atomic_ref<std::uint32_t>::required_alignment) std::uint32_t flag = 0;
  int written = 0;  // not atomic: the flag must order it
  std::atomic<bool> started{false};
  WalkResult result;
  std::thread walker([&] {
    do {
      result = RunWalk(FileWalk{.root = Text(u"C:\\t"), .cancel = &flag});
      started = true;
    } while (result.status == QS_OK);
    EXPECT_EQ(written, 42);
  });
  while (!started.load()) {
    std::this_thread::yield();
  }
  written = 42;
  std::atomic_ref<std::uint32_t>(flag).store(1);
  walker.join();
  EXPECT_EQ(result.status, QS_CANCELLED);
}

}  // namespace
}  // namespace quastel
