#include "allocation_meter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> in_use{0};
std::atomic<std::uint64_t> peak{0};

void* Allocate(std::size_t size) {
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  const std::uint64_t now = in_use.fetch_add(malloc_usable_size(block)) + malloc_usable_size(block);
  std::uint64_t highest = peak.load();
  while (now > highest && !peak.compare_exchange_weak(highest, now)) {
  }
  return block;
}

void Release(void* block) noexcept {
  if (block != nullptr) {
    in_use.fetch_sub(malloc_usable_size(block));
    std::free(block);
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Release(block);
}
void operator delete[](void* block) noexcept {
  Release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Release(block);
}

namespace quastel::bench {

std::uint64_t BytesInUse() {
  return in_use;
}
std::uint64_t PeakBytes() {
  return peak;
}
void ResetPeak() {
  peak = in_use.load();
}

}  // namespace quastel::bench
