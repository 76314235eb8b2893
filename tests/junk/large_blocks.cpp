#include "junk/large_blocks.h"

#include <algorithm>

namespace quastel::junk_tests {
namespace {

constexpr std::size_t kLarge = std::size_t{1} << 30;

struct Guard {
  bool on = false;
  std::size_t largest = 0;
};

// Without constructor or destructor: memory is allocated before and after
// everything else.
thread_local constinit Guard guard;

}  // namespace

// The linker leads every call of malloc here, that of operator new included,
// and the other name to the real one.
void* RealMalloc(std::size_t size) asm("__real_malloc");
void* GuardedMalloc(std::size_t size) asm("__wrap_malloc");

void* GuardedMalloc(std::size_t size) {
  if (guard.on && size >= kLarge) {
    guard.largest = std::max(guard.largest, size);
    return nullptr;
  }
  return RealMalloc(size);
}

NoLargeBlocks::NoLargeBlocks() {
  guard = {.on = true};
}

NoLargeBlocks::~NoLargeBlocks() {
  guard.on = false;
}

std::size_t NoLargeBlocks::largest() const {
  return guard.largest;
}

}  // namespace quastel::junk_tests
