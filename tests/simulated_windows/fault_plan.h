// Which call fails, and with what.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_FAULT_PLAN_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_FAULT_PLAN_H_

#include <array>
#include <cstdint>
#include <optional>

#include "platform/error.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {

class FaultPlan {
 public:
  // Counts a call that can fail and answers the error it is to fail with, or kNone.
  platform::Error Next(Call call);

  void FailCall(Call call, std::uint64_t nth, Repeat repeat, std::optional<platform::Error> error);
  void FailAnyCall(std::uint64_t nth, Repeat repeat, std::optional<platform::Error> error);
  void CrashAtCall(std::uint64_t nth) { crash_at_ = nth; }
  void Clear() { *this = FaultPlan(); }

  bool crashed() const { return crash_at_ != 0 && any_count_ >= crash_at_; }
  std::uint64_t injected() const { return injected_; }
  std::optional<Call> first_injected() const { return first_injected_; }
  std::uint64_t calls() const { return any_count_; }

 private:
  struct Rule {
    std::uint64_t nth = 0;  // 0: none
    Repeat repeat = Repeat::kOnce;
    std::optional<platform::Error> error;

    bool Hits(std::uint64_t count) const {
      return nth != 0 && (repeat == Repeat::kOnce ? count == nth : count >= nth);
    }
  };

  static constexpr std::size_t kKinds = static_cast<std::size_t>(Call::kCount);
  std::array<Rule, kKinds> rules_{};
  std::array<std::uint64_t, kKinds> counts_{};
  Rule any_;
  std::uint64_t any_count_ = 0;
  std::uint64_t crash_at_ = 0;
  std::uint64_t injected_ = 0;
  std::optional<Call> first_injected_;
};

// The error that fits a call best when a test does not choose one.
platform::Error UsualErrorOf(Call call);

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_FAULT_PLAN_H_
