#include "frame/busy_flag.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quastel {
namespace {

TEST(BusyFlag, The_first_comer_enters_and_the_second_is_refused) {
  BusyFlag flag;
  EXPECT_TRUE(flag.TryEnter());
  EXPECT_FALSE(flag.TryEnter());
  EXPECT_FALSE(flag.TryEnter());
}

TEST(BusyFlag, Leaving_lets_the_next_one_in) {
  BusyFlag flag;
  ASSERT_TRUE(flag.TryEnter());
  flag.Leave();
  EXPECT_TRUE(flag.TryEnter());
}

TEST(BusyFlag, Two_flags_are_independent) {
  BusyFlag first;
  BusyFlag second;
  EXPECT_TRUE(first.TryEnter());
  EXPECT_TRUE(second.TryEnter());
}

TEST(BusyFlag, A_scope_leaves_at_its_end) {
  BusyFlag flag;
  ASSERT_TRUE(flag.TryEnter());
  {
    const BusyScope scope(flag);
    EXPECT_FALSE(flag.TryEnter());
  }
  EXPECT_TRUE(flag.TryEnter());
}

TEST(BusyFlag, A_scope_leaves_when_an_exception_passes_through) {
  BusyFlag flag;
  ASSERT_TRUE(flag.TryEnter());
  EXPECT_THROW(
      {
        const BusyScope scope(flag);
        throw std::runtime_error("inside");
      },
      std::runtime_error);
  EXPECT_TRUE(flag.TryEnter());
}

TEST(BusyFlag, One_of_many_threads_enters_at_a_time) {
  BusyFlag flag;
  int inside = 0;  // not atomic: the flag alone must keep the threads apart
  std::atomic<int> entries{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 2000; ++round) {
        if (!flag.TryEnter()) {
          continue;
        }
        const BusyScope scope(flag);
        ++inside;
        entries.fetch_add(1);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(inside, entries.load());
  EXPECT_GT(inside, 0);
}

}  // namespace
}  // namespace quastel
