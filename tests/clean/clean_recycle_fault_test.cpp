// The other way to clean up after a scan: the caller moves the findings to the Recycle Bin, one by
// one and each as it was seen. Any one system call or allocation of it fails, once or from then on,
// or the system dies at any call.

#include <algorithm>
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

constexpr std::size_t kNamed = 6;

class RecycledWorld : public FaultWorld {
 public:
  explicit RecycledWorld(std::uint32_t kind) : FaultWorld(kind) {
    for (const Row& row : scan_tests::ReadReport(scan)) {
      if (std::find(ids.begin(), ids.end(), row.numbers.item_id) != ids.end()) {
        rows_.push_back(row);
      }
    }
    EXPECT_EQ(rows_.size(), kNamed);
    report_ = scan_tests::EverythingOf(scan);
    answers_.assign(rows_.size(), -1);
  }

  // The calls of the library, and nothing but those.
  void Do() {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      answers_[i] =
          qs_move_snapshot_to_recycle_bin(rows_[i].path.c_str(), rows_[i].numbers.size,
                                          static_cast<std::int64_t>(rows_[i].numbers.modified));
    }
  }

  std::uint64_t gone() { return IdsOfGone().size(); }

  // What holds after every round.
  void CheckAfter() {
    machine.ClearFaults();
    CheckState();
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      EXPECT_TRUE(answers_[i] == 0 || answers_[i] == 1) << answers_[i];
      EXPECT_TRUE(answers_[i] == 0 || !machine.Exists(rows_[i].path))
          << Utf8(rows_[i].path) << " is said to be gone";
    }
    EXPECT_EQ(Clean(scan, {}), QS_OK) << "the handle is free";
    report_ = scan_tests::EverythingOf(scan);

    // A second run without faults does the rest.
    const Ids before = IdsOfGone();
    Do();
    CheckState();
    EXPECT_EQ(IdsOfGone(), ids);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      const bool was_gone = std::find(before.begin(), before.end(), ids[i]) != before.end();
      EXPECT_EQ(answers_[i], was_gone ? 0 : 1);
    }
  }

 private:
  void CheckState() {
    EXPECT_EQ(machine.open_handles(), 0u);
    CheckDisk(false);
    EXPECT_EQ(scan_tests::EverythingOf(scan), report_) << "the report knows nothing of it";
    // What has gone is in the bin, once, and nothing else is.
    std::multiset<std::string> gone;
    for (const Row& row : rows_) {
      if (!machine.Exists(row.path)) {
        gone.insert(Utf8(row.path.substr(row.path.rfind(u"C:\\"))));
      }
    }
    const Lines in_bin = Utf8(machine.recycled());
    EXPECT_EQ(std::multiset<std::string>(in_bin.begin(), in_bin.end()), gone);
  }

  std::vector<Row> rows_;
  std::vector<std::int32_t> answers_;
  std::string report_;
};

class RecycleFaults : public ::testing::TestWithParam<KindCase> {
 protected:
  // `fewest_gone`: so many files have gone in each round.
  void SweepCalls(CallFault::Kind kind, std::uint64_t fewest_gone) {
    std::set<std::uint64_t> counts;
    faults::SweepAndRecord(ScenarioName(), kind, 100, [&](const CallFault& fault) {
      RecycledWorld world(GetParam().kind);
      fault.Arm(world.machine);
      world.Do();
      const Met met = Met::By(world.machine);
      const std::uint64_t gone = world.gone();
      EXPECT_GE(gone, met.call ? fewest_gone : kNamed);
      counts.insert(gone);
      world.CheckAfter();
      return met;
    });
    EXPECT_EQ(counts.size(), kNamed + 1 - fewest_gone);
  }

  static std::string ScenarioName() { return std::string("Recycle_") + GetParam().name; }
};

TEST_P(RecycleFaults, Each_call_that_fails_once_costs_one_file_at_the_most) {
  SweepCalls(CallFault::Kind::kOnce, kNamed - 1);
}

TEST_P(RecycleFaults, Every_call_that_fails_from_one_on_leaves_what_was_moved_before) {
  SweepCalls(CallFault::Kind::kFromThenOn, 0);
}

TEST_P(RecycleFaults, When_the_system_dies_at_any_call_only_named_files_are_gone) {
  SweepCalls(CallFault::Kind::kCrash, 0);
}

TEST_P(RecycleFaults, Memory_that_is_short_at_any_place_leaves_files_and_nothing_else) {
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t nth = 1;
    for (; nth < kTooMany; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth));
      RecycledWorld world(GetParam().kind);
      std::uint64_t injected = 0;
      {
        AllocationFaults memory(nth, repeat);
        world.Do();
        injected = memory.injected();
      }
      const std::uint64_t gone = world.gone();
      EXPECT_GE(gone, injected == 0 ? kNamed : repeat == Repeat::kOnce ? kNamed - 1 : 0);
      world.CheckAfter();
      ASSERT_FALSE(HasFailure());
      if (injected == 0) {
        break;
      }
    }
    EXPECT_GE(nth, 10u) << "the sweep has missed something";
    EXPECT_LT(nth, kTooMany) << "the sweep does not end";
    support::RecordSweep(ScenarioName(), support::Swept::kMemoryFailures, nth - 1);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, RecycleFaults, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
