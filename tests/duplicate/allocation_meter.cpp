#include "duplicate/allocation_meter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>

#include "simulated_windows/simulated_windows.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::size_t kLarge = 1'048'576;

struct Counter {
  bool on = false;
  std::size_t count = 0;
  std::size_t bytes = 0;
  std::size_t largest = 0;
};

// Without constructor or destructor: memory is allocated before and after everything else.
thread_local constinit Counter counter;

constinit std::array<std::atomic<void*>, 64> large_blocks{};
constinit std::atomic<std::size_t> large_count{0};

void NoteAllocation(void* block, std::size_t size) {
  if (block != nullptr && size >= kLarge) {
    for (std::atomic<void*>& place : large_blocks) {
      void* expected = nullptr;
      if (place.compare_exchange_strong(expected, block)) {
        ++large_count;
        break;
      }
    }
  }
  if (counter.on && !simulated::InsideSimulation()) {
    ++counter.count;
    counter.bytes += size;
    counter.largest = std::max(counter.largest, size);
  }
}

void NoteRelease(void* block) {
  if (block == nullptr || large_count.load() == 0) {
    return;
  }
  for (std::atomic<void*>& place : large_blocks) {
    void* expected = block;
    if (place.compare_exchange_strong(expected, nullptr)) {
      --large_count;
      return;
    }
  }
}

}  // namespace

// The linker leads every call of the three here, and the other names to the real ones.
void* RealMalloc(std::size_t size) asm("__real_malloc");
void* RealAlignedAlloc(std::size_t alignment, std::size_t size) asm("__real_aligned_alloc");
void RealFree(void* block) asm("__real_free");
void* WatchedMalloc(std::size_t size) asm("__wrap_malloc");
void* WatchedAlignedAlloc(std::size_t alignment, std::size_t size) asm("__wrap_aligned_alloc");
void WatchedFree(void* block) asm("__wrap_free");

void* WatchedMalloc(std::size_t size) {
  void* const block = RealMalloc(size);
  NoteAllocation(block, size);
  return block;
}

void* WatchedAlignedAlloc(std::size_t alignment, std::size_t size) {
  void* const block = RealAlignedAlloc(alignment, size);
  NoteAllocation(block, size);
  return block;
}

void WatchedFree(void* block) {
  NoteRelease(block);
  RealFree(block);
}

AllocationMeter::AllocationMeter() {
  counter = {.on = true};
}

AllocationMeter::~AllocationMeter() {
  counter.on = false;
}

std::size_t AllocationMeter::count() const {
  return counter.count;
}

std::size_t AllocationMeter::bytes() const {
  return counter.bytes;
}

std::size_t AllocationMeter::largest() const {
  return counter.largest;
}

std::size_t LiveLargeBlocks() {
  return large_count.load();
}

}  // namespace quastel::duplicate_tests
