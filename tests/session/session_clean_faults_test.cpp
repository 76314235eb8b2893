// Fails everything that can fail inside a clean, one after the other, and looks at what is gone.

#include <algorithm>
#include <functional>
#include <iostream>
#include <memory>

#include "faults/allocation_faults.h"
#include "faults/call_sweep.h"
#include "faults/lock_faults.h"
#include "faults/nth_time.h"
#include "session/session_fixture.h"
#include "support/sweep_record.h"

namespace quastel::session_tests {
namespace {

using faults::AllocationFaults;
using faults::CallFault;
using faults::kTooMany;
using faults::LockFaults;
using faults::Met;

// One machine, its scan, and one clean of four of its seven files, in an order of their own.
class FaultedClean {
 public:
  FaultedClean() {
    // Away from UTC, so that a time which could not be converted is another one.
    machine_.SetTimeZoneOffset(120);
    const Text long_path = support::NestedTo(300, u"C:\\t\\long");
    for (const Text& path : Paths{u"C:\\t\\f1", u"C:\\t\\f2", u"C:\\t\\m\\f3", u"C:\\t\\m\\f4",
                                  u"C:\\t\\m\\deep\\f5", long_path, u"C:\\t\\f7"}) {
      machine_.AddFile(path, "12345");
    }
    machine_.AddFile(u"C:\\other\\f1", "12345");
    EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    named_ = {u"C:\\t\\m\\f4", u"\\\\?\\" + long_path, u"C:\\t\\f1", u"C:\\t\\m\\deep\\f5"};
    ids_ = IdsOf(session_, named_);
    disk_ = DiskOf(machine_);
    machine_.ClearFaults();
    machine_.ClearRecord();
    machine_.SetRecording(true);
  }

  // The call of the library, and nothing but that.
  void Do() { status_ = session_.Clean(ids_); }

  SimulatedWindows& machine() { return machine_; }
  qs_status status() const { return status_; }
  std::size_t gone() const { return disk_.size() - DiskOf(machine_).size(); }

  // What holds whatever failed. `unmarked`: how many files may be gone and not yet be marked.
  void CheckInvariants(std::uint64_t unmarked) {
    machine_.ClearFaults();
    EXPECT_EQ(machine_.open_handles(), 0u);
    const std::uint64_t removed = gone();

    // What is gone was named, and it went in the caller's order.
    ASSERT_LE(removed, named_.size());
    Lines expected;
    for (std::uint64_t i = 0; i < removed; ++i) {
      expected.push_back(
          Utf8(named_[i].substr(0, 4) == u"\\\\?\\" ? named_[i].substr(4) : named_[i]));
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(GoneSince(disk_, machine_), expected);
    EXPECT_EQ(NewSince(disk_, machine_), Lines{});

    const CleanBlock block = CleanOf(session_);
    EXPECT_TRUE(status_ == QS_OK || status_ == QS_FAILED) << status_;
    EXPECT_EQ(block.state, StateAfter(status_));
    EXPECT_EQ(block.status, status_);
    EXPECT_LE(block.processed, removed);
    EXPECT_GE(block.processed + unmarked, removed);
    // Only a failure before the first file may leave the counters of the clean before, here 0.
    if (block.requested != ids_.size()) {
      EXPECT_EQ(block.requested, 0u);
      EXPECT_EQ(removed, 0u);
    }
    if (status_ == QS_OK) {
      EXPECT_EQ(block, Ended(QS_OK, ids_.size(), ids_.size()));
    }
    Ids marks(ids_.begin(), ids_.begin() + static_cast<std::ptrdiff_t>(block.processed));
    Ids shown = MarksOf(session_);
    // A row may be marked although counting it failed.
    EXPECT_LE(shown.size(), marks.size() + unmarked);
    for (const std::uint64_t mark : marks) {
      EXPECT_EQ(std::count(shown.begin(), shown.end(), mark), 1);
    }

    // The handle is usable: what is left of the selection can be deleted now.
    EXPECT_EQ(session_.Clean(Ids(ids_.begin() + static_cast<std::ptrdiff_t>(removed), ids_.end())),
              QS_OK);
    EXPECT_EQ(gone(), ids_.size());
    EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
    EXPECT_EQ(RowCountOf(session_), 3u);
  }

  // The calls of the clean that came before and behind the first one that failed.
  void ExpectNothingBehindTheFirstFailure() {
    const std::vector<CallRecord> record = machine_.record();
    const auto failed = std::find_if(record.begin(), record.end(), [](const CallRecord& call) {
      return call.result != platform::Error::kNone;
    });
    ASSERT_NE(failed, record.end());
    EXPECT_TRUE(std::all_of(failed + 1, record.end(),
                            [](const CallRecord& call) { return call.call != Call::kRemoveFile; }));
  }

 private:
  SimulatedWindows machine_;
  SessionHandle session_;
  Paths named_;
  Ids ids_;
  Lines disk_;
  qs_status status_ = 99;
};

// Does a clean under fault 1, 2, 3, ... until one meets no fault; `run` arms, does, and returns the
// number of faults. Returns the number of rounds.
std::uint64_t Sweep(const std::function<std::uint64_t(FaultedClean&, std::uint64_t)>& run,
                    const std::function<void(FaultedClean&)>& check) {
  for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
    SCOPED_TRACE(nth);
    auto clean = std::make_unique<FaultedClean>();
    if (run(*clean, nth) == 0) {
      EXPECT_EQ(clean->status(), QS_OK);
      EXPECT_EQ(clean->gone(), 4u);
      clean->CheckInvariants(0);
      std::cout << "[  rounds  ] " << nth - 1 << std::endl;
      return nth - 1;
    }
    check(*clean);
    if (::testing::Test::HasFailure()) {
      return nth;
    }
  }
  ADD_FAILURE() << "the sweep does not end";
  return kTooMany;
}

std::uint64_t SweepCalls(
    const std::function<void(SimulatedWindows& machine, std::uint64_t nth)>& arm) {
  return Sweep(
      [&](FaultedClean& clean, std::uint64_t nth) {
        arm(clean.machine(), nth);
        clean.Do();
        return clean.machine().faults_injected();
      },
      [](FaultedClean& clean) {
        EXPECT_EQ(clean.status(), QS_FAILED) << "no call of a clean may fail unnoticed";
        clean.ExpectNothingBehindTheFirstFailure();
        clean.CheckInvariants(0);
      });
}

// Ten calls for a file in C:\t, and two more for each further folder on the way to a file.
constexpr std::uint64_t kFewestCalls = 44;

void SweepEveryCall(CallFault::Kind kind) {
  faults::SweepAndRecord("SessionClean", kind, kFewestCalls, [](const CallFault& fault) {
    FaultedClean clean;
    fault.Arm(clean.machine());
    clean.Do();
    const Met met = Met::By(clean.machine());
    if (met.call) {
      EXPECT_EQ(clean.status(), QS_FAILED) << "no call of a clean may fail unnoticed";
      clean.ExpectNothingBehindTheFirstFailure();
    } else {
      EXPECT_EQ(clean.status(), QS_OK);
      EXPECT_EQ(clean.gone(), 4u);
    }
    clean.CheckInvariants(0);
    return met;
  });
}

TEST(SessionCleanFaults, Each_call_that_fails_once_stops_the_clean) {
  SweepEveryCall(CallFault::Kind::kOnce);
}

TEST(SessionCleanFaults, Every_call_failing_from_one_on_stops_the_clean) {
  SweepEveryCall(CallFault::Kind::kFromThenOn);
}

TEST(SessionCleanFaults, The_system_dying_at_any_call_leaves_all_that_was_not_named) {
  SweepEveryCall(CallFault::Kind::kCrash);
}

TEST(SessionCleanFaults, A_removal_that_fails_for_any_reason_stops_the_clean) {
  using platform::Error;
  for (const Error error :
       {Error::kInvalidFunction, Error::kFileNotFound, Error::kPathNotFound, Error::kAccessDenied,
        Error::kNotEnoughMemory, Error::kWriteProtect, Error::kNotReady, Error::kSharingViolation,
        Error::kBadNetworkPath, Error::kDirectoryNotEmpty}) {
    SCOPED_TRACE(static_cast<std::uint32_t>(error));
    for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
      EXPECT_EQ(SweepCalls([&](SimulatedWindows& machine, std::uint64_t nth) {
                  machine.FailCall(Call::kRemoveFile, nth, repeat, error);
                }),
                4u);
    }
  }
}

class SessionCleanMemory : public ::testing::TestWithParam<Repeat> {};

TEST_P(SessionCleanMemory, Running_out_of_it_at_any_place_fails_the_clean) {
  const std::uint64_t rounds = Sweep(
      [](FaultedClean& clean, std::uint64_t nth) {
        AllocationFaults memory(nth, GetParam());
        clean.Do();
        return memory.injected();
      },
      [](FaultedClean& clean) { clean.CheckInvariants(0); });
  EXPECT_GE(rounds, 5u);
  support::RecordSweep("SessionClean", support::Swept::kMemoryFailures, rounds);
}

TEST_P(SessionCleanMemory, Locks_that_fail_at_any_place_fail_the_clean) {
  EXPECT_GE(Sweep(
                [](FaultedClean& clean, std::uint64_t nth) {
                  LockFaults locks(nth, GetParam());
                  clean.Do();
                  return locks.injected();
                },
                [](FaultedClean& clean) {
                  EXPECT_EQ(clean.status(), QS_FAILED);
                  // A file may be gone when its row cannot be locked for the mark.
                  clean.CheckInvariants(1);
                }),
            6u);
}

INSTANTIATE_TEST_SUITE_P(All, SessionCleanMemory,
                         ::testing::Values(Repeat::kOnce, Repeat::kFromThenOn), RepeatName());

}  // namespace
}  // namespace quastel::session_tests
