// Which of many equal events is to fail.

#ifndef QUASTEL_TESTS_FAULTS_NTH_TIME_H_
#define QUASTEL_TESTS_FAULTS_NTH_TIME_H_

#include <cstdint>

namespace quastel::faults {

struct NthTime {
  std::uint64_t nth = 0;  // counted from 1; 0: none fails
  bool from_then_on = false;
  std::uint64_t seen = 0;
  std::uint64_t injected = 0;

  // Called for each event while there is one that fails.
  bool MustFail() noexcept {
    ++seen;
    if (from_then_on ? seen < nth : seen != nth) {
      return false;
    }
    ++injected;
    return true;
  }
};

// More events than any sweep meets: one that comes to this number would have no end.
inline constexpr std::uint64_t kTooMany = 20'000;

}  // namespace quastel::faults

#endif  // QUASTEL_TESTS_FAULTS_NTH_TIME_H_
