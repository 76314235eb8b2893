// Fails everything that a duplicate scan can meet, one thing after the other, without, with a part
// and with the whole of a cache, and looks at what is left each time.

#include <gtest/gtest.h>

#include <atomic>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "faults/allocation_faults.h"
#include "faults/call_sweep.h"
#include "faults/fault_scenario.h"
#include "faults/nth_time.h"
#include "platform/thread.h"
#include "support/named_case.h"
#include "support/sweep_record.h"

namespace quastel::duplicate_tests {
namespace {

using faults::AllocationFaults;
using faults::CallFault;
using faults::IsPartOf;
using faults::kTooMany;
using faults::Met;
using simulated::Repeat;

struct Start : support::NamedCase {
  bool cached;   // a scan was made before
  bool changed;  // and since then files came and went
  std::uint64_t fewest_calls;
};

// What does not depend on the other files of the report.
std::string LineOf(const Row& row) {
  return Utf8(row.path) + ", " + std::to_string(row.numbers.size) + " bytes, " +
         std::to_string(row.numbers.modified) + ", " + Utf8(row.location);
}

std::vector<std::string> LinesOf(const std::vector<Row>& rows) {
  std::vector<std::string> lines;
  for (const Row& row : rows) {
    lines.push_back(LineOf(row));
  }
  return lines;
}

const Text& LongFolder() {
  static const Text* const folder =
      new Text(u"C:\\data\\" + Text(120, Char{'f'}) + u"\\" + Text(119, Char{'g'}) + u"\\h");
  return *folder;
}

using Tree = std::map<Text, std::string>;

Tree FirstTree() {
  return {
      {u"C:\\data\\a", Bytes(90)},
      {u"C:\\data\\b", Bytes(90)},
      {u"C:\\data\\c", Bytes(3000)},
      {u"C:\\data\\d", Bytes(3000)},
      {u"C:\\data\\own size", Bytes(77)},
      {u"C:\\data\\sub\\e", Bytes(9000)},
      {u"C:\\data\\sub\\f", Bytes(9000)},
      {u"C:\\data\\sub\\g", ChangedAt(Bytes(9000), 4500)},
      {u"C:\\data\\sub\\h", ChangedAt(Bytes(9000), 0)},
      {LongFolder() + u"\\i", Bytes(9000)},
  };
}

// One machine for each round: the cache changes with every scan.
class World {
 public:
  explicit World(const Start& start, std::uint32_t processors = 1) : tree_(FirstTree()) {
    machine.SetProcessorCount(processors);
    for (const auto& [path, content] : tree_) {
      machine.AddFile(path, content);
    }
    if (start.cached) {
      EXPECT_EQ(ScanAgain().status, QS_OK);
      machine.AdvanceClock(1000);
    }
    if (start.changed) {
      for (const auto& [path, content] :
           Tree{{u"C:\\data\\j", Bytes(90)}, {u"C:\\data\\k", Bytes(9000)}}) {
        machine.AddFile(path, content);
        tree_[path] = content;
      }
      machine.Remove(u"C:\\data\\d");
      tree_.erase(u"C:\\data\\d");
    }
    old_cache = machine.ContentOf(kCacheFile);
    disk_ = DiskWithoutProfile();
    before_ = scan_tests::EverythingOf(scan_);
    machine.ClearFaults();
  }

  Outcome ScanAgain() {
    const qs_status status = Do();
    return OutcomeOf(scan_, status);
  }
  // The call of the library, and nothing but that.
  qs_status Do() { return qs_product_scan_start(scan_, record_); }
  Outcome OutcomeAfter(qs_status status) { return OutcomeOf(scan_, status); }
  void Cancel() { EXPECT_EQ(qs_product_scan_cancel(scan_), QS_OK); }

  // What holds after every round, whatever failed.
  void CheckAfter(const Outcome& outcome, const std::vector<Row>& full) {
    EXPECT_EQ(machine.open_handles(), 0u);
    EXPECT_EQ(DiskWithoutProfile(), disk_);
    if (outcome.status == QS_FAILED && outcome.poll.state != QS_STATE_FAILED) {
      EXPECT_EQ(scan_tests::EverythingOf(scan_), before_) << "it failed before it began";
    } else {
      EXPECT_EQ(outcome.poll.status, outcome.status);
      EXPECT_EQ(outcome.poll.state, outcome.status == QS_OK          ? QS_STATE_DONE
                                    : outcome.status == QS_CANCELLED ? QS_STATE_CANCELLED
                                                                     : QS_STATE_FAILED);
    }
    if (outcome.poll.state != QS_STATE_DONE || outcome.status == QS_OK) {
      EXPECT_TRUE(IsPartOf(LinesOf(outcome.rows), LinesOf(full)))
          << ::testing::PrintToString(outcome.rows);
    }
    if (outcome.status == QS_OK) {
      GroupsOf(outcome.rows);  // checks the form of the report
    }
    CheckCache();
    machine.ClearFaults();
    EXPECT_EQ(ScanAgain().status, QS_OK);
    EXPECT_EQ(ReadReport(scan_), full) << "the next scan finds everything";
    EXPECT_FALSE(machine.Exists(kTemporaryFile));
  }

  SimulatedWindows machine;
  std::optional<std::string> old_cache;

 private:
  std::string DiskWithoutProfile() const {
    std::string rest;
    std::string all = machine.Describe();
    for (std::size_t at = 0; at < all.size();) {
      const std::size_t end = all.find('\n', at) + 1;
      const std::string line = all.substr(at, end - at);
      if (line.find("\\Users") == std::string::npos) {
        rest += line;
      }
      at = end;
    }
    return rest;
  }

  // The old file, or a whole new one that says nothing false.
  void CheckCache() {
    const std::optional<std::string> bytes = machine.ContentOf(kCacheFile);
    if (bytes == old_cache) {
      return;
    }
    ASSERT_TRUE(bytes.has_value()) << "the cache is gone";
    const std::optional<CacheRecords> records = ParseCache(*bytes);
    ASSERT_TRUE(records.has_value()) << "the cache is neither the old one nor a whole one";
    for (const CacheRecord& record : *records) {
      for (const auto& [path, content] : tree_) {
        const Text enumerated = path.size() < 248 ? path : u"\\\\?\\" + path;
        Text key = enumerated;
        key[enumerated.size() - path.size()] = u'c';
        if (key != record.key) {
          continue;
        }
        EXPECT_EQ(record.size, content.size()) << Utf8(path);
        const std::string head = content.size() <= 150 ? HexOf(content) : HeadOf(content);
        EXPECT_TRUE(record.sample == SampleOf(content) || record.sample == head) << Utf8(path);
        EXPECT_TRUE(record.hash.empty() || record.hash == HashOf(content)) << Utf8(path);
      }
    }
  }

  Tree tree_;
  ScanHandle scan_;
  Request request_ = DuplicateRequest({u"C:\\data"});
  const qs_product_scan_request* const record_ = request_.Get();
  std::string disk_;
  std::string before_;  // what the handle shows
};

class Sweep : public ::testing::TestWithParam<Start> {
 protected:
  Sweep() {
    World world(GetParam());
    const Outcome outcome = world.ScanAgain();
    EXPECT_EQ(outcome.status, QS_OK);
    full_ = outcome.rows;
    new_cache_ = world.machine.ContentOf(kCacheFile);
    EXPECT_EQ(GroupsOf(full_).size(), GetParam().changed ? 2u : 3u);
    EXPECT_NE(new_cache_, world.old_cache);
  }

  // Nothing but the start of a thread can make a scan fail.
  static bool CouldNotStartAThread(const SimulatedWindows& machine) {
    for (const CallRecord& call : machine.record()) {
      if (call.call == Call::kStartThread && call.result != platform::Error::kNone) {
        return true;
      }
    }
    return false;
  }

  // A scan of a machine of its own under one fault.
  Met DoUnder(const CallFault& fault, std::uint32_t processors = 1) {
    World world(GetParam(), processors);
    world.machine.SetRecording(true);
    fault.Arm(world.machine);
    const qs_status status = world.Do();
    const Met met = Met::By(world.machine);
    world.machine.SetRecording(false);
    const Outcome outcome = world.OutcomeAfter(status);
    if (!met.call) {
      EXPECT_EQ(outcome.status, QS_OK);
      EXPECT_EQ(outcome.rows, full_);
      return met;
    }
    EXPECT_EQ(outcome.status, CouldNotStartAThread(world.machine) ? QS_FAILED : QS_OK);
    const std::optional<std::string> left = world.machine.ContentOf(kCacheFile);
    if (outcome.status == QS_FAILED) {
      EXPECT_EQ(left, world.old_cache);
    }
    if (fault.kind == CallFault::Kind::kCrash) {
      // No call before the move may touch it, none behind may undo it.
      EXPECT_TRUE(left == world.old_cache || left == new_cache_);
      old_caches_ += left == world.old_cache ? 1 : 0;
    }
    world.CheckAfter(outcome, full_);
    return met;
  }

  void SweepCalls(CallFault::Kind kind) {
    faults::SweepAndRecord(ScenarioName(), kind, GetParam().fewest_calls,
                           [this](const CallFault& fault) { return DoUnder(fault); });
  }

  static std::string ScenarioName() { return std::string("DuplicateScan_") + GetParam().name; }

  void Report(std::uint64_t rounds, std::uint64_t fewest) {
    EXPECT_GE(rounds, fewest) << "the sweep has missed something";
    std::cout << "[  rounds  ] " << rounds << std::endl;
  }

  std::vector<Row> full_;
  std::optional<std::string> new_cache_;
  std::uint64_t old_caches_ = 0;  // crashes after which the cache file was the old one
};

TEST_P(Sweep, Survives_each_call_failing_once) {
  SweepCalls(CallFault::Kind::kOnce);
}

// Their calls come in another order each time: the n-th one is any call, and stays without a
// record.
TEST_P(Sweep, Survives_each_call_of_several_workers_failing_once) {
  std::uint64_t nth = 1;
  while (nth < kTooMany && DoUnder({CallFault::Kind::kOnce, nth, std::nullopt}, 4).call) {
    ASSERT_FALSE(HasFailure()) << "call " << nth;
    ++nth;
  }
  Report(nth - 1, GetParam().fewest_calls);
}

TEST_P(Sweep, Survives_every_call_failing_from_one_on) {
  SweepCalls(CallFault::Kind::kFromThenOn);
}

TEST_P(Sweep, Leaves_the_old_or_the_new_cache_whole_when_the_system_dies_at_any_call) {
  SweepCalls(CallFault::Kind::kCrash);
  EXPECT_GT(old_caches_, 0u);
}

// ---- A cancel on top of a fault

TEST_P(Sweep, Stays_cancelled_whatever_else_fails) {
  std::uint64_t cancelled_rounds = 0;
  for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
    SCOPED_TRACE("call " + std::to_string(nth));
    World world(GetParam());
    std::atomic<bool> cancelled{false};
    world.machine.SetHook([&](const CallRecord& call) {
      const bool is_last_stage = call.call == Call::kReadFrom && call.number == 1'048'576;
      if (is_last_stage || (GetParam().cached && call.call == Call::kVolumePathName)) {
        cancelled = true;
        world.Cancel();
      }
    });
    world.machine.FailAnyCall(nth, Repeat::kOnce);
    const qs_status status = world.Do();
    world.machine.SetHook(nullptr);
    const Outcome outcome = world.OutcomeAfter(status);
    if (cancelled) {
      ++cancelled_rounds;
      EXPECT_EQ(status, QS_CANCELLED);
      EXPECT_EQ(world.machine.ContentOf(kCacheFile), world.old_cache);
    } else {
      EXPECT_TRUE(status == QS_OK || status == QS_FAILED) << status;
    }
    if (world.machine.faults_injected() == 0) {
      EXPECT_TRUE(cancelled);
      break;
    }
    world.CheckAfter(outcome, full_);
    if (HasFailure()) {
      return;
    }
  }
  EXPECT_GE(cancelled_rounds, 10u);
}

// ---- Memory

TEST_P(Sweep, Survives_every_lack_of_memory_of_the_scan_thread) {
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t nth = 1;
    for (; nth < kTooMany; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) +
                   (repeat == Repeat::kOnce ? " once" : " from then on"));
      World world(GetParam());
      qs_status status = QS_OK;
      std::uint64_t injected = 0;
      {
        AllocationFaults lack(nth, repeat);
        status = world.Do();
        injected = lack.injected();
      }
      const Outcome outcome = world.OutcomeAfter(status);
      if (injected == 0) {
        EXPECT_EQ(outcome.status, QS_OK);
        EXPECT_EQ(outcome.rows, full_);
        break;
      }
      EXPECT_TRUE(status == QS_OK || status == QS_FAILED) << status;
      if (status == QS_OK) {
        EXPECT_EQ(outcome.rows, full_) << "a success may leave nothing out";
      }
      world.CheckAfter(outcome, full_);
      if (HasFailure()) {
        return;
      }
    }
    Report(nth - 1, 40);
    support::RecordSweep(ScenarioName(), support::Swept::kMemoryFailures, nth - 1);
  }
}

// The lack of memory of one worker, from its first call to the restoring of its priority.
thread_local std::optional<AllocationFaults> lack_of_this_worker;

struct WorkerLack {
  std::uint64_t worker;  // counted over the stages: with one processor there is
                         // one in each
  std::uint64_t nth;
  Repeat repeat;
};

// Scans with it; answers how many allocations failed.
std::uint64_t DoWithWorkerLack(World& world, const WorkerLack& lack, qs_status& status) {
  std::atomic<std::uint64_t> workers{0};
  std::atomic<std::uint64_t> injected{0};
  world.machine.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kCurrentThreadPriority && ++workers == lack.worker) {
      lack_of_this_worker.emplace(lack.nth, lack.repeat);
      return;
    }
    if (call.call == Call::kSetCurrentThreadPriority && lack_of_this_worker) {
      thread_local int times = 0;
      if (++times == 2) {
        injected += lack_of_this_worker->injected();
        lack_of_this_worker.reset();
      }
    }
  });
  status = world.Do();
  world.machine.SetHook(nullptr);
  return injected;
}

// All that a worker of an unchanged tree does is to pass over its items: it needs no memory.
class WorkerSweep : public Sweep {};

TEST_P(WorkerSweep, Survives_every_lack_of_memory_of_a_worker) {
  std::uint64_t rounds = 0;
  std::uint64_t failed = 0;
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    for (std::uint64_t worker = 1; worker <= 3; ++worker) {
      for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
        SCOPED_TRACE("worker " + std::to_string(worker) + ", allocation " + std::to_string(nth));
        World world(GetParam());
        qs_status status = QS_OK;
        const std::uint64_t injected = DoWithWorkerLack(world, {worker, nth, repeat}, status);
        const Outcome outcome = world.OutcomeAfter(status);
        if (injected == 0) {
          EXPECT_EQ(status, QS_OK);
          EXPECT_EQ(outcome.rows, full_);
          break;
        }
        ++rounds;
        failed += status == QS_FAILED;
        EXPECT_TRUE(status == QS_OK || status == QS_FAILED) << status;
        EXPECT_TRUE(status == QS_OK || world.machine.ContentOf(kCacheFile) == world.old_cache);
        world.CheckAfter(outcome, full_);
        if (HasFailure()) {
          return;
        }
      }
    }
  }
  std::cout << "[  rounds  ] " << rounds << ", " << failed << " failed scans" << std::endl;
  EXPECT_GE(rounds, 5u);
  EXPECT_GE(failed, 1u);
  support::RecordSweep(ScenarioName(), support::Swept::kMemoryFailures, rounds);
}

const Start kCold = {{"cold"}, false, false, 100};
const Start kWarm = {{"warm"}, true, false, 50};
const Start kPartlyWarm = {{"partly_warm"}, true, true, 75};

INSTANTIATE_TEST_SUITE_P(All, Sweep, ::testing::Values(kCold, kWarm, kPartlyWarm),
                         support::CaseName());
INSTANTIATE_TEST_SUITE_P(All, WorkerSweep, ::testing::Values(kCold, kPartlyWarm),
                         support::CaseName());

}  // namespace
}  // namespace quastel::duplicate_tests
