#include "faults/allocation_faults.h"

#include <cstdlib>
#include <new>

namespace quastel::faults {
namespace {

struct Plan {
  std::uint64_t nth = 0;  // 0: no plan
  bool from_then_on = false;
  std::uint64_t seen = 0;
  std::uint64_t injected = 0;
  int pauses = 0;
};

// Without constructor or destructor: operator new is called before and after everything else.
thread_local constinit Plan plan;

bool MustFail() noexcept {
  if (plan.nth == 0 || plan.pauses > 0 || simulated::InsideSimulation()) {
    return false;
  }
  ++plan.seen;
  if (plan.from_then_on ? plan.seen < plan.nth : plan.seen != plan.nth) {
    return false;
  }
  ++plan.injected;
  return true;
}

void* AllocateOrNull(std::size_t size, std::size_t alignment) noexcept {
  if (MustFail()) {
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
  plan = {nth, repeat == Repeat::kFromThenOn, 0, 0, plan.pauses};
}

AllocationFaults::~AllocationFaults() {
  plan.nth = 0;
}

std::uint64_t AllocationFaults::injected() const {
  return plan.injected;
}

std::uint64_t AllocationFaults::allocations() const {
  return plan.seen;
}

AllocationFaultPause::AllocationFaultPause() {
  ++plan.pauses;
}

AllocationFaultPause::~AllocationFaultPause() {
  --plan.pauses;
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
