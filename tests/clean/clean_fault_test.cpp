// A whole clean of each kind in which any one system call or allocation fails, once or from then
// on, or at any call of which the system dies.

#include <algorithm>
#include <functional>
#include <iostream>
#include <set>
#include <string>

#include "clean/fault_world.h"
#include "faults/allocation_faults.h"
#include "faults/call_sweep.h"
#include "faults/nth_time.h"
#include "support/sweep_record.h"

namespace quastel::clean_tests {
namespace {

using faults::AllocationFaults;
using faults::CallFault;
using faults::kTooMany;
using faults::Met;

// A machine and a clean, which leaves no trace when it fails before it runs.
class CleanedWorld : public FaultWorld {
 public:
  using FaultWorld::FaultWorld;

  // The call of the library, and nothing but that.
  qs_status Do() { return qs_product_scan_start_clean(scan, ids.data(), ids.size()); }

  // What holds after every round.
  void CheckAfter(qs_status status) {
    machine.ClearFaults();
    EXPECT_EQ(machine.open_handles(), 0u);
    const CleanBlock block = BlockOf(scan);
    const Ids gone = IdsOfGone();
    EXPECT_EQ(MarksOf(scan), gone) << "a mark stands for a file that went, and each one has it";
    EXPECT_EQ(block.deleted, gone.size());
    if (status == QS_FAILED && block.state == QS_STATE_IDLE) {
      EXPECT_EQ(block, CleanBlock{});
    } else {
      EXPECT_EQ(block, Ended(status, ids.size(), block.deleted, block.failed,
                             block.deleted * file_size()));
      EXPECT_LE(block.processed, ids.size());
    }
    const bool with_folders = kind() == QS_SCAN_KIND_JUNK_RULES;
    CheckDisk(with_folders);
    CleanTheRest(gone);
    CheckDisk(with_folders);
  }

 private:
  void CleanTheRest(const Ids& gone) {
    machine.SetAttributes(kReadOnlyFile, platform::kAttributeArchive);
    Ids rest;
    for (const std::uint64_t id : ids) {
      if (std::find(gone.begin(), gone.end(), id) == gone.end()) {
        rest.push_back(id);
      }
    }
    EXPECT_EQ(Clean(scan, rest), QS_OK);
    EXPECT_EQ(BlockOf(scan).deleted, rest.size());
    EXPECT_EQ(IdsOfGone(), ids);
  }
};

class CleanFaults : public ::testing::TestWithParam<KindCase> {
 protected:
  static constexpr std::uint64_t kNamed = 6;
  // One is read-only.
  static constexpr std::uint64_t kDeletable = 5;
  using Check = std::function<void(CleanedWorld& world, qs_status status)>;

  void SweepCalls(CallFault::Kind kind, const Check& check) {
    faults::SweepAndRecord(ScenarioName(), kind, fewest_calls(), [&](const CallFault& fault) {
      CleanedWorld world(GetParam().kind);
      fault.Arm(world.machine);
      const qs_status status = world.Do();
      const Met met = Met::By(world.machine);
      check(world, status);
      if (!met.call) {
        EXPECT_EQ(BlockOf(world.scan).deleted, kDeletable);
      }
      world.CheckAfter(status);
      return met;
    });
  }

  static std::string ScenarioName() { return std::string("Clean_") + GetParam().name; }

  // A clean that was not cancelled has tried every file.
  static void CheckComplete(CleanedWorld& world, qs_status status) {
    const CleanBlock block = BlockOf(world.scan);
    EXPECT_EQ(block.processed, kNamed);
    EXPECT_EQ(status, block.deleted == 0 ? QS_FAILED : QS_OK);
  }

  static void Report(std::uint64_t rounds, std::uint64_t fewest) {
    EXPECT_GE(rounds, fewest) << "the sweep has missed something";
    std::cout << "[  rounds  ] " << rounds << std::endl;
  }

  static std::uint64_t fewest_calls() {
    return GetParam().kind == QS_SCAN_KIND_JUNK_RULES ? 120 : 80;
  }
};

TEST_P(CleanFaults, Each_call_that_fails_once_costs_one_file_at_the_most) {
  SweepCalls(CallFault::Kind::kOnce, [](CleanedWorld& world, qs_status status) {
    CheckComplete(world, status);
    EXPECT_GE(BlockOf(world.scan).deleted, kDeletable - 1);
  });
}

TEST_P(CleanFaults, Every_call_that_fails_from_one_on_leaves_what_was_deleted_before) {
  std::set<std::uint64_t> counts;
  SweepCalls(CallFault::Kind::kFromThenOn, [&](CleanedWorld& world, qs_status status) {
    CheckComplete(world, status);
    counts.insert(BlockOf(world.scan).deleted);
  });
  EXPECT_EQ(counts.size(), kDeletable + 1) << "0, 1, 2, ... files";
}

TEST_P(CleanFaults, When_the_system_dies_at_any_call_only_named_files_are_gone) {
  std::set<std::uint64_t> counts;
  SweepCalls(CallFault::Kind::kCrash, [&](CleanedWorld& world, qs_status status) {
    CheckComplete(world, status);
    counts.insert(BlockOf(world.scan).deleted);
  });
  EXPECT_EQ(counts.size(), kDeletable + 1);
}

TEST_P(CleanFaults, A_cancel_stays_one_whatever_else_fails) {
  // It comes when the third file's facts are asked for, if the clean gets that far.
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t cancelled_rounds = 0;
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("call " + std::to_string(nth));
      CleanedWorld world(GetParam().kind);
      world.machine.FailAnyCall(nth, repeat);
      std::uint64_t facts = 0;
      world.machine.SetHook([&](const CallRecord& call) {
        if (call.call == Call::kQueryFileFacts && ++facts == 3) {
          EXPECT_EQ(qs_product_scan_cancel_clean(world.scan), QS_OK);
        }
      });
      const qs_status status = world.Do();
      world.machine.SetHook(nullptr);
      const bool met = world.machine.faults_injected() > 0;
      if (facts >= 3) {
        ++cancelled_rounds;
        EXPECT_EQ(status, QS_CANCELLED);
        EXPECT_LE(BlockOf(world.scan).processed, 4u) << "one may have failed before its facts";
      } else {
        CheckComplete(world, status);
      }
      world.CheckAfter(status);
      if (HasFailure() || !met) {
        break;
      }
    }
    EXPECT_GE(cancelled_rounds, repeat == Repeat::kOnce ? 20u : 5u);
  }
}

class CleanMemory : public CleanFaults {
 protected:
  struct Round {
    qs_status status = QS_OK;
    std::uint64_t injected = 0;
  };

  static Round DoWith(CleanedWorld& world, std::uint64_t nth, Repeat repeat) {
    Round round;
    AllocationFaults faults(nth, repeat);
    round.status = world.Do();
    round.injected = faults.injected();
    return round;
  }
};

TEST_P(CleanMemory, Its_lack_at_any_allocation_ends_the_clean_or_fails_a_file) {
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t nth = 1;
    std::uint64_t before_it_ran = 0;
    std::uint64_t failed_in_between = 0;
    for (; nth < kTooMany; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) +
                   (repeat == Repeat::kOnce ? " once" : " from then on"));
      CleanedWorld world(GetParam().kind);
      const Round round = DoWith(world, nth, repeat);
      const CleanBlock block = BlockOf(world.scan);
      if (round.injected == 0) {
        EXPECT_EQ(round.status, QS_OK);
        EXPECT_EQ(block, Ended(QS_OK, kNamed, kDeletable, 1, kDeletable * world.file_size()));
        break;
      }
      EXPECT_TRUE(round.status == QS_OK || round.status == QS_FAILED) << round.status;
      if (round.status == QS_OK) {
        EXPECT_EQ(block.processed, kNamed) << "a success has tried every file";
        EXPECT_GT(block.deleted, 0u);
      } else if (block.state == QS_STATE_IDLE) {
        ++before_it_ran;
      } else {
        ++failed_in_between;
      }
      world.CheckAfter(round.status);
      if (HasFailure()) {
        return;
      }
    }
    Report(nth - 1, 10);
    support::RecordSweep(ScenarioName(), support::Swept::kMemoryFailures, nth - 1);
    EXPECT_GT(before_it_ran, 0u) << "the tables of a request need memory";
    EXPECT_TRUE(repeat == Repeat::kOnce || failed_in_between > 0);
  }
}

TEST_P(CleanMemory, Its_lack_after_a_cancel_ends_the_clean_as_cancelled) {
  std::uint64_t cancelled_rounds = 0;
  std::uint64_t nth = 1;
  for (; nth < kTooMany; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    CleanedWorld world(GetParam().kind);
    bool cancelled = false;
    world.machine.SetHook([&](const CallRecord& call) {
      if (call.call == Call::kFullPathName && !cancelled) {
        cancelled = true;
        EXPECT_EQ(qs_product_scan_cancel_clean(world.scan), QS_OK);
      }
    });
    const Round round = DoWith(world, nth, Repeat::kFromThenOn);
    world.machine.SetHook(nullptr);
    if (round.injected == 0) {
      EXPECT_EQ(round.status, QS_CANCELLED);
      break;
    }
    if (cancelled) {
      ++cancelled_rounds;
      EXPECT_EQ(round.status, QS_CANCELLED);
      EXPECT_EQ(BlockOf(world.scan).state, QS_STATE_CANCELLED);
    } else {
      EXPECT_EQ(round.status, QS_FAILED);
    }
    world.CheckAfter(round.status);
    if (HasFailure()) {
      return;
    }
  }
  Report(nth - 1, 5);
  EXPECT_GT(cancelled_rounds, 0u);
}

TEST_P(CleanMemory, Is_not_needed_by_polls_and_cancels) {
  CleanedWorld world(GetParam().kind);
  EXPECT_EQ(world.Do(), QS_OK);
  qs_product_clean_detail detail = {};
  detail.size = sizeof(detail);
  qs_product_clean_status status = {};
  qs_status answers[3] = {};
  std::uint64_t allocations = 99;
  {
    AllocationFaults faults(1, Repeat::kFromThenOn);
    answers[0] = qs_product_scan_poll_clean_detailed(world.scan, &detail);
    answers[1] = qs_product_scan_poll_clean(world.scan, &status);
    answers[2] = qs_product_scan_cancel_clean(world.scan);
    allocations = faults.allocations();
  }
  EXPECT_EQ(answers[0], QS_OK);
  EXPECT_EQ(answers[1], QS_OK);
  EXPECT_EQ(answers[2], QS_OK);
  EXPECT_EQ(allocations, 0u);
  EXPECT_EQ(detail.deleted, kDeletable);
  EXPECT_EQ(status.processed, kNamed);
}

INSTANTIATE_TEST_SUITE_P(Of, CleanFaults, ::testing::ValuesIn(kKinds), support::CaseName());
INSTANTIATE_TEST_SUITE_P(Of, CleanMemory, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
