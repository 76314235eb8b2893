// The order in which a sweep goes through calls and errors.

#ifndef QUASTEL_TESTS_FAULTS_CALL_SWEEP_H_
#define QUASTEL_TESTS_FAULTS_CALL_SWEEP_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "faults/nth_time.h"
#include "platform/error.h"
#include "simulated_windows/simulated_windows.h"
#include "support/instrumented.h"
#include "support/sweep_record.h"

namespace quastel::faults {

using simulated::Repeat;
using simulated::SimulatedWindows;

// The fault of one round, in a scenario that is otherwise the same each time.
struct CallFault {
  enum class Kind { kOnce, kFromThenOn, kCrash };

  Kind kind = Kind::kOnce;
  std::uint64_t nth = 1;
  std::optional<platform::Error> error;  // none: the usual one of each call

  void Arm(SimulatedWindows& machine) const {
    switch (kind) {
      case Kind::kOnce:
        return machine.FailAnyCall(nth, Repeat::kOnce, error);
      case Kind::kFromThenOn:
        return machine.FailAnyCall(nth, Repeat::kFromThenOn, error);
      case Kind::kCrash:
        return machine.CrashAtCall(nth);
    }
  }
};

// What a round met; taken before its faults are cleared.
struct Met {
  std::optional<simulated::Call> call;  // none: the scenario has fewer calls
  std::uint64_t calls = 0;              // those that can fail

  static Met By(const SimulatedWindows& machine) {
    return {machine.first_fault(), machine.fallible_calls()};
  }
};

struct SweepCount {
  std::uint64_t calls = 0;   // of a run without a fault
  std::uint64_t faults = 0;  // rounds that met one
};

// Runs a round for call 1, 2, 3, ... and each error that the call may fail with, up to the first
// round that meets no fault. A round checks what has to hold; the sweep ends at the first that
// fails. An instrumented build, which is there for what the code does and not for the errors,
// takes one error besides the usual one for each call, another one each time, and none for a
// fault that lasts.
inline SweepCount SweepCalls(CallFault::Kind kind,
                             const std::function<Met(const CallFault&)>& round) {
  SweepCount count;
  for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
    SCOPED_TRACE("call " + std::to_string(nth));
    const Met usual = round({kind, nth, std::nullopt});
    if (::testing::Test::HasFailure()) {
      return count;
    }
    if (!usual.call) {
      count.calls = usual.calls;
      EXPECT_EQ(count.calls, nth - 1) << "each call of a run has had its round";
      return count;
    }
    ++count.faults;
    if (kind == CallFault::Kind::kCrash) {
      continue;
    }
    const std::vector<platform::Error> errors = simulated::ErrorsOf(*usual.call);
    for (std::size_t i = 1; i < errors.size(); ++i) {
      if (support::kInstrumented &&
          (kind == CallFault::Kind::kFromThenOn || i != 1 + nth % (errors.size() - 1))) {
        continue;
      }
      SCOPED_TRACE(simulated::NameOf(*usual.call) + std::string(" fails with ") +
                   std::to_string(static_cast<std::uint32_t>(errors[i])));
      const Met met = round({kind, nth, errors[i]});
      EXPECT_EQ(met.call, usual.call);
      ++count.faults;
      if (::testing::Test::HasFailure()) {
        return count;
      }
    }
  }
  ADD_FAILURE() << "the sweep does not end";
  return count;
}

// Does it and leaves the counts for the table. `fewest`: with fewer calls it has missed something.
inline void SweepAndRecord(std::string_view scenario, CallFault::Kind kind, std::uint64_t fewest,
                           const std::function<Met(const CallFault&)>& round) {
  using support::Swept;
  const SweepCount count = SweepCalls(kind, round);
  if (::testing::Test::HasFailure()) {
    return;
  }
  EXPECT_GE(count.calls, fewest) << "the sweep has missed something";
  std::cout << "[  rounds  ] " << count.faults << " for " << count.calls << " calls" << std::endl;
  switch (kind) {
    case CallFault::Kind::kOnce:
      return support::RecordSweep(scenario, Swept::kSingleFaults, count.faults);
    case CallFault::Kind::kFromThenOn:
      return support::RecordSweep(scenario, Swept::kLastingFaults, count.faults);
    case CallFault::Kind::kCrash:
      support::RecordSweep(scenario, Swept::kCalls, count.calls);
      return support::RecordSweep(scenario, Swept::kCrashPoints, count.faults);
  }
}

}  // namespace quastel::faults

#endif  // QUASTEL_TESTS_FAULTS_CALL_SWEEP_H_
