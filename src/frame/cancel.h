// Cancel flags: 32-bit integers that one thread sets and working threads read.

#ifndef QUASTEL_FRAME_CANCEL_H_
#define QUASTEL_FRAME_CANCEL_H_

#include <atomic>
#include <cstdint>

namespace quastel {

// Reads a caller's flag (null: never cancelled) with full-barrier semantics. Exchanging 0 for 0
// leaves every value as it is.
inline bool IsCancelRequested(std::uint32_t* flag) noexcept {
  if (flag == nullptr) {
    return false;
  }
  std::uint32_t expected = 0;
  return !std::atomic_ref<std::uint32_t>(*flag).compare_exchange_strong(expected, 0);
}

// The same by a load, which works for a flag in memory that cannot be written as well.
inline bool IsCancelLoaded(std::uint32_t* flag) noexcept {
  return flag != nullptr && std::atomic_ref<std::uint32_t>(*flag).load() != 0;
}

// A handle's own flag, with the address that enumeration and hashing take.
class CancelFlag {
 public:
  void Set() noexcept { std::atomic_ref<std::uint32_t>(value_).exchange(1); }
  void Clear() noexcept { std::atomic_ref<std::uint32_t>(value_).store(0); }
  bool IsSet() noexcept { return IsCancelRequested(&value_); }
  std::uint32_t* address() noexcept { return &value_; }

 private:
  alignas(std::atomic_ref<std::uint32_t>::required_alignment) std::uint32_t value_ = 0;
};

}  // namespace quastel

#endif  // QUASTEL_FRAME_CANCEL_H_
