// Fails everything that can fail in the five deletion exports, one thing after the other, and looks
// at the disk each time. Unlike the sweeps of the scans these change the disk, so every round has a
// machine of its own.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "faults/allocation_faults.h"
#include "faults/call_sweep.h"
#include "faults/nth_time.h"
#include "fs/deletion_fixture.h"
#include "platform/shell.h"
#include "support/instrumented.h"
#include "support/sweep_record.h"

namespace quastel::deletion_tests {
namespace {

using faults::AllocationFaults;
using faults::CallFault;
using faults::kTooMany;
using faults::Met;
using platform::Error;

struct Scenario : support::NamedCase {
  Text path;
  Text item;
  void (*furnish)(SimulatedWindows& machine);
  bool is_folder = false;
  bool com_before = false;  // the caller has initialised COM
};

void PlainFiles(SimulatedWindows&) {}
void AFolder(SimulatedWindows& machine) {
  machine.AddFolder(u"C:\\d\\sub\\empty");
}
void WithoutEffect(SimulatedWindows& machine) {
  machine.SetRecyclingIneffective(true);
}
void Aborted(SimulatedWindows& machine) {
  machine.SetOperationsAborted(true);
}
void OtherApartment(SimulatedWindows& machine) {
  machine.SetComMultithreaded(true);
}

Text LongPath() {
  return support::NestedTo(300, u"C:\\d");
}
Text LongSharePath() {
  return support::NestedTo(300, u"\\\\srv\\share\\d");
}

const std::vector<Scenario>& Scenarios() {
  static const std::vector<Scenario> kScenarios = {
      {{"File"}, u"C:\\d\\sub\\f", u"C:\\d\\sub\\f", PlainFiles},
      {{"EmptyFolder"}, u"C:\\d\\sub\\empty", u"C:\\d\\sub\\empty", AFolder, true},
      {{"LongPath"}, LongPath(), LongPath(), PlainFiles},
      {{"Share"}, u"\\\\srv\\share\\d\\f", u"\\\\srv\\share\\d\\f", PlainFiles},
      {{"ExtendedShare"}, u"\\\\?\\unc\\srv\\share\\d\\f", u"\\\\srv\\share\\d\\f", PlainFiles},
      {{"LongPathOnAShare"}, LongSharePath(), LongSharePath(), PlainFiles},
      {{"RelativePath"}, u"sub/f", u"C:\\d\\sub\\f", PlainFiles},
      {{"OperationWithoutEffect"}, u"C:\\d\\sub\\f", u"C:\\d\\sub\\f", WithoutEffect},
      {{"OperationAborted"}, u"C:\\d\\sub\\f", u"C:\\d\\sub\\f", Aborted},
      {{"OtherApartment"}, u"C:\\d\\sub\\f", u"C:\\d\\sub\\f", OtherApartment},
      {{"ComInitialisedBefore"}, u"C:\\d\\sub\\f", u"C:\\d\\sub\\f", PlainFiles, false, true},
  };
  return kScenarios;
}

using Case = std::tuple<Export, Scenario>;

struct CaseName {
  std::string operator()(const ::testing::TestParamInfo<Case>& info) const {
    return std::get<0>(info.param).name + std::string("_") + std::get<1>(info.param).name;
  }
};

// One machine with the item, things that look like it, and things that must not be touched.
class Round {
 public:
  explicit Round(const Case& row) : deletion_(std::get<0>(row)), scenario_(std::get<1>(row)) {
    machine.AddShare(u"\\\\srv\\share");
    for (const Text& path :
         {Text(u"C:\\d\\sub\\f"), Text(u"C:\\d\\sub\\f.txt"), Text(u"C:\\f"), Text(u"C:\\d\\f"),
          Text(u"\\\\srv\\share\\d\\f"), Text(u"\\\\srv\\share\\f"), LongPath(), LongSharePath()}) {
      machine.AddFile(path, "hello");
    }
    machine.AddLink(LinkKind::kJunction, u"C:\\d\\j", u"C:\\d\\sub");
    machine.SetCurrentFolder(u"C:\\d");
    scenario_.furnish(machine);
    before_ = DiskOf(machine);
    nodes_ = machine.node_count();
    if (scenario_.com_before) {
      EXPECT_EQ(platform::InitializeCom(), platform::kComOk);
    }
    machine.SetRecording(true);
    machine.ClearRecord();
    machine.ClearFaults();
  }
  ~Round() {
    if (scenario_.com_before) {
      platform::UninitializeCom();
    }
  }
  Round(const Round&) = delete;
  Round& operator=(const Round&) = delete;

  std::int32_t Do() {
    return answer_ = deletion_.run(scenario_.path.c_str(), {5, TicksFor(kUsualTime)});
  }

  // What holds whatever has failed.
  void CheckInvariants() {
    EXPECT_TRUE(answer_ == 0 || answer_ == 1) << answer_;
    EXPECT_EQ(machine.open_handles(), 0u);
    EXPECT_EQ(NewSince(before_, machine), Lines{});
    const Lines gone = PathsIn(GoneSince(before_, machine));
    const bool has_gone = !machine.Exists(scenario_.item);
    EXPECT_EQ(gone, has_gone ? Lines{Utf8(scenario_.item)} : Lines{});
    EXPECT_EQ(machine.node_count(), nodes_ - (has_gone ? 1 : 0));

    const bool to_bin = deletion_.recycles && !scenario_.is_folder;
    EXPECT_EQ(Utf8(machine.recycled()), to_bin && has_gone ? gone : Lines{});
    if (!deletion_.removes) {
      EXPECT_FALSE(has_gone);
    } else if (!to_bin) {
      EXPECT_EQ(answer_ == 1, has_gone) << "what goes for good is told";
    } else if (answer_ == 1 && !has_gone) {
      // The one mistake that is possible: the last question whether the file is gone has failed.
      const std::vector<simulated::CallRecord> record = machine.record();
      EXPECT_EQ(record.back().call, Call::kQueryAttributes);
      EXPECT_NE(record.back().result, Error::kNone);
    }
    CheckCom();
  }

  // A second run without faults does the rest.
  void CheckStillUsable() {
    machine.ClearFaults();
    const bool was_there = machine.Exists(scenario_.item);
    const std::int32_t second = Do();
    const bool never = deletion_.guarded && scenario_.is_folder;
    EXPECT_EQ(second, was_there && !never ? 1 : 0);
    EXPECT_EQ(machine.Exists(scenario_.item), was_there && (never || !deletion_.removes));
  }

  SimulatedWindows machine;

 private:
  void CheckCom() {
    int depth = 0;
    for (const simulated::CallRecord& record : machine.record()) {
      if (record.call == Call::kInitializeCom && record.result == Error::kNone) {
        ++depth;
      } else if (record.call == Call::kUninitializeCom) {
        --depth;
      }
      EXPECT_GE(depth, 0);
    }
    EXPECT_EQ(depth, 0) << "COM is as it was";
  }

  const Export& deletion_;
  const Scenario& scenario_;
  Lines before_;
  std::size_t nodes_ = 0;
  std::int32_t answer_ = -1;
};

class DeletionSweep : public ::testing::TestWithParam<Case> {
 protected:
  // Runs rounds 1, 2, 3, ... until one meets no fault; answers how many did.
  std::uint64_t Sweep(const std::function<std::uint64_t(Round& round, std::uint64_t nth)>& run) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("round " + std::to_string(nth));
      Round round(GetParam());
      const std::uint64_t injected = run(round, nth);
      round.CheckInvariants();
      if (HasFailure()) {
        return kTooMany;
      }
      round.CheckStillUsable();
      if (injected == 0) {
        return nth - 1;
      }
    }
    ADD_FAILURE() << "the sweep does not end";
    return kTooMany;
  }

  void SweepCalls(CallFault::Kind kind) {
    // A failure may add calls of another way: the sweep goes on until a round meets nothing.
    faults::SweepAndRecord(ScenarioName(), kind, 4, [](const CallFault& fault) {
      Round round(GetParam());
      fault.Arm(round.machine);
      round.Do();
      const Met met = Met::By(round.machine);
      round.CheckInvariants();
      if (!HasFailure()) {
        round.CheckStillUsable();
      }
      return met;
    });
  }

  static std::string ScenarioName() {
    return std::string(std::get<0>(GetParam()).name) + "_" + std::get<1>(GetParam()).name;
  }

  // The calls that a run without faults makes, by kind.
  static std::map<Call, std::uint64_t> CallsOfARun() {
    Round round(GetParam());
    round.Do();
    round.CheckInvariants();
    std::map<Call, std::uint64_t> calls;
    for (const simulated::CallRecord& record : round.machine.record()) {
      if (record.call != Call::kUninitializeCom) {
        ++calls[record.call];
      }
    }
    return calls;
  }

  static std::uint64_t Sum(const std::map<Call, std::uint64_t>& calls) {
    std::uint64_t sum = 0;
    for (const auto& [call, count] : calls) {
      sum += count;
    }
    return sum;
  }
};

INSTANTIATE_TEST_SUITE_P(All, DeletionSweep,
                         ::testing::Combine(::testing::ValuesIn(kExports),
                                            ::testing::ValuesIn(Scenarios())),
                         CaseName());

TEST_P(DeletionSweep, Without_a_fault_the_item_goes) {
  Round round(GetParam());
  const bool refused = std::get<0>(GetParam()).guarded && std::get<1>(GetParam()).is_folder;
  EXPECT_EQ(round.Do(), refused ? 0 : 1);
  EXPECT_EQ(round.machine.Exists(std::get<1>(GetParam()).item),
            refused || !std::get<0>(GetParam()).removes);
  round.CheckInvariants();
}

TEST_P(DeletionSweep, Survives_each_call_failing_once) {
  SweepCalls(CallFault::Kind::kOnce);
}

TEST_P(DeletionSweep, Survives_every_call_failing_from_one_on) {
  SweepCalls(CallFault::Kind::kFromThenOn);
}

TEST_P(DeletionSweep, Survives_the_system_dying_at_each_call) {
  SweepCalls(CallFault::Kind::kCrash);
}

constexpr Error kFileErrors[] = {
    Error::kFileNotFound,    Error::kPathNotFound,      Error::kAccessDenied,
    Error::kNotEnoughMemory, Error::kNotReady,          Error::kSharingViolation,
    Error::kInvalidName,     Error::kDirectoryNotEmpty, Error{0xFFFFFFFF}};
constexpr Error kComErrors[] = {Error{0x80004005}, Error{0x8007000E}, Error{0x80070005},
                                Error{0x80040154}, Error{0x800401F0}, Error{0x80010106},
                                Error{0x80010105}, Error{0x800704C7}, Error{0x80270000}};

bool IsCom(Call call) {
  return call >= Call::kInitializeCom && call <= Call::kQueryOperationsAborted;
}

// An instrumented build takes two or three of the errors for each call, others each time.
TEST_P(DeletionSweep, Survives_each_kind_of_call_failing_with_every_error) {
  std::map<Call, std::uint64_t> calls = CallsOfARun();
  if (std::get<0>(GetParam()).recycles && !std::get<1>(GetParam()).is_folder) {
    calls.emplace(Call::kShellDelete, 1);  // the way that a failure leads to
  }
  std::uint64_t met = 0;
  std::uint64_t faults = 0;
  for (const auto& [call, count] : calls) {
    const std::vector<Error> errors =
        IsCom(call) ? std::vector<Error>(std::begin(kComErrors), std::end(kComErrors))
                    : std::vector<Error>(std::begin(kFileErrors), std::end(kFileErrors));
    for (std::uint64_t nth = 1; nth <= count; ++nth) {
      for (const Error error : errors) {
        if (!support::IsDone(++faults, 4)) {
          continue;
        }
        SCOPED_TRACE(std::string(simulated::NameOf(call)) + " " + std::to_string(nth) +
                     " fails with " + std::to_string(static_cast<std::uint32_t>(error)));
        Round round(GetParam());
        round.machine.FailCall(call, nth, Repeat::kOnce, error);
        round.Do();
        met += round.machine.faults_injected() > 0 ? 1 : 0;
        round.CheckInvariants();
        ASSERT_FALSE(HasFailure());
      }
    }
  }
  EXPECT_GE(met, Sum(CallsOfARun()) * support::Rounds<std::size_t>(std::size(kFileErrors), 2));
}

// What a first failure leads to fails as well. An instrumented build takes one pair in five, other
// ones for each first call.
TEST_P(DeletionSweep, Survives_two_calls_failing) {
  const std::uint64_t calls = Sum(CallsOfARun());
  std::uint64_t pairs = 0;
  for (std::uint64_t first = 1; first <= calls; ++first) {
    for (const Call second : {Call::kQueryAttributes, Call::kFullPathName, Call::kRemoveFile,
                              Call::kRemoveFolder, Call::kShellDelete, Call::kPerformOperations}) {
      for (std::uint64_t nth = 1; nth <= 2; ++nth) {
        if (!support::IsDone(++pairs, 5)) {
          continue;
        }
        SCOPED_TRACE("call " + std::to_string(first) + " and " + simulated::NameOf(second) + " " +
                     std::to_string(nth));
        Round round(GetParam());
        round.machine.FailAnyCall(first, Repeat::kOnce);
        round.machine.FailCall(second, nth, Repeat::kOnce);
        round.Do();
        EXPECT_GT(round.machine.faults_injected(), 0u);
        round.CheckInvariants();
        ASSERT_FALSE(HasFailure());
      }
    }
  }
}

TEST_P(DeletionSweep, Survives_each_allocation_failing) {
  std::uint64_t rounds = 0;
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    rounds += Sweep([repeat](Round& round, std::uint64_t nth) {
      std::uint64_t injected = 0;
      {
        AllocationFaults faults(nth, repeat);
        round.Do();
        injected = faults.injected();
      }
      return injected;
    });
  }
  // The full path of 32768 units, or the extended form, is more than any text holds in itself.
  EXPECT_GE(rounds, 2u);
  support::RecordSweep(ScenarioName(), support::Swept::kMemoryFailures, rounds);
}

}  // namespace
}  // namespace quastel::deletion_tests
