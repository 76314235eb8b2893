// The performance record of a duplicate scan: its four counters and the timers of its stages.

#include <cstring>
#include <initializer_list>
#include <string>

#include "duplicate/duplicate_fixture.h"

namespace quastel::duplicate_tests {
namespace {

using Performance = qs_product_scan_performance;

// A group of small files, a group of large ones, a near miss, a file of its own size.
void AddSevenFiles(SimulatedWindows& machine) {
  machine.AddFile(u"C:\\data\\a", Bytes(90));
  machine.AddFile(u"C:\\data\\b", Bytes(90));
  machine.AddFile(u"C:\\data\\c", Bytes(9000));
  machine.AddFile(u"C:\\data\\d", Bytes(9000));
  machine.AddFile(u"C:\\data\\e", ChangedAt(Bytes(9000), 4500));
  machine.AddFile(u"C:\\data\\f", ChangedAt(Bytes(9000), 0));
  machine.AddFile(u"C:\\data\\g", Bytes(9001));
}

std::uint64_t At(const Performance& performance, std::size_t offset) {
  std::uint64_t value = 0;
  std::memcpy(&value, reinterpret_cast<const char*>(&performance) + offset, sizeof(value));
  return value;
}

TEST(DuplicatePerformance, Counts_candidates_samples_hashes_and_small_groups) {
  SimulatedWindows machine;
  AddSevenFiles(machine);
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.performance.kind, QS_SCAN_KIND_DUPLICATES);
  EXPECT_EQ(At(scan.performance, 104), 7u) << "candidates";
  EXPECT_EQ(At(scan.performance, 112), 6u) << "with a sample";
  EXPECT_EQ(At(scan.performance, 120), 3u) << "hashed in full";
  EXPECT_EQ(At(scan.performance, 128), 1u) << "groups without a hash";
  EXPECT_EQ(At(scan.performance, 136), 4u) << "rows";
  EXPECT_EQ(At(scan.performance, 144), 4u) << "items";
  EXPECT_EQ(scan.performance.status, QS_OK);
  for (const std::uint32_t reserved : scan.performance.reserved) {
    EXPECT_EQ(reserved, 0u);
  }
}

TEST(DuplicatePerformance, Counters_are_there_when_the_next_stage_begins) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  AddSevenFiles(machine);
  ScanHandle scan;
  std::vector<Performance> at_open;
  machine.SetHook([&](const CallRecord& call) {
    if (OpensCandidate(call)) {
      at_open.push_back(PerformanceOf(scan));
    }
  });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  // Six heads and samples, three tails, three whole files.
  ASSERT_EQ(at_open.size(), 12u);
  EXPECT_EQ(at_open.front().candidates, 7u);
  EXPECT_EQ(at_open[8].sampled_items, 0u) << "the second look is part of the sampling";
  EXPECT_EQ(at_open[9].sampled_items, 6u);
  EXPECT_EQ(at_open[9].unhashed_groups, 1u);
  EXPECT_EQ(at_open[9].row_count, 2u) << "small groups are out before anything is hashed";
  EXPECT_EQ(at_open[11].hashed_items, 0u);
}

TEST(DuplicatePerformance, Times_every_stage_and_nothing_else) {
  SimulatedWindows machine;
  AddSevenFiles(machine);
  // Each look at the clock takes a millisecond: a timer that runs shows one at least.
  scan_tests::InsideEveryCall(machine, Call::kMonotonicNanoseconds,
                              [&](std::uint64_t) { machine.AdvanceClock(1); });
  const Outcome scan = ScanData();
  machine.SetHook(nullptr);
  std::uint64_t sum = 0;
  for (const std::size_t offset :
       std::initializer_list<std::size_t>{16, 32, 40, 48, 56, 64, 72, 80}) {
    EXPECT_GE(At(scan.performance, offset), 1000u) << offset;
    sum += At(scan.performance, offset);
  }
  EXPECT_EQ(At(scan.performance, 24), 0u) << "no rule document is loaded";
  EXPECT_LE(sum, scan.performance.elapsed_us);
}

struct StageTimes {
  std::uint64_t filter, walk, by_size, sample, keys, plan, hash, by_hash;

  friend bool operator==(const StageTimes&, const StageTimes&) = default;
};
void PrintTo(const StageTimes& t, std::ostream* out) {
  *out << "filter " << t.filter << ", walk " << t.walk << ", by size " << t.by_size << ", sample "
       << t.sample << ", keys " << t.keys << ", plan " << t.plan << ", hash " << t.hash
       << ", by hash " << t.by_hash;
}
StageTimes TimesOf(const Performance& p) {
  return {p.filter_roots_us, p.walk_us,        p.group_by_size_us, p.sample_us,
          p.sample_keys_us,  p.plan_hashes_us, p.hash_us,          p.group_by_hash_us};
}

// Where the time of a call goes that takes a millisecond.
StageTimes TimesWhen(const std::function<bool(const CallRecord&)>& takes_a_millisecond,
                     std::uint64_t* elapsed = nullptr) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  AddSevenFiles(machine);
  machine.SetHook([&](const CallRecord& call) {
    if (takes_a_millisecond(call)) {
      machine.AdvanceClock(1);
    }
  });
  const Outcome scan = ScanData();
  machine.SetHook(nullptr);
  EXPECT_EQ(GroupsOf(scan.rows).size(), 2u);
  if (elapsed != nullptr) {
    *elapsed = scan.performance.elapsed_us;
  }
  return TimesOf(scan.performance);
}

TEST(DuplicatePerformance, Gives_the_time_of_the_walk_to_the_walk) {
  const StageTimes times =
      TimesWhen([](const CallRecord& call) { return call.call == Call::kFindNext; });
  EXPECT_GE(times.walk, 7'000u);
  EXPECT_EQ(times, (StageTimes{0, times.walk, 0, 0, 0, 0, 0, 0}));
}

TEST(DuplicatePerformance,
     Gives_the_time_of_both_looks_to_the_sampling_and_of_the_third_to_hashing) {
  const StageTimes times = TimesWhen(OpensCandidate);
  EXPECT_EQ(times, (StageTimes{0, 0, 0, 9'000, 0, 0, 3'000, 0}));
}

TEST(DuplicatePerformance, Gives_the_time_of_the_cache_and_of_the_storage_probe_to_no_stage) {
  std::uint64_t elapsed = 0;
  const StageTimes times = TimesWhen(
      [](const CallRecord& call) {
        return IsCachePath(call.path) || call.call == Call::kVolumePathName ||
               call.call == Call::kQueryDriveType || call.call == Call::kQuerySeekPenalty;
      },
      &elapsed);
  EXPECT_EQ(times, StageTimes());
  EXPECT_GE(elapsed, 7'000u);
}

TEST(DuplicatePerformance, Of_an_uncompared_tree_has_no_items_and_all_candidates) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9001));
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.performance.candidates, 2u);
  EXPECT_EQ(scan.performance.sampled_items, 0u);
  EXPECT_EQ(scan.performance.hashed_items, 0u);
  EXPECT_EQ(scan.performance.unhashed_groups, 0u);
}

TEST(DuplicatePerformance, Begins_anew_with_every_scan) {
  SimulatedWindows machine;
  AddSevenFiles(machine);
  machine.AddFolder(u"C:\\empty");
  ScanHandle scan;
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  EXPECT_EQ(PerformanceOf(scan).candidates, 7u);
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\empty"})), QS_OK);
  EXPECT_EQ(PerformanceOf(scan).candidates, 0u);
  EXPECT_EQ(PerformanceOf(scan).sampled_items, 0u);
  EXPECT_EQ(PerformanceOf(scan).hashed_items, 0u);
  EXPECT_EQ(PerformanceOf(scan).unhashed_groups, 0u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
