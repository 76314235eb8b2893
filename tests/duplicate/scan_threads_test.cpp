// A duplicate scan with all its workers while other threads poll and cancel.

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "duplicate/duplicate_fixture.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::size_t kLargeFiles = 120;
constexpr std::size_t kSmallFiles = 60;

// Groups of six.
void AddTree(SimulatedWindows& machine) {
  machine.SetProcessorCount(16);
  for (std::size_t i = 0; i < kLargeFiles; ++i) {
    machine.AddFile(
        u"C:\\data\\d" + Wide(std::to_string(i % 7)) + u"\\large " + Wide(std::to_string(i)),
        Bytes(9000, static_cast<std::uint32_t>(i % 20)));
  }
  for (std::size_t i = 0; i < kSmallFiles; ++i) {
    machine.AddFile(u"C:\\data\\small " + Wide(std::to_string(i)),
                    Bytes(90, static_cast<std::uint32_t>(i % 10)));
  }
}

// Reads everything that a handle shows, over and over.
class Poller {
 public:
  explicit Poller(qs_product_scan* scan)
      : thread_([this, scan] {
          qs_product_scan_status last = {};
          do {
            const qs_product_scan_status status = Poll(scan);
            EXPECT_GE(status.files_visited, last.files_visited);
            EXPECT_GE(status.item_count, last.item_count);
            EXPECT_GE(status.path_published, last.path_published);
            last = status;
            const std::uint64_t count = RowCountOf(scan);
            EXPECT_GE(count, status.item_count);
            for (std::uint64_t i = rows_.size(); i < count; ++i) {
              rows_.push_back(scan_tests::ReadRow(scan, i));
            }
            scan_tests::CurrentPathOf(scan);
            EXPECT_EQ(PerformanceOf(scan).kind, QS_SCAN_KIND_DUPLICATES);
            ++rounds_;
          } while (!stop_);
        }) {}
  ~Poller() {
    if (thread_.joinable()) {
      Stop();
    }
  }

  // The rows as they were read first.
  std::vector<Row> Stop() {
    const std::uint64_t rounds = rounds_;
    while (rounds_ < rounds + 2) {
      std::this_thread::yield();  // once more, from the beginning, after the end
                                  // of the scan
    }
    stop_ = true;
    thread_.join();
    return rows_;
  }

  std::uint64_t rounds() const { return rounds_; }

 private:
  std::vector<Row> rows_;
  std::atomic<std::uint64_t> rounds_{0};
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

std::vector<Row> RowsWithoutThreads() {
  SimulatedWindows machine;
  AddTree(machine);
  machine.SetProcessorCount(1);
  std::vector<Row> rows = ScanData().rows;
  EXPECT_EQ(rows.size(), kLargeFiles + kSmallFiles);
  return rows;
}

TEST(DuplicateThreads, Sixteen_workers_and_a_poller_see_the_same_report) {
  const std::vector<Row> full = RowsWithoutThreads();
  SimulatedWindows machine;
  AddTree(machine);
  ScanHandle scan;
  // A first scan sets the kind that the poller looks for.
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\none"})), QS_OK);
  std::optional<Poller> poller;
  // The scan has begun when the poller does, and cannot end before it has read something.
  scan_tests::InsideCall(machine, Call::kFindFirstBasic, 1, [&] {
    poller.emplace(scan);
    while (poller->rounds() < 2) {
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  ASSERT_TRUE(poller.has_value());
  EXPECT_EQ(poller->Stop(), full);
  EXPECT_EQ(ReadReport(scan), full);
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 3u * 16);
}

TEST(DuplicateThreads, A_cancel_from_another_thread_at_any_time_keeps_what_is_out) {
  const std::vector<Row> full = RowsWithoutThreads();
  int cancelled = 0;
  int finished = 0;
  // The cancel comes at another opening each time, behind the last one too.
  for (int at_opening = 1; at_opening <= 620; at_opening += 31) {
    SCOPED_TRACE(at_opening);
    SimulatedWindows machine;
    AddTree(machine);
    ScanHandle scan;
    EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\none"})), QS_OK);
    machine.Remove(u"C:\\Users");
    std::atomic<int> openings{0};
    std::atomic<bool> over{false};
    std::optional<Poller> poller;
    machine.SetHook([&](const CallRecord& call) {
      if (call.call == Call::kVolumePathName) {
        poller.emplace(scan);
      }
      openings += OpensCandidate(call);
    });
    std::thread canceller([&] {
      while (openings < at_opening && !over) {
        std::this_thread::yield();
      }
      EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
    });
    const qs_status status = scan.Start(DuplicateRequest({u"C:\\data"}));
    over = true;
    canceller.join();
    machine.SetHook(nullptr);
    const std::vector<Row> rows = ReadReport(scan);
    ASSERT_TRUE(poller.has_value());
    EXPECT_EQ(poller->Stop(), rows);
    EXPECT_EQ(machine.open_handles(), 0u);
    EXPECT_FALSE(machine.Exists(kTemporaryFile));
    if (status == QS_OK) {
      ++finished;
      EXPECT_EQ(rows, full);
      EXPECT_GT(CacheOf(machine).size(), 0u);
    } else {
      ++cancelled;
      EXPECT_EQ(status, QS_CANCELLED);
      EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
      ASSERT_LE(rows.size(), full.size());
      EXPECT_TRUE(std::equal(rows.begin(), rows.end(), full.begin()));
      if (machine.Exists(kCacheFile)) {
        CacheOf(machine);  // checks that it is whole
      }
    }
    EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
    EXPECT_EQ(ReadReport(scan), full);
  }
  EXPECT_GE(cancelled, 5);
  // Two looks and a hash of each large file, one look at each small one: 420 openings.
  EXPECT_GE(finished, 1);
}

TEST(DuplicateThreads, Two_handles_with_profiles_of_their_own_scan_at_the_same_time) {
  const std::vector<Row> full = RowsWithoutThreads();
  SimulatedWindows machine;
  AddTree(machine);
  ScanHandle one;
  ScanHandle two;
  Request other_profile = DuplicateRequest({u"C:\\data"});
  other_profile.user_home = u"C:\\Users\\v";
  std::atomic<int> at_work{0};
  machine.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kVolumePathName) {
      ++at_work;
      while (at_work < 2) {
        std::this_thread::yield();
      }
    }
  });
  std::thread other([&] { EXPECT_EQ(two.Start(other_profile), QS_OK); });
  EXPECT_EQ(one.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  other.join();
  machine.SetHook(nullptr);
  EXPECT_EQ(ReadReport(one), full);
  EXPECT_EQ(ReadReport(two), full);
}

TEST(DuplicateThreads, Two_handles_with_one_profile_find_the_same) {
  const std::vector<Row> full = RowsWithoutThreads();
  for (int round = 0; round < 5; ++round) {
    SimulatedWindows machine;
    AddTree(machine);
    ScanHandle one;
    ScanHandle two;
    std::thread other([&] { EXPECT_EQ(two.Start(DuplicateRequest({u"C:\\data"})), QS_OK); });
    EXPECT_EQ(one.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
    other.join();
    EXPECT_EQ(ReadReport(one), full);
    EXPECT_EQ(ReadReport(two), full);
    EXPECT_EQ(ScanData().rows, full) << "the cache that they left does no harm";
    EXPECT_EQ(machine.open_handles(), 0u);
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
