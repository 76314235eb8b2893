// Fails everything that can fail, one after the other, and looks at what is left each time.

#include <gtest/gtest.h>

#include <functional>
#include <iostream>

#include "faults/allocation_faults.h"
#include "faults/call_sweep.h"
#include "faults/fault_scenario.h"
#include "faults/nth_time.h"
#include "support/named_case.h"
#include "support/sweep_record.h"

namespace quastel::faults {
namespace {

class FaultSweep : public ::testing::TestWithParam<Scenario> {
 protected:
  FaultSweep() {
    GetParam().furnish(machine_);
    machine_.ClearFaults();
    deed_ = GetParam().make(machine_);
    full_ = Run([](Deed& deed) { return deed.Do(); });
    possible_ = deed_->Possible().empty() ? full_.findings : deed_->Possible();
    EXPECT_TRUE(IsPartOf(full_.findings, possible_));
    disk_ = machine_.Describe();
    EXPECT_TRUE(deed_->Allows(full_.status, false)) << full_.status;
    EXPECT_FALSE(full_.findings.empty()) << "an empty report could lose nothing";
  }

  // `arm_and_do` runs the deed under a fault and disarms it.
  Outcome Run(const std::function<qs_status(Deed&)>& arm_and_do) {
    Outcome outcome;
    outcome.status = arm_and_do(*deed_);
    deed_->CheckAfter(outcome.status);
    outcome.findings = deed_->Findings();
    return outcome;
  }

  // What holds after every round: nothing is open, nothing was changed, nothing was invented, and
  // the next round without a fault finds everything.
  void CheckInvariants(const Outcome& faulted) {
    EXPECT_EQ(machine_.open_handles(), 0u);
    EXPECT_EQ(machine_.Describe(), disk_);
    EXPECT_TRUE(IsPartOf(faulted.findings, possible_)) << ::testing::PrintToString(faulted);
    machine_.ClearFaults();
    EXPECT_EQ(Run([](Deed& deed) { return deed.Do(); }), full_);
  }

  // One round of a sweep through the calls.
  Met DoUnder(const CallFault& fault) {
    machine_.ClearFaults();
    fault.Arm(machine_);
    const Outcome outcome = Run([](Deed& deed) { return deed.Do(); });
    const Met met = Met::By(machine_);
    if (!met.call) {
      EXPECT_EQ(outcome, full_);
      return met;
    }
    EXPECT_TRUE(deed_->Allows(outcome.status, false)) << outcome.status;
    CheckInvariants(outcome);
    return met;
  }

  std::uint64_t SweepAllocations(Repeat repeat) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      std::uint64_t injected = 0;
      const Outcome outcome = Run([&](Deed& deed) {
        AllocationFaults faults(nth, repeat);
        const qs_status status = deed.Do();
        injected = faults.injected();
        return status;
      });
      if (injected == 0) {
        EXPECT_EQ(outcome, full_);
        return nth - 1;
      }
      EXPECT_TRUE(deed_->Allows(outcome.status, true)) << outcome.status;
      if (GetParam().has_status && outcome.status == QS_OK) {
        EXPECT_EQ(outcome, full_) << "a success may leave nothing out";
      }
      CheckInvariants(outcome);
      if (HasFailure()) {
        return nth;
      }
    }
    ADD_FAILURE() << "the sweep does not end";
    return kTooMany;
  }

  SimulatedWindows machine_;
  std::unique_ptr<Deed> deed_;
  Outcome full_;
  std::vector<std::string> possible_;
  std::string disk_;
};

class SystemCallSweep : public FaultSweep {
 protected:
  void Sweep(CallFault::Kind kind) {
    SweepAndRecord(GetParam().name, kind, GetParam().fewest_calls,
                   [this](const CallFault& fault) { return DoUnder(fault); });
  }
};

TEST_P(SystemCallSweep, Survives_each_call_failing_once) {
  Sweep(CallFault::Kind::kOnce);
}

TEST_P(SystemCallSweep, Survives_every_call_failing_from_one_on) {
  Sweep(CallFault::Kind::kFromThenOn);
}

TEST_P(SystemCallSweep, Survives_the_system_dying_at_each_call) {
  Sweep(CallFault::Kind::kCrash);
}

class AllocationSweep : public FaultSweep {
 protected:
  void ExpectRounds(std::uint64_t rounds) {
    EXPECT_GE(rounds, GetParam().fewest_allocations) << "the sweep has missed something";
    std::cout << "[  rounds  ] " << rounds << std::endl;
    support::RecordSweep(GetParam().name, support::Swept::kMemoryFailures, rounds);
  }
};

TEST_P(AllocationSweep, Survives_each_allocation_failing_once) {
  ExpectRounds(SweepAllocations(Repeat::kOnce));
}

TEST_P(AllocationSweep, Survives_every_allocation_failing_from_one_on) {
  ExpectRounds(SweepAllocations(Repeat::kFromThenOn));
}

// Where no sweep looks there is nothing to fail.
TEST_P(FaultSweep, Makes_no_calls_or_allocations_that_are_left_out) {
  machine_.ClearFaults();
  std::uint64_t allocations = 0;
  const Outcome outcome = Run([&](Deed& deed) {
    AllocationFaults none(kTooMany, Repeat::kOnce);
    const qs_status status = deed.Do();
    allocations = none.allocations();
    return status;
  });
  EXPECT_EQ(outcome, full_);
  const std::uint64_t calls = machine_.fallible_calls();
  EXPECT_EQ(calls == 0, GetParam().fewest_calls == 0) << calls << " calls";
  EXPECT_EQ(allocations == 0, GetParam().fewest_allocations == 0) << allocations << " allocations";
  if (calls == 0) {
    support::RecordNoCalls(GetParam().name);
  }
  if (allocations == 0) {
    support::RecordSweep(GetParam().name, support::Swept::kMemoryFailures, 0);
  }
}

// The scenarios in which there is something to fail.
std::vector<Scenario> Those(std::uint64_t Scenario::*fewest) {
  std::vector<Scenario> scenarios;
  for (const Scenario& scenario : AllScenarios()) {
    if (scenario.*fewest > 0) {
      scenarios.push_back(scenario);
    }
  }
  return scenarios;
}

INSTANTIATE_TEST_SUITE_P(All, FaultSweep, ::testing::ValuesIn(AllScenarios()), support::CaseName());
INSTANTIATE_TEST_SUITE_P(All, SystemCallSweep, ::testing::ValuesIn(Those(&Scenario::fewest_calls)),
                         support::CaseName());
INSTANTIATE_TEST_SUITE_P(All, AllocationSweep,
                         ::testing::ValuesIn(Those(&Scenario::fewest_allocations)),
                         support::CaseName());

}  // namespace
}  // namespace quastel::faults
