// Move-only ownership of one system handle.

#ifndef QUASTEL_PLATFORM_HANDLE_H_
#define QUASTEL_PLATFORM_HANDLE_H_

#include <cstdint>
#include <utility>

namespace quastel::platform {

// The raw value of any system handle; the backends know what stands behind it.
using RawHandle = std::intptr_t;

// Policy gives `static constexpr RawHandle kInvalid` and `static void Close(RawHandle) noexcept`.
// Close keeps the calling thread's last error, so a cleanup never hides the error that caused it.
template <typename Policy>
class UniqueHandle {
 public:
  UniqueHandle() noexcept = default;
  explicit UniqueHandle(RawHandle raw) noexcept : raw_(raw) {}
  UniqueHandle(UniqueHandle&& other) noexcept : raw_(other.Release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) {
      Reset(other.Release());
    }
    return *this;
  }
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  ~UniqueHandle() { Reset(); }

  bool valid() const noexcept { return raw_ != Policy::kInvalid; }
  RawHandle raw() const noexcept { return raw_; }

  // Gives the handle up without closing it.
  [[nodiscard]] RawHandle Release() noexcept { return std::exchange(raw_, Policy::kInvalid); }

  // Closes what is owned and owns `raw` from now on.
  void Reset(RawHandle raw = Policy::kInvalid) noexcept {
    const RawHandle old = std::exchange(raw_, raw);
    if (old != Policy::kInvalid) {
      Policy::Close(old);
    }
  }

 private:
  RawHandle raw_ = Policy::kInvalid;
};

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_HANDLE_H_
