// Admission of long-running calls: one start, clean or destroy at a time on each handle.

#ifndef QUASTEL_FRAME_BUSY_FLAG_H_
#define QUASTEL_FRAME_BUSY_FLAG_H_

#include <atomic>
#include <cstdint>

namespace quastel {

class BusyFlag {
 public:
  // True when the caller is in; it must Leave on every way out.
  [[nodiscard]] bool TryEnter() noexcept { return busy_.exchange(1) == 0; }
  void Leave() noexcept { busy_.store(0); }

 private:
  std::atomic<std::uint8_t> busy_{0};
};

// Leaves an entered flag at the end of its scope.
class BusyScope {
 public:
  explicit BusyScope(BusyFlag& entered) noexcept : flag_(&entered) {}
  ~BusyScope() {
    if (flag_ != nullptr) {
      flag_->Leave();
    }
  }
  BusyScope(const BusyScope&) = delete;
  BusyScope& operator=(const BusyScope&) = delete;

  // Nobody is to enter any more.
  void Keep() noexcept { flag_ = nullptr; }

 private:
  BusyFlag* flag_;
};

}  // namespace quastel

#endif  // QUASTEL_FRAME_BUSY_FLAG_H_
