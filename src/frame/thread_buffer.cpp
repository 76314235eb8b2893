#include "frame/thread_buffer.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>

#include "platform/thread.h"

namespace quastel {
namespace {

constexpr std::align_val_t kAlignment{32};

// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): one for the whole process
constinit std::atomic<std::uint32_t> buffer_slot{platform::kNoFiberSlot};

void FreeBuffer(void* buffer) {
  ::operator delete(buffer, kAlignment);
}

// The slot that all threads share; the first two callers may race to make it.
std::uint32_t Slot() noexcept {
  std::uint32_t slot = buffer_slot;
  if (slot != platform::kNoFiberSlot) {
    return slot;
  }
  const std::uint32_t made = platform::AllocateFiberSlot(FreeBuffer);
  if (made == platform::kNoFiberSlot || buffer_slot.compare_exchange_strong(slot, made)) {
    return made;
  }
  platform::FreeFiberSlot(made);
  return slot;
}

}  // namespace

unsigned char* ThreadBuffer() noexcept {
  const std::uint32_t slot = Slot();
  if (slot == platform::kNoFiberSlot) {
    return nullptr;
  }
  if (void* const known = platform::FiberValue(slot)) {
    return static_cast<unsigned char*>(known);
  }
  auto* const buffer =
      static_cast<unsigned char*>(::operator new(kThreadBufferSize, kAlignment, std::nothrow));
  if (buffer == nullptr) {
    return nullptr;
  }
  std::fill_n(buffer, kThreadBufferSize, static_cast<unsigned char>(0));
  if (!platform::SetFiberValue(slot, buffer)) {
    FreeBuffer(buffer);
    return nullptr;
  }
  return buffer;
}

void ReleaseThreadBuffers() noexcept {
  const std::uint32_t slot = buffer_slot.exchange(platform::kNoFiberSlot);
  if (slot != platform::kNoFiberSlot) {
    platform::FreeFiberSlot(slot);
  }
}

}  // namespace quastel
