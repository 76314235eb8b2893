// The worker threads of a duplicate scan: how many there are, that their number shows nowhere in
// the report, and what happens when one cannot be started.

#include <atomic>
#include <initializer_list>
#include <string>

#include "duplicate/duplicate_fixture.h"
#include "platform/thread.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

using simulated::DriveOptions;
using simulated::SeekPenaltyAnswer;

constexpr DriveOptions kSolidDrive = {3, SeekPenaltyAnswer::kNoPenalty};
constexpr DriveOptions kRotationalDrive = {3, SeekPenaltyAnswer::kPenalty};
constexpr DriveOptions kSilentDrive = {3, SeekPenaltyAnswer::kFails};

struct WorkersCase : support::NamedCase {
  Text root;
  std::uint32_t processors;
  int files;
  std::uint64_t workers;  // for each stage
};

class Workers : public ::testing::TestWithParam<WorkersCase> {
 protected:
  Workers() {
    machine_.AddDrive('R', kRotationalDrive);
    machine_.AddDrive('S', kSolidDrive);
    machine_.AddDrive('U', kSilentDrive);
    machine_.AddDrive('V', {2, SeekPenaltyAnswer::kNoPenalty});
    machine_.AddShare(u"\\\\server\\share");
    machine_.SetProcessorCount(GetParam().processors);
  }

  Outcome ScanEqualFiles(std::size_t size) {
    for (int i = 0; i < GetParam().files; ++i) {
      machine_.AddFile(GetParam().root + u"\\f" + Wide(std::to_string(i)), Bytes(size));
    }
    const Outcome scan = Scan(DuplicateRequest({GetParam().root}));
    EXPECT_EQ(scan.rows.size(), static_cast<std::size_t>(GetParam().files));
    EXPECT_EQ(machine_.CallCount(Call::kJoinThread), machine_.CallCount(Call::kStartThread));
    return scan;
  }

  SimulatedWindows machine_;
};

TEST_P(Workers, Are_started_anew_for_head_tail_and_whole) {
  ScanEqualFiles(9000);
  EXPECT_EQ(machine_.CallCount(Call::kStartThread), 3 * GetParam().workers);
}

TEST_P(Workers, Are_started_once_for_small_files) {
  ScanEqualFiles(90);
  EXPECT_EQ(machine_.CallCount(Call::kStartThread), GetParam().workers);
}

INSTANTIATE_TEST_SUITE_P(
    All, Workers,
    ::testing::Values(WorkersCase{{"rotational"}, u"R:\\d", 64, 40, 2},
                      WorkersCase{{"solid"}, u"S:\\d", 64, 40, 16},
                      WorkersCase{{"unknown"}, u"U:\\d", 64, 40, 8},
                      WorkersCase{{"removable"}, u"V:\\d", 64, 40, 8},
                      WorkersCase{{"network_share"}, u"\\\\server\\share\\d", 64, 40, 8},
                      WorkersCase{{"solid_with_three_processors"}, u"S:\\d", 3, 40, 3},
                      WorkersCase{{"rotational_with_one_processor"}, u"R:\\d", 1, 40, 1},
                      WorkersCase{{"no_known_processor"}, u"S:\\d", 0, 40, 1},
                      WorkersCase{{"few_files"}, u"S:\\d", 64, 5, 5},
                      WorkersCase{{"two_files_on_a_rotational_drive"}, u"R:\\d", 64, 2, 2}),
    support::CaseName());

TEST(WorkersOfSeveralRoots, Are_two_when_one_root_is_rotational) {
  SimulatedWindows machine;
  machine.SetProcessorCount(64);
  machine.AddDrive('R', kRotationalDrive);
  machine.AddDrive('S', kSolidDrive);
  for (int i = 0; i < 40; ++i) {
    machine.AddFile(u"S:\\data\\f" + Wide(std::to_string(i)), Bytes(90));
  }
  machine.AddFolder(u"R:\\data");
  EXPECT_EQ(Scan(DuplicateRequest({u"S:\\data", u"R:\\data"})).rows.size(), 40u);
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 2u);
}

TEST(WorkersOfSeveralRoots, Are_counted_by_the_roots_that_are_walked) {
  SimulatedWindows machine;
  machine.SetProcessorCount(64);
  machine.AddDrive('S', kSolidDrive);
  machine.AddFile(u"S:\\data\\sub\\f", Bytes(90));
  machine.AddFile(u"S:\\data\\f", Bytes(90));
  machine.SetRecording(true);
  EXPECT_EQ(Scan(DuplicateRequest({u"S:\\data\\sub", u"S:\\data"})).rows.size(), 2u);
  EXPECT_EQ(machine.CallCount(Call::kVolumePathName), 1u);
  EXPECT_EQ(machine.CallCountFor(Call::kVolumePathName, u"S:\\data"), 1u);
}

// Some hundred files of several sizes: groups of all kinds, near misses, unreadable ones.
void AddMixedTree(SimulatedWindows& machine) {
  int number = 0;
  for (const std::size_t size :
       std::initializer_list<std::size_t>{0, 20, 150, 151, 3000, 4096, 4097, 8192, 8193, 30'000}) {
    for (std::uint32_t seed = 0; seed < 4; ++seed) {
      const std::string content = Bytes(size, seed % 3);
      for (int copy = 0; copy < 3; ++copy) {
        std::string name = "f" + std::to_string(number * 7919 % 1000);
        ++number;
        const Text folder = u"C:\\data\\d" + Wide(std::to_string(number % 5));
        const bool other = seed == 3 && size > 0;
        machine.AddFile(
            folder + u"\\" + Wide(name),
            other ? ChangedAt(content, size * static_cast<std::size_t>(copy) / 3) : content);
        if (number % 17 == 0) {
          machine.Deny(folder + u"\\" + Wide(name), {.opening = true});
        }
      }
    }
  }
}

TEST(WorkersAndReport, One_two_and_sixteen_give_the_same_rows_cold_and_warm) {
  SimulatedWindows machine;
  AddMixedTree(machine);
  std::vector<Row> rows;
  std::optional<std::string> cache;
  for (const std::uint32_t processors : std::initializer_list<std::uint32_t>{1, 2, 16}) {
    SCOPED_TRACE(processors);
    machine.SetProcessorCount(processors);
    if (machine.Exists(u"C:\\Users")) {
      machine.Remove(u"C:\\Users");
    }
    const Outcome cold = ScanData();
    const Outcome warm = ScanData();
    if (rows.empty()) {
      rows = cold.rows;
      cache = machine.ContentOf(kCacheFile);
    }
    EXPECT_EQ(cold.rows, rows);
    EXPECT_EQ(warm.rows, rows);
    EXPECT_EQ(machine.ContentOf(kCacheFile), cache);
  }
  EXPECT_GT(GroupsOf(rows).size(), 25u);
}

TEST(WorkersAndReport, Rotational_and_solid_drives_give_the_same_rows) {
  std::vector<Row> rows;
  for (const DriveOptions& options : {kSolidDrive, kRotationalDrive, kSilentDrive}) {
    SimulatedWindows machine;
    machine.SetProcessorCount(16);
    machine.AddDrive('D', options);
    for (int i = 0; i < 60; ++i) {
      machine.AddFile(u"D:\\data\\f" + Wide(std::to_string(i)),
                      Bytes(i % 2 == 0 ? 9000 : 90, static_cast<std::uint32_t>(i % 7)));
    }
    const Outcome scan = Scan(DuplicateRequest({u"D:\\data"}));
    if (rows.empty()) {
      rows = scan.rows;
    }
    EXPECT_EQ(scan.rows, rows);
  }
  EXPECT_EQ(GroupsOf(rows).size(), 14u);
}

// ---- Failing starts

TEST(FailingWorkers, End_the_scan_as_failed_and_leave_the_handle_usable) {
  constexpr std::uint64_t kWorkers = 4;
  for (std::uint64_t nth = 1; nth <= 3 * kWorkers; ++nth) {
    SCOPED_TRACE(nth);
    SimulatedWindows machine;
    machine.SetProcessorCount(kWorkers);
    for (int i = 0; i < 20; ++i) {
      machine.AddFile(u"C:\\data\\large " + Wide(std::to_string(i)), Bytes(9000));
    }
    machine.AddFile(u"C:\\data\\small 1", Bytes(90));
    machine.AddFile(u"C:\\data\\small 2", Bytes(90));
    const std::string before = machine.Describe();
    machine.FailCall(Call::kStartThread, nth);
    ScanHandle scan;
    EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_FAILED);
    EXPECT_EQ(Poll(scan).state, QS_STATE_FAILED);
    EXPECT_EQ(Poll(scan).status, QS_FAILED);
    EXPECT_EQ(machine.CallCount(Call::kJoinThread), nth - 1);
    EXPECT_EQ(machine.open_handles(), 0u);
    EXPECT_EQ(machine.Describe(), before) << "no cache is written";
    // Small groups were out before the last stage began.
    EXPECT_EQ(GroupsOf(ReadReport(scan)).size(), nth <= 2 * kWorkers ? 0u : 1u);

    machine.ClearFaults();
    EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
    EXPECT_EQ(RowCountOf(scan), 22u);
  }
}

TEST(FailingWorkers, Behind_a_cancel_end_the_scan_as_cancelled) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  machine.FailCall(Call::kStartThread, 1);
  ScanHandle scan;
  scan_tests::InsideCall(machine, Call::kStartThread, 1, [&] { qs_product_scan_cancel(scan); });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
}

// ---- Priority

TEST(WorkersOfAScan, Work_at_normal_priority_and_get_their_own_back) {
  SimulatedWindows machine;
  machine.SetProcessorCount(4);
  for (int i = 0; i < 20; ++i) {
    machine.AddFile(u"C:\\data\\f" + Wide(std::to_string(i)), Bytes(9000));
  }
  std::atomic<int> not_normal{0};
  std::atomic<int> opened{0};
  machine.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kCurrentThreadPriority) {
      platform::SetCurrentThreadPriority(-2);
    } else if (OpensCandidate(call)) {
      ++opened;
      not_normal += platform::CurrentThreadPriority() != platform::kPriorityNormal;
    }
  });
  machine.SetRecording(true);
  EXPECT_EQ(ScanData().rows.size(), 20u);
  machine.SetHook(nullptr);
  EXPECT_EQ(opened, 3 * 20);
  EXPECT_EQ(not_normal, 0);
  std::map<std::uint64_t, std::vector<std::int64_t>> set_by_thread;
  for (const CallRecord& call : machine.record()) {
    if (call.call == Call::kSetCurrentThreadPriority) {
      set_by_thread[call.thread].push_back(static_cast<std::int64_t>(call.number));
    }
  }
  EXPECT_EQ(set_by_thread.size(), 12u) << "four workers for each of three stages";
  for (const auto& [thread, priorities] : set_by_thread) {
    EXPECT_EQ(priorities, (std::vector<std::int64_t>{0, -2})) << thread;
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
