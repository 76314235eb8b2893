#include "frame/thread_buffer.h"

#include <algorithm>
#include <functional>
#include <set>
#include <thread>
#include <vector>

#include "duplicate/allocation_meter.h"
#include "duplicate/machine.h"
#include "faults/allocation_faults.h"

namespace quastel::duplicate_tests {
namespace {

using faults::AllocationFaults;

void OnNewThread(const std::function<void()>& work) {
  std::thread thread(work);
  thread.join();
}

class ThreadBuffers : public HashingTest {
 protected:
  ThreadBuffers() { machine_.AddFile(u"C:\\file", "abc"); }

  const TextAnswer abc_ = Written("ff53d132", kHashCapacity);
  const TextAnswer failed_ = Untouched(QS_FAILED, kHashCapacity);
};

TEST_F(ThreadBuffers, Are_of_one_MiB_aligned_to_32_bytes_and_zero_at_first) {
  static_assert(kThreadBufferSize == 1'048'576);
  // Memory that was used before is not zero by itself.
  for (int round = 0; round < 3; ++round) {
    OnNewThread([] {
      unsigned char* const buffer = ThreadBuffer();
      ASSERT_NE(buffer, nullptr);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % 32, 0u);
      EXPECT_TRUE(std::all_of(buffer, buffer + kThreadBufferSize, [](int b) { return b == 0; }));
      std::fill_n(buffer, kThreadBufferSize, static_cast<unsigned char>(0xA5));
    });
  }
}

TEST_F(ThreadBuffers, Stay_the_same_for_as_long_as_the_thread_lives) {
  OnNewThread([this] {
    unsigned char* const buffer = ThreadBuffer();
    buffer[0] = 77;
    EXPECT_EQ(ThreadBuffer(), buffer);
    EXPECT_EQ(buffer[0], 77);
    EXPECT_EQ(HashAnswer(u"C:\\file"), abc_);
    EXPECT_EQ(ThreadBuffer(), buffer);
  });
}

TEST_F(ThreadBuffers, No_two_threads_share_one) {
  unsigned char* const own = ThreadBuffer();
  std::vector<unsigned char*> buffers(4);
  std::atomic<std::size_t> ready{0};
  std::vector<std::thread> threads;
  for (unsigned char*& buffer : buffers) {
    threads.emplace_back([&] {
      buffer = ThreadBuffer();
      ++ready;
      while (ready < buffers.size()) {  // nobody gives his back before all have one
        std::this_thread::yield();
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::set<unsigned char*> all(buffers.begin(), buffers.end());
  all.insert(own);
  EXPECT_EQ(all.size(), 5u);
  EXPECT_FALSE(all.contains(nullptr));
}

TEST_F(ThreadBuffers, A_thousand_files_need_one_allocation_of_a_MiB) {
  OnNewThread([this] {
    const std::size_t before = LiveLargeBlocks();
    std::size_t largest = 0;
    {
      const AllocationMeter meter;
      EXPECT_EQ(HashAnswer(u"C:\\file"), abc_);
      largest = meter.largest();
    }
    EXPECT_GE(largest, kMebibyte);
    EXPECT_LE(largest, kMebibyte + 4096);
    EXPECT_EQ(LiveLargeBlocks(), before + 1);
    {
      const AllocationMeter meter;
      for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(HashAnswer(u"C:\\file"), abc_);
      }
      largest = meter.largest();
    }
    EXPECT_LT(largest, 1000u);
    EXPECT_EQ(LiveLargeBlocks(), before + 1);
  });
}

TEST_F(ThreadBuffers, Are_released_when_their_threads_end) {
  const std::size_t before = LiveLargeBlocks();
  for (int i = 0; i < 200; ++i) {
    OnNewThread([this] { EXPECT_EQ(HashAnswer(u"C:\\file"), abc_); });
    ASSERT_EQ(LiveLargeBlocks(), before) << "after thread " << i;
  }
}

TEST_F(ThreadBuffers, A_thread_that_never_hashes_has_none) {
  const std::size_t before = LiveLargeBlocks();
  OnNewThread([&] {
    char out[9] = {};
    EXPECT_EQ(qs_xxhash32_hex("abc", 3, out, 9), QS_OK);
    EXPECT_EQ(qs_xxhash32_file(nullptr, out, 9), QS_INVALID_ARGUMENT);
    EXPECT_EQ(qs_xxhash32_file(u"C:\\file", out, 8), QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(LiveLargeBlocks(), before);
  });
}

TEST_F(ThreadBuffers, No_memory_for_the_buffer_is_a_failure_that_the_next_call_forgets) {
  const std::size_t before = LiveLargeBlocks();
  OnNewThread([&] {
    bool ended = false;
    for (std::uint64_t nth = 1; nth < 50 && !ended; ++nth) {
      // A thread of its own for each round: the buffer is made in its first call.
      OnNewThread([&] {
        char out[9] = {'#'};
        qs_status status = QS_OK;
        {
          const AllocationFaults fault(nth, Repeat::kOnce);
          status = qs_xxhash32_file(u"C:\\file", out, 9);
          ended = fault.injected() == 0;
        }
        EXPECT_EQ(status, ended ? QS_OK : QS_FAILED) << nth;
        EXPECT_EQ(out[0] == '#', !ended) << nth;
        EXPECT_EQ(machine_.open_handles(), 0u);
        EXPECT_EQ(HashAnswer(u"C:\\file"), abc_) << nth;
      });
    }
    EXPECT_TRUE(ended);
  });
  EXPECT_EQ(LiveLargeBlocks(), before);
}

TEST_F(ThreadBuffers, Without_any_memory_a_thread_s_first_call_fails) {
  OnNewThread([this] {
    char out[9] = {'#'};
    qs_status status = QS_OK;
    unsigned char* buffer = nullptr;
    {
      const AllocationFaults faults(1, Repeat::kFromThenOn);
      status = qs_xxhash32_file(u"C:\\file", out, 9);
      buffer = ThreadBuffer();
      EXPECT_GE(faults.injected(), 1u);
    }
    EXPECT_EQ(status, QS_FAILED);
    EXPECT_EQ(out[0], '#');
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(machine_.open_handles(), 0u);
  });
}

TEST_F(ThreadBuffers, A_buffer_that_cannot_be_kept_is_a_failure_and_no_leak) {
  const std::size_t before = LiveLargeBlocks();
  OnNewThread([&] {
    machine_.FailCall(Call::kSetFiberValue, 1);
    EXPECT_EQ(HashAnswer(u"C:\\file"), failed_);
    EXPECT_EQ(machine_.faults_injected(), 1u);
    EXPECT_EQ(LiveLargeBlocks(), before);
    EXPECT_EQ(machine_.open_handles(), 0u);
    EXPECT_EQ(HashAnswer(u"C:\\file"), abc_) << "the next call tries again";
  });
  EXPECT_EQ(LiveLargeBlocks(), before);
}

TEST_F(ThreadBuffers, Of_two_threads_that_make_the_slot_at_once_one_gives_its_own_back) {
  ReleaseThreadBuffers();
  const std::uint64_t made = machine_.CallCount(Call::kAllocateFiberSlot);
  const std::uint64_t freed = machine_.CallCount(Call::kFreeFiberSlot);
  bool is_first = true;
  machine_.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kAllocateFiberSlot && std::exchange(is_first, false)) {
      OnNewThread([] { EXPECT_NE(ThreadBuffer(), nullptr); });
    }
  });
  unsigned char* const buffer = ThreadBuffer();
  machine_.SetHook(nullptr);
  EXPECT_NE(buffer, nullptr);
  EXPECT_EQ(machine_.CallCount(Call::kAllocateFiberSlot), made + 2);
  EXPECT_EQ(machine_.CallCount(Call::kFreeFiberSlot), freed + 1);
  EXPECT_EQ(ThreadBuffer(), buffer) << "it is kept in the slot that stayed";
  OnNewThread([] { EXPECT_NE(ThreadBuffer(), nullptr); });
  EXPECT_EQ(machine_.CallCount(Call::kAllocateFiberSlot), made + 2);
}

TEST_F(ThreadBuffers, Unloading_releases_all_of_them_and_the_slot) {
  const std::size_t before = LiveLargeBlocks();
  ASSERT_NE(ThreadBuffer(), nullptr);
  std::atomic<int> stage{0};
  std::thread other([&] {
    EXPECT_NE(ThreadBuffer(), nullptr);
    stage = 1;
    while (stage != 2) {
      std::this_thread::yield();
    }
  });
  while (stage != 1) {
    std::this_thread::yield();
  }
  EXPECT_EQ(LiveLargeBlocks(), before + 1);
  const std::uint64_t frees = machine_.CallCount(Call::kFreeFiberSlot);
  ReleaseThreadBuffers();
  EXPECT_EQ(machine_.CallCount(Call::kFreeFiberSlot), frees + 1);
  EXPECT_EQ(LiveLargeBlocks(), before - 1) << "this thread's and the other's are gone";
  ReleaseThreadBuffers();
  EXPECT_EQ(machine_.CallCount(Call::kFreeFiberSlot), frees + 1) << "nothing is released twice";
  stage = 2;
  other.join();
  EXPECT_EQ(LiveLargeBlocks(), before - 1);
}

TEST_F(ThreadBuffers, Without_a_slot_the_call_fails_and_a_later_one_tries_again) {
  ReleaseThreadBuffers();
  const std::size_t before = LiveLargeBlocks();
  machine_.ClearFaults();
  machine_.FailCall(Call::kAllocateFiberSlot, 1);
  EXPECT_EQ(HashAnswer(u"C:\\file"), failed_);
  EXPECT_EQ(machine_.faults_injected(), 1u);
  EXPECT_EQ(machine_.open_handles(), 0u);
  EXPECT_EQ(LiveLargeBlocks(), before);
  EXPECT_EQ(HashAnswer(u"C:\\file"), abc_);
  EXPECT_EQ(LiveLargeBlocks(), before + 1);
}

TEST_F(ThreadBuffers, Threads_that_come_first_at_once_share_one_slot) {
  ReleaseThreadBuffers();
  const std::uint64_t slots = machine_.CallCount(Call::kAllocateFiberSlot);
  const std::uint64_t freed = machine_.CallCount(Call::kFreeFiberSlot);
  const std::size_t before = LiveLargeBlocks();
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([this] {
      for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(HashAnswer(u"C:\\file"), abc_);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::uint64_t allocated = machine_.CallCount(Call::kAllocateFiberSlot) - slots;
  const std::uint64_t given_back = machine_.CallCount(Call::kFreeFiberSlot) - freed;
  EXPECT_EQ(allocated - given_back, 1u) << "a thread that lost the race gives its slot back";
  EXPECT_EQ(LiveLargeBlocks(), before);
}

}  // namespace
}  // namespace quastel::duplicate_tests
