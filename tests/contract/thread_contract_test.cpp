#include "platform/thread.h"

#include <gtest/gtest.h>

#include <atomic>

#include "contract/machine.h"

namespace quastel::contract {
namespace {

using platform::StartThread;
using platform::ThreadHandle;

TEST(ThreadContract, A_joined_thread_has_done_its_work) {
  const Machine machine;
  int value = 0;
  const auto thread = StartThread([](void* v) noexcept { *static_cast<int*>(v) = 42; }, &value);
  ASSERT_TRUE(thread.ok());
  platform::JoinThread(thread.value());
  EXPECT_EQ(value, 42);
  platform::JoinThread(thread.value());  // once more is no harm
}

TEST(ThreadContract, A_thread_runs_on_without_its_handle) {
  const Machine machine;
  std::atomic<int> stage{0};
  {
    auto thread = StartThread(
        [](void* s) noexcept {
          auto& state = *static_cast<std::atomic<int>*>(s);
          while (state.load() == 0) {
            platform::SleepMilliseconds(1);
          }
          state = 2;
        },
        &stage);
    ASSERT_TRUE(thread.ok());
  }
  stage = 1;
  for (int i = 0; i < 1'000'000 && stage.load() != 2; ++i) {
    platform::SleepMilliseconds(1);
  }
  EXPECT_EQ(stage.load(), 2);
}

TEST(ThreadContract, A_thread_has_its_own_priority_that_begins_as_normal) {
  const Machine machine;
  std::int32_t seen[3] = {-100, -100, -100};
  const auto thread = StartThread(
      [](void* s) noexcept {
        auto* const values = static_cast<std::int32_t*>(s);
        values[0] = platform::CurrentThreadPriority();
        platform::SetCurrentThreadPriority(-1);
        values[1] = platform::CurrentThreadPriority();
        platform::SetCurrentThreadPriority(77);  // there is no such priority
        values[2] = platform::CurrentThreadPriority();
      },
      seen);
  ASSERT_TRUE(thread.ok());
  platform::JoinThread(thread.value());
  EXPECT_EQ(seen[0], platform::kPriorityNormal);
  EXPECT_EQ(seen[1], -1);
  EXPECT_EQ(seen[2], -1);
  EXPECT_EQ(platform::CurrentThreadPriority(), platform::kPriorityNormal);
}

std::atomic<int> destroyed{0};

void CountDestroyed(void* value) {
  destroyed += *static_cast<int*>(value);
}

TEST(FiberSlotContract, A_slot_holds_a_value_for_each_thread) {
  const Machine machine;
  destroyed = 0;
  const std::uint32_t slot = platform::AllocateFiberSlot(CountDestroyed);
  ASSERT_NE(slot, platform::kNoFiberSlot);
  EXPECT_EQ(platform::FiberValue(slot), nullptr);
  int own = 1;
  EXPECT_TRUE(platform::SetFiberValue(slot, &own));
  EXPECT_EQ(platform::FiberValue(slot), &own);

  struct Other {
    std::uint32_t slot;
    int value;
    bool began_empty;
  } other{slot, 10, false};
  const auto thread = StartThread(
      [](void* o) noexcept {
        auto& mine = *static_cast<Other*>(o);
        mine.began_empty = platform::FiberValue(mine.slot) == nullptr;
        static_cast<void>(platform::SetFiberValue(mine.slot, &mine.value));
      },
      &other);
  ASSERT_TRUE(thread.ok());
  platform::JoinThread(thread.value());
  EXPECT_TRUE(other.began_empty);
  EXPECT_EQ(destroyed.load(), 10);  // with its thread
  EXPECT_EQ(platform::FiberValue(slot), &own);
  platform::FreeFiberSlot(slot);
  EXPECT_EQ(destroyed.load(), 11);  // with the slot
}

TEST(FiberSlotContract, A_value_that_was_taken_back_is_not_destroyed) {
  const Machine machine;
  destroyed = 0;
  const std::uint32_t slot = platform::AllocateFiberSlot(CountDestroyed);
  ASSERT_NE(slot, platform::kNoFiberSlot);
  int value = 1;
  EXPECT_TRUE(platform::SetFiberValue(slot, &value));
  EXPECT_TRUE(platform::SetFiberValue(slot, nullptr));
  platform::FreeFiberSlot(slot);
  EXPECT_EQ(destroyed.load(), 0);
}

TEST(FiberSlotContract, Two_slots_are_two) {
  const Machine machine;
  destroyed = 0;
  const std::uint32_t a = platform::AllocateFiberSlot(CountDestroyed);
  const std::uint32_t b = platform::AllocateFiberSlot(CountDestroyed);
  EXPECT_NE(a, b);
  int one = 1;
  EXPECT_TRUE(platform::SetFiberValue(a, &one));
  EXPECT_EQ(platform::FiberValue(b), nullptr);
  platform::FreeFiberSlot(b);
  EXPECT_EQ(destroyed.load(), 0);
  EXPECT_EQ(platform::FiberValue(a), &one);
  platform::FreeFiberSlot(a);
  EXPECT_EQ(destroyed.load(), 1);
}

}  // namespace
}  // namespace quastel::contract
