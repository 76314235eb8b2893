#include "faults/allocation_faults.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace quastel::faults {
namespace {

// Allocations that a compiler may not leave out.
bool Allocates() {
  try {
    void* volatile block = ::operator new(16);
    ::operator delete(block);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

std::vector<bool> Results(std::uint64_t nth, Repeat repeat, std::uint64_t& injected) {
  bool results[5];
  {
    AllocationFaults faults(nth, repeat);
    for (bool& result : results) {
      result = Allocates();
    }
    injected = faults.injected();
  }
  EXPECT_TRUE(Allocates());
  return std::vector<bool>(results, results + 5);
}

TEST(AllocationFaults, Fail_the_one_allocation_that_is_named) {
  std::uint64_t injected = 0;
  EXPECT_EQ(Results(3, Repeat::kOnce, injected),
            (std::vector<bool>{true, true, false, true, true}));
  EXPECT_EQ(injected, 1u);
}

TEST(AllocationFaults, Fail_every_allocation_from_the_named_one_on) {
  std::uint64_t injected = 0;
  EXPECT_EQ(Results(3, Repeat::kFromThenOn, injected),
            (std::vector<bool>{true, true, false, false, false}));
  EXPECT_EQ(injected, 3u);
}

TEST(AllocationFaults, Inject_nothing_behind_the_last_allocation) {
  std::uint64_t injected = 99;
  EXPECT_EQ(Results(6, Repeat::kFromThenOn, injected), std::vector<bool>(5, true));
  EXPECT_EQ(injected, 0u);
}

TEST(AllocationFaults, Reach_every_form_of_new) {
  bool failed[6] = {};
  {
    AllocationFaults faults(1, Repeat::kFromThenOn);
    failed[0] = ::operator new(8, std::nothrow) == nullptr;
    failed[1] = ::operator new[](8, std::nothrow) == nullptr;
    failed[2] = ::operator new (64, std::align_val_t{64}, std::nothrow) == nullptr;
    try {
      ::operator delete (::operator new (64, std::align_val_t{64}), std::align_val_t{64});
    } catch (const std::bad_alloc&) {
      failed[3] = true;
    }
    try {
      std::vector<int> numbers(100);
    } catch (const std::bad_alloc&) {
      failed[4] = true;
    }
    try {
      // Made inside the runtime's own library.
      std::u16string text;
      text.append(100, u'x');
    } catch (const std::bad_alloc&) {
      failed[5] = true;
    }
  }
  for (int i = 0; i < 6; ++i) {
    EXPECT_TRUE(failed[i]) << i;
  }
}

TEST(AllocationFaults, Leave_other_threads_alone) {
  bool here = true;
  bool there = false;
  std::thread other;
  {
    // The thread is made before: making one allocates.
    std::atomic<bool> armed{false};
    other = std::thread([&] {
      while (!armed) {
        std::this_thread::yield();
      }
      there = Allocates();
    });
    AllocationFaults faults(1, Repeat::kFromThenOn);
    armed = true;
    here = Allocates();
    other.join();
  }
  EXPECT_FALSE(here);
  EXPECT_TRUE(there);
}

TEST(AllocationFaults, Leave_pauses_and_the_simulation_alone) {
  simulated::SimulatedWindows machine;
  bool paused = false;
  bool inside = false;
  bool afterwards = true;
  machine.SetHook([&](const simulated::CallRecord&) { inside = Allocates(); });
  std::uint64_t seen = 99;
  qs_status status = QS_OK;
  {
    AllocationFaults faults(1, Repeat::kFromThenOn);
    {
      AllocationFaultPause pause;
      paused = Allocates();
    }
    seen = faults.allocations();
    status = static_cast<qs_status>(qs_directory_exists(u"C:\\"));
    afterwards = Allocates();
  }
  machine.SetHook(nullptr);
  EXPECT_TRUE(paused);
  EXPECT_EQ(seen, 0u);
  EXPECT_TRUE(inside) << "the hook runs inside a call of the simulated system";
  EXPECT_EQ(status, 1u) << "a short text needs no allocation";
  EXPECT_FALSE(afterwards);
}

}  // namespace
}  // namespace quastel::faults
