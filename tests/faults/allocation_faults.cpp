#include "faults/allocation_faults.h"

#include <cstdlib>
#include <new>

#include "faults/nth_time.h"

namespace quastel::faults {
namespace {

// Without constructor or destructor: operator new is called before and after everything else.
thread_local constinit NthTime failing_allocation;
thread_local constinit int pauses = 0;

bool AllocationMustFail() noexcept {
  return failing_allocation.nth != 0 && pauses == 0 && !simulated::InsideSimulation() &&
         failing_allocation.MustFail();
}

void* AllocateOrNull(std::size_t size, std::size_t alignment) noexcept {
  if (AllocationMustFail()) {
    return nullptr;
  }
  if (alignment <= alignof(std::max_align_t)) {
    return std::malloc(size == 0 ? 1 : size);
  }
  // aligned_alloc wants a multiple of the alignment.
  return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment) {
  void* const block = AllocateOrNull(size, alignment);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

constexpr std::size_t kUsual = alignof(std::max_align_t);

}  // namespace

AllocationFaults::AllocationFaults(std::uint64_t nth, Repeat repeat) {
  failing_allocation = {nth, repeat == Repeat::kFromThenOn, 0, 0};
}

AllocationFaults::~AllocationFaults() {
  failing_allocation.nth = 0;
}

std::uint64_t AllocationFaults::injected() const {
  return failing_allocation.injected;
}

std::uint64_t AllocationFaults::allocations() const {
  return failing_allocation.seen;
}

AllocationFaultPause::AllocationFaultPause() {
  ++pauses;
}

AllocationFaultPause::~AllocationFaultPause() {
  --pauses;
}

}  // namespace quastel::faults

using quastel::faults::AllocateOrNull;
using quastel::faults::AllocateOrThrow;
using quastel::faults::kUsual;

void* operator new(std::size_t size) {
  return AllocateOrThrow(size, kUsual);
}
void* operator new[](std::size_t size) {
  return AllocateOrThrow(size, kUsual);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateOrNull(size, kUsual);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return AllocateOrNull(size, kUsual);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return AllocateOrNull(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return AllocateOrNull(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
  std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  std::free(block);
}
