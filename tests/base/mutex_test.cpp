#include "base/mutex.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace quastel {
namespace {

struct Counter {
  Mutex mutex;
  int value QS_GUARDED_BY(mutex) = 0;
};

TEST(Mutex, One_thread_at_a_time_is_inside_a_lock) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 2000;
  Counter counter;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&counter] {
      for (int round = 0; round < kRounds; ++round) {
        const MutexLock lock(counter.mutex);
        ++counter.value;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const MutexLock lock(counter.mutex);
  EXPECT_EQ(counter.value, kThreads * kRounds);
}

TEST(Mutex, The_end_of_a_lock_s_scope_lets_the_next_one_in) {
  Mutex mutex;
  { const MutexLock lock(mutex); }
  bool entered = false;
  std::thread([&mutex, &entered] {
    const MutexLock lock(mutex);
    entered = true;
  }).join();
  EXPECT_TRUE(entered);
}

}  // namespace
}  // namespace quastel
