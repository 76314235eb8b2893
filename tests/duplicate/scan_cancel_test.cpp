// Cancelling a duplicate scan, at every point where it can be.

#include <algorithm>
#include <atomic>
#include <string>

#include "duplicate/duplicate_fixture.h"
#include "duplicate/duplicate_scan.h"
#include "scan/product_scan.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::uint64_t kMebibyte = 1'048'576;

void AddThreeGroups(SimulatedWindows& machine) {
  machine.AddFile(u"C:\\data\\a", Bytes(90));
  machine.AddFile(u"C:\\data\\b", Bytes(90));
  machine.AddFile(u"C:\\data\\c", Bytes(3000));
  machine.AddFile(u"C:\\data\\d", Bytes(3000));
  machine.AddFile(u"C:\\data\\sub\\e", Bytes(9000));
  machine.AddFile(u"C:\\data\\sub\\f", Bytes(9000));
  machine.AddFile(u"C:\\data\\sub\\g", ChangedAt(Bytes(9000), 4500));
  machine.AddFile(u"C:\\data\\sub\\h", ChangedAt(Bytes(9000), 0));
  machine.AddFile(u"C:\\more\\i", Bytes(90));
  machine.AddFile(u"C:\\more\\j", Bytes(3000));
}

Request WholeRequest() {
  return DuplicateRequest({u"C:\\data", u"C:\\more"});
}

bool BeginsWith(const std::vector<Row>& rows, const std::vector<Row>& beginning) {
  return beginning.size() <= rows.size() &&
         std::equal(beginning.begin(), beginning.end(), rows.begin());
}

class CancelAtEveryCall : public ::testing::TestWithParam<bool> {};

TEST_P(CancelAtEveryCall, Keeps_the_rows_that_are_out_and_leaves_the_cache) {
  const bool warm = GetParam();
  std::vector<Row> full;
  {
    SimulatedWindows machine;
    AddThreeGroups(machine);
    full = Scan(WholeRequest()).rows;
    ASSERT_EQ(GroupsOf(full).size(), 3u);
  }
  int rounds = 0;
  int with_some_rows = 0;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE("call " + std::to_string(nth));
    SimulatedWindows machine;
    machine.SetProcessorCount(1);
    AddThreeGroups(machine);
    if (warm) {
      EXPECT_EQ(Scan(WholeRequest()).status, QS_OK);
      // Something is left to be compared in every stage.
      machine.AddFile(u"C:\\more\\k", Bytes(9000));
      machine.AddFile(u"C:\\more\\l", Bytes(90));
    }
    machine.AdvanceClock(1000);
    const std::optional<std::string> old_cache = machine.ContentOf(kCacheFile);
    const std::string before = machine.Describe();
    ScanHandle scan;
    std::atomic<int> seen{0};
    std::atomic<bool> writing{false};
    std::atomic<bool> cancelled{false};
    std::atomic<bool> cancelled_while_writing{false};
    machine.SetHook([&](const CallRecord& call) {
      // Read under the lock that a cancel takes.
      if (call.call == Call::kMonotonicNanoseconds) {
        return;
      }
      writing = writing || call.call == Call::kWriteTo;
      if (++seen == nth) {
        cancelled = true;
        cancelled_while_writing = writing.load();
        EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
      }
    });
    const qs_status status = scan.Start(WholeRequest());
    machine.SetHook(nullptr);
    const std::vector<Row> rows = ReadReport(scan);
    EXPECT_EQ(machine.open_handles(), 0u);
    EXPECT_FALSE(machine.Exists(kTemporaryFile));
    if (!cancelled) {
      EXPECT_EQ(status, QS_OK);
      break;
    }
    ++rounds;
    EXPECT_EQ(status, QS_CANCELLED);
    EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
    EXPECT_EQ(Poll(scan).status, QS_CANCELLED);
    if (!warm) {
      EXPECT_TRUE(BeginsWith(full, rows)) << ::testing::PrintToString(rows);
    }
    with_some_rows += !rows.empty();
    const std::optional<std::string> cache = machine.ContentOf(kCacheFile);
    if (!cancelled_while_writing) {
      EXPECT_EQ(cache, old_cache);
    } else if (cache != old_cache) {
      EXPECT_TRUE(cache && ParseCache(*cache)) << "neither the old cache nor a whole new one";
    }
    // Apart from the folder of the cache nothing was touched.
    if (cache == old_cache && old_cache) {
      EXPECT_EQ(machine.Describe(), before);
    }
    // The handle is usable again.
    EXPECT_EQ(scan.Start(WholeRequest()), QS_OK);
    EXPECT_EQ(GroupsOf(ReadReport(scan)).size(), 3u);
    if (HasFailure()) {
      return;
    }
  }
  EXPECT_GE(rounds, 100);
  EXPECT_GE(with_some_rows, 10);
}

INSTANTIATE_TEST_SUITE_P(All, CancelAtEveryCall, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& named) {
                           return named.param ? "warm" : "cold";
                         });

// A machine on which the scan is cancelled inside the nth call that fits.
class CancelledScan {
 public:
  CancelledScan() {
    machine.SetProcessorCount(1);
    machine.SetRecording(true);
  }

  qs_status Run(Request request, const std::function<bool(const CallRecord&)>& fits, int nth = 1) {
    std::atomic<int> seen{0};
    machine.SetHook([&](const CallRecord& call) {
      if (fits(call) && ++seen == nth) {
        qs_product_scan_cancel(scan);
      }
    });
    const qs_status status = scan.Start(std::move(request));
    machine.SetHook(nullptr);
    EXPECT_GE(seen, nth) << "nothing was cancelled";
    return status;
  }

  SimulatedWindows machine;
  ScanHandle scan;
};

TEST(DuplicateCancel, While_the_cache_is_read_ends_the_scan_before_the_walk) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  EXPECT_EQ(Scan(WholeRequest()).status, QS_OK);
  test.machine.ClearRecord();
  EXPECT_EQ(test.Run(WholeRequest(),
                     [](const CallRecord& call) {
                       return call.call == Call::kOpenFile && call.path == kCacheFile;
                     }),
            QS_CANCELLED);
  for (const CallRecord& call : test.machine.record()) {
    EXPECT_NE(call.call, Call::kQueryAttributes);
    EXPECT_NE(call.call, Call::kFindFirstBasic);
    EXPECT_NE(call.call, Call::kCreateFolderTree);
  }
  EXPECT_EQ(PerformanceOf(test.scan).candidates, 0u);
}

TEST(DuplicateCancel, In_the_walk_leaves_later_folders_and_roots_alone_and_opens_nothing) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  EXPECT_EQ(
      test.Run(
          WholeRequest(), [](const CallRecord& call) { return call.call == Call::kFindNext; }, 3),
      QS_CANCELLED);
  EXPECT_EQ(test.machine.CallCount(Call::kFindFirstBasic), 1u);
  EXPECT_EQ(OpenCount(test.machine), 0);
  EXPECT_EQ(test.machine.CallCount(Call::kVolumePathName), 0u);
  EXPECT_EQ(test.machine.CallCount(Call::kCreateFolderTree), 0u);
  EXPECT_EQ(RowCountOf(test.scan), 0u);
}

TEST(DuplicateCancel, Behind_the_walk_starts_no_worker) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  EXPECT_EQ(test.Run(WholeRequest(),
                     [](const CallRecord& call) { return call.call == Call::kVolumePathName; }),
            QS_CANCELLED);
  EXPECT_EQ(test.machine.CallCount(Call::kStartThread), 0u);
  EXPECT_EQ(PerformanceOf(test.scan).candidates, 10u);
}

// The openings: ten samples and heads, three tails (of the files above one block), then six whole.
class CancelInAStage : public ::testing::TestWithParam<int> {};

TEST_P(CancelInAStage, Opens_no_further_file) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  EXPECT_EQ(test.Run(WholeRequest(), OpensCandidate, GetParam()), QS_CANCELLED);
  EXPECT_EQ(OpenCount(test.machine), GetParam());
  EXPECT_EQ(test.machine.CallCount(Call::kCreateFolderTree), 0u);
  EXPECT_EQ(test.machine.open_handles(), 0u);
}

INSTANTIATE_TEST_SUITE_P(All, CancelInAStage, ::testing::Range(1, 20));

// Where a stage begins there is no call but that of its clock. That may be read under the lock
// which a cancel takes, so the flag is set by itself.
TEST(DuplicateCancel, Between_two_stages_is_seen_by_the_next) {
  int rounds = 0;
  std::vector<int> without_effect;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE("reading " + std::to_string(nth));
    SimulatedWindows machine;
    machine.SetProcessorCount(1);
    AddThreeGroups(machine);
    ProductScan scan(ScanRunners{nullptr, nullptr, duplicate::RunDuplicateScan});
    std::atomic<int> seen{0};
    std::atomic<bool> cancelled{false};
    machine.SetHook([&](const CallRecord& call) {
      if (call.call == Call::kMonotonicNanoseconds && !cancelled && ++seen == nth) {
        std::atomic_ref<std::uint32_t>(*scan.cancel_flag()) = 1;
        cancelled = true;
      }
    });
    Request request = WholeRequest();
    const qs_status status = scan.Start(request.Get());
    machine.SetHook(nullptr);
    if (!cancelled) {
      EXPECT_EQ(status, QS_OK);
      break;
    }
    ++rounds;
    EXPECT_FALSE(machine.Exists(kTemporaryFile));
    if (status != QS_CANCELLED) {
      EXPECT_EQ(status, QS_OK);
      without_effect.push_back(nth);
    }
  }
  EXPECT_GE(rounds, 2 * 8);
  // The readings of the scan's own start and end are before the flag is cleared and behind that.
  EXPECT_EQ(without_effect, (std::vector<int>{1, rounds}));
}

TEST(DuplicateCancel, In_full_hashing_keeps_the_groups_of_small_files) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  AddCache(test.machine, {{.key = u"c:\\other", .size = 1, .sample = "kept"}});
  const std::string before = test.machine.Describe();
  // Ten first looks and three tails are taken by then.
  EXPECT_EQ(test.Run(WholeRequest(), OpensCandidate, 14), QS_CANCELLED);
  const std::string key = SampleKeyOf(Bytes(90));
  EXPECT_EQ(ReadReport(test.scan),
            (std::vector<Row>{DuplicateRow(0, 1, u"C:\\data\\a", u"a", key, 90),
                              DuplicateRow(1, 1, u"C:\\data\\b", u"a", key, 90),
                              DuplicateRow(2, 1, u"C:\\more\\i", u"a", key, 90)}));
  EXPECT_EQ(Poll(test.scan).state, QS_STATE_CANCELLED);
  EXPECT_EQ(Poll(test.scan).item_count, 3u);
  EXPECT_EQ(PerformanceOf(test.scan).unhashed_groups, 1u);
  EXPECT_EQ(test.machine.Describe(), before) << "the cache is as it was";
}

TEST(DuplicateCancel, Leaves_the_group_counter_unset) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  AddThreeGroups(machine);
  ProductScan scan(ScanRunners{nullptr, nullptr, duplicate::RunDuplicateScan});
  std::atomic<int> opened{0};
  machine.SetHook([&](const CallRecord& call) {
    if (OpensCandidate(call) && ++opened == 14) {
      scan.Cancel();
    }
  });
  Request request = WholeRequest();
  EXPECT_EQ(scan.Start(request.Get()), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(scan.RowCount(), 3u) << "one group is out, but not all of them";
  EXPECT_EQ(scan.group_count(), 0u);
}

struct HugeCase {
  std::uint32_t processors;
  int read;  // the read of 1 MiB in which the cancel comes
};
void PrintTo(const HugeCase& c, std::ostream* out) {
  *out << c.processors << " processors, read " << c.read;
}

class CancelInAHugeFile : public ::testing::TestWithParam<HugeCase> {};

TEST_P(CancelInAHugeFile, Is_seen_within_one_read_of_each_worker) {
  CancelledScan test;
  test.machine.SetProcessorCount(GetParam().processors);
  for (const char16_t* path : {u"C:\\data\\a", u"C:\\data\\b"}) {
    test.machine.AddSizedFile(path, 10'240 * kMebibyte, simulated::kZeroSeed);
  }
  std::atomic<int> reads{0};
  const auto is_large_read = [&](const CallRecord& call) {
    const bool large = call.call == Call::kReadFrom && call.number == kMebibyte;
    reads += large;
    return large;
  };
  EXPECT_EQ(test.Run(WholeRequest(), is_large_read, GetParam().read), QS_CANCELLED);
  const int workers = static_cast<int>(std::min(GetParam().processors, 2u));
  // The other worker may have begun a read before it could see the cancel.
  EXPECT_GE(reads, GetParam().read);
  EXPECT_LE(reads, GetParam().read + workers - 1);
  EXPECT_EQ(RowCountOf(test.scan), 0u);
  EXPECT_EQ(test.machine.CallCount(Call::kCreateFolderTree), 0u);
}

INSTANTIATE_TEST_SUITE_P(All, CancelInAHugeFile,
                         ::testing::Values(HugeCase{1, 1}, HugeCase{1, 2}, HugeCase{1, 5},
                                           HugeCase{2, 1}, HugeCase{2, 4}));

TEST(DuplicateCancel, At_the_opening_of_a_huge_file_reads_nothing_of_it) {
  CancelledScan test;
  for (const char16_t* path : {u"C:\\data\\a", u"C:\\data\\b"}) {
    test.machine.AddSizedFile(path, 10'240 * kMebibyte, simulated::kZeroSeed);
  }
  EXPECT_EQ(test.Run(WholeRequest(), OpensCandidate, 5), QS_CANCELLED);
  for (const CallRecord& call : test.machine.record()) {
    EXPECT_FALSE(call.call == Call::kReadFrom && call.number == kMebibyte);
  }
}

TEST(DuplicateCancel, While_a_large_cache_is_written_removes_the_temporary_file) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  CacheRecords records;
  for (std::size_t i = 0; i < 50'000; ++i) {
    records.push_back({.key = u"c:\\x\\" + Wide(std::to_string(100'000 + i)),
                       .size = i,
                       .sample = std::string(60, 's')});
  }
  AddCache(test.machine, records);
  const std::string before = test.machine.Describe();
  EXPECT_EQ(test.Run(WholeRequest(),
                     [](const CallRecord& call) {
                       return call.call == Call::kOpenFile && call.path == kTemporaryFile;
                     }),
            QS_CANCELLED);
  EXPECT_EQ(test.machine.Describe(), before);
  EXPECT_EQ(test.machine.CallCount(Call::kRenameFile), 0u);
  EXPECT_EQ(GroupsOf(ReadReport(test.scan)).size(), 3u) << "the groups were out";
}

TEST(DuplicateCancel, While_the_old_cache_is_moved_away_still_ends_as_cancelled) {
  CancelledScan test;
  AddThreeGroups(test.machine);
  EXPECT_EQ(test.Run(WholeRequest(),
                     [](const CallRecord& call) { return call.call == Call::kRenameFile; }),
            QS_CANCELLED);
  EXPECT_EQ(Poll(test.scan).state, QS_STATE_CANCELLED);
  EXPECT_EQ(GroupsOf(ReadReport(test.scan)).size(), 3u);
  EXPECT_GT(CacheOf(test.machine).size(), 0u) << "it came too late to keep the new cache out";
}

TEST(DuplicateCancel, Before_the_start_is_none) {
  SimulatedWindows machine;
  AddThreeGroups(machine);
  ScanHandle scan;
  EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
  EXPECT_EQ(scan.Start(WholeRequest()), QS_OK);
  EXPECT_EQ(GroupsOf(ReadReport(scan)).size(), 3u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
