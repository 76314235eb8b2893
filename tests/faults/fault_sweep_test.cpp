// Fails everything that can fail, one after the other, and looks at what is left each time.

#include <gtest/gtest.h>

#include <functional>
#include <iostream>

#include "faults/allocation_faults.h"
#include "faults/fault_scenario.h"
#include "support/named_case.h"

namespace quastel::faults {
namespace {

constexpr std::uint64_t kTooMany = 20'000;

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

  // Fails system call 1, 2, 3, ... until a run meets no fault; returns the number of rounds.
  std::uint64_t SweepCalls(const std::function<void(std::uint64_t nth)>& arm) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("call " + std::to_string(nth));
      machine_.ClearFaults();
      arm(nth);
      const Outcome outcome = Run([](Deed& deed) { return deed.Do(); });
      const std::uint64_t injected = machine_.faults_injected();
      if (injected == 0) {
        EXPECT_EQ(outcome, full_);
        return nth - 1;
      }
      EXPECT_TRUE(deed_->Allows(outcome.status, false)) << outcome.status;
      CheckInvariants(outcome);
      if (HasFailure()) {
        return nth;
      }
    }
    ADD_FAILURE() << "the sweep does not end";
    return kTooMany;
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

  void Report(std::uint64_t rounds, std::uint64_t fewest) {
    EXPECT_GE(rounds, fewest) << "the sweep has missed something";
    std::cout << "[  rounds  ] " << rounds << std::endl;
  }

  SimulatedWindows machine_;
  std::unique_ptr<Deed> deed_;
  Outcome full_;
  std::vector<std::string> possible_;
  std::string disk_;
};

class SystemCallSweep : public FaultSweep {
 protected:
  void ExpectRounds(std::uint64_t rounds) { Report(rounds, GetParam().fewest_calls); }
};

TEST_P(SystemCallSweep, Survives_each_call_failing_once) {
  ExpectRounds(SweepCalls([this](std::uint64_t n) { machine_.FailAnyCall(n, Repeat::kOnce); }));
}

TEST_P(SystemCallSweep, Survives_every_call_failing_from_one_on) {
  ExpectRounds(
      SweepCalls([this](std::uint64_t n) { machine_.FailAnyCall(n, Repeat::kFromThenOn); }));
}

TEST_P(SystemCallSweep, Survives_the_system_dying_at_each_call) {
  ExpectRounds(SweepCalls([this](std::uint64_t n) { machine_.CrashAtCall(n); }));
}

class AllocationSweep : public FaultSweep {
 protected:
  void ExpectRounds(std::uint64_t rounds) { Report(rounds, GetParam().fewest_allocations); }
};

TEST_P(AllocationSweep, Survives_each_allocation_failing_once) {
  ExpectRounds(SweepAllocations(Repeat::kOnce));
}

TEST_P(AllocationSweep, Survives_every_allocation_failing_from_one_on) {
  ExpectRounds(SweepAllocations(Repeat::kFromThenOn));
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

INSTANTIATE_TEST_SUITE_P(All, SystemCallSweep, ::testing::ValuesIn(Those(&Scenario::fewest_calls)),
                         support::CaseName());
INSTANTIATE_TEST_SUITE_P(All, AllocationSweep,
                         ::testing::ValuesIn(Those(&Scenario::fewest_allocations)),
                         support::CaseName());

TEST(CreateSweep, Creating_a_handle_without_memory_fails_and_leaves_the_out_pointer_alone) {
  SimulatedWindows machine;
  std::uint64_t rounds = 0;
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE(nth);
      int canary = 0;
      auto* const untouched = reinterpret_cast<qs_product_scan*>(&canary);
      qs_product_scan* scan = untouched;
      qs_status status = QS_OK;
      std::uint64_t injected = 0;
      {
        AllocationFaults faults(nth, repeat);
        status = qs_product_scan_create(&scan);
        injected = faults.injected();
      }
      if (injected == 0) {
        EXPECT_EQ(status, QS_OK);
        EXPECT_EQ(qs_product_scan_destroy(scan), QS_OK);
        break;
      }
      ++rounds;
      ASSERT_EQ(status, QS_FAILED);
      EXPECT_EQ(scan, untouched);
    }
  }
  EXPECT_GE(rounds, 2u);
}

}  // namespace
}  // namespace quastel::faults
