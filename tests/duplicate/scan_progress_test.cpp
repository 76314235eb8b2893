// What a poller sees of a duplicate scan: counters, the current path of walk and stages, and
// whether a path was published.

#include <string>

#include "duplicate/duplicate_fixture.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

using scan_tests::CurrentPathOf;

Text Numbered(TextView prefix, std::size_t number) {
  return Text(prefix) + Wide(std::to_string(10'000 + number).substr(1));
}

// Files whose sizes are all their own, or all the same.
void AddFiles(SimulatedWindows& machine, std::size_t count, bool own_sizes) {
  for (std::size_t i = 0; i < count; ++i) {
    machine.AddSizedFile(Numbered(u"C:\\data\\f", i), own_sizes ? 1000 + i : 9000);
  }
}

struct PathThrottleCase : support::NamedCase {
  std::uint64_t milliseconds_per_file;
  std::size_t every;  // such a file is shown
};

class DuplicatePath : public ::testing::TestWithParam<PathThrottleCase> {
 protected:
  static constexpr std::size_t kFiles = 60;

  std::size_t LastShown(std::size_t file) const {
    return file / GetParam().every * GetParam().every;
  }
};

TEST_P(DuplicatePath, Changes_in_the_walk_at_most_every_20_milliseconds) {
  SimulatedWindows machine;
  AddFiles(machine, kFiles, true);
  ScanHandle scan;
  std::vector<Text> seen;
  scan_tests::InsideEveryCall(machine, Call::kTickMilliseconds, [&](std::uint64_t) {
    seen.push_back(CurrentPathOf(scan));
    machine.AdvanceClock(GetParam().milliseconds_per_file);
  });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  seen.push_back(CurrentPathOf(scan));
  ASSERT_EQ(seen.size(), kFiles + 1);
  EXPECT_EQ(seen[0], u"");
  for (std::size_t file = 0; file < kFiles; ++file) {
    EXPECT_EQ(seen[file + 1], Numbered(u"C:\\data\\f", LastShown(file))) << file;
  }
}

TEST_P(DuplicatePath, Changes_in_each_stage_at_most_every_20_milliseconds) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  AddFiles(machine, kFiles, false);
  ScanHandle scan;
  // The path that is shown while a file is opened, in its three stages.
  std::vector<Text> seen;
  machine.SetHook([&](const CallRecord& call) {
    if (OpensCandidate(call)) {
      seen.push_back(CurrentPathOf(scan));
      machine.AdvanceClock(GetParam().milliseconds_per_file);
    }
  });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  ASSERT_EQ(seen.size(), 3 * kFiles);
  for (std::size_t i = 0; i < seen.size(); ++i) {
    EXPECT_EQ(seen[i], Numbered(u"C:\\data\\f", LastShown(i % kFiles)))
        << "stage " << i / kFiles << ", file " << i % kFiles;
  }
}

INSTANTIATE_TEST_SUITE_P(All, DuplicatePath,
                         ::testing::Values(PathThrottleCase{{"a_clock_that_stands_still"}, 0, 1000},
                                           PathThrottleCase{{"1_ms_per_file"}, 1, 20},
                                           PathThrottleCase{{"5_ms_per_file"}, 5, 4},
                                           PathThrottleCase{{"19_ms_per_file"}, 19, 2},
                                           PathThrottleCase{{"20_ms_per_file"}, 20, 1},
                                           PathThrottleCase{{"21_ms_per_file"}, 21, 1}),
                         support::CaseName());

TEST(PathPublished, Is_set_by_the_first_file_that_is_compared_and_not_by_the_walk) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  AddFiles(machine, 3, false);
  ScanHandle scan;
  std::vector<std::uint32_t> in_walk;
  std::vector<std::uint32_t> while_comparing;
  machine.SetHook([&](const CallRecord& call) {
    if (OpensCandidate(call)) {
      while_comparing.push_back(Poll(scan).path_published);
    } else if (call.call == Call::kTickMilliseconds || call.call == Call::kVolumePathName) {
      in_walk.push_back(Poll(scan).path_published);
    }
  });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  EXPECT_EQ(in_walk, std::vector<std::uint32_t>(4, 0));
  EXPECT_EQ(while_comparing, std::vector<std::uint32_t>(9, 1));
  EXPECT_EQ(Poll(scan).path_published, 1u) << "it stays";
}

TEST(PathPublished, Stays_unset_when_no_file_is_compared) {
  SimulatedWindows machine;
  AddFiles(machine, 5, true);
  EXPECT_EQ(ScanData().poll.path_published, 0u);
}

TEST(PathPublished, Stays_unset_when_the_cache_knows_every_file) {
  SimulatedWindows machine;
  AddFiles(machine, 5, false);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  EXPECT_EQ(Poll(scan).path_published, 1u);
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  EXPECT_EQ(Poll(scan).path_published, 0u);
  EXPECT_EQ(RowCountOf(scan), 5u);
}

TEST(DuplicateCounters, Count_each_file_once_and_move_in_the_walk_only) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  AddFiles(machine, 10, false);
  machine.AddSizedFile(u"C:\\data\\pagefile.sys", 5);
  machine.AddSizedFile(u"C:\\data\\empty", 0);
  ScanHandle scan;
  std::vector<std::uint64_t> in_walk;
  machine.SetHook([&](const CallRecord& call) {
    if (call.call == Call::kTickMilliseconds) {
      in_walk.push_back(Poll(scan).files_visited);
    } else if (OpensCandidate(call)) {
      const qs_product_scan_status status = Poll(scan);
      EXPECT_EQ(status.state, QS_STATE_RUNNING);
      EXPECT_EQ(status.files_visited, 12u);
      EXPECT_EQ(status.bytes_visited, 10u * 9000 + 5);
    }
  });
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  EXPECT_EQ(in_walk, (std::vector<std::uint64_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}))
      << "a file is counted before its path is shown";
  EXPECT_EQ(Poll(scan).files_visited, 12u);
  EXPECT_EQ(PerformanceOf(scan).files_visited, 12u);
  EXPECT_EQ(PerformanceOf(scan).bytes_visited, 10u * 9000 + 5);
}

struct YieldCase {
  std::size_t files;
  std::size_t yields;
};
void PrintTo(const YieldCase& c, std::ostream* out) {
  *out << c.files << " files";
}

class DuplicateYield : public ::testing::TestWithParam<YieldCase> {};

TEST_P(DuplicateYield, Comes_with_every_256th_file_of_the_walk) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\data");
  AddFiles(machine, GetParam().files, true);
  EXPECT_EQ(ScanData().performance.candidates, GetParam().files);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>(GetParam().yields, 0));
}

INSTANTIATE_TEST_SUITE_P(All, DuplicateYield,
                         ::testing::Values(YieldCase{0, 0}, YieldCase{255, 0}, YieldCase{256, 1},
                                           YieldCase{511, 1}, YieldCase{512, 2},
                                           YieldCase{1000, 3}));

TEST(DuplicateYields, Count_paging_files_and_files_of_all_roots) {
  SimulatedWindows machine;
  for (std::size_t i = 0; i < 128; ++i) {
    machine.AddSizedFile(Numbered(u"C:\\a\\d", i) + u"\\pagefile.sys", 10);
    machine.AddSizedFile(Numbered(u"C:\\b\\f", i), 5000 + i);
  }
  EXPECT_EQ(Scan(DuplicateRequest({u"C:\\a", u"C:\\b"})).status, QS_OK);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>{0});
}

TEST(DuplicateGroupName, Is_not_set_by_this_kind_of_scan) {
  SimulatedWindows machine;
  AddFiles(machine, 3, false);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  EXPECT_EQ(scan_tests::CurrentGroupOf(scan), u"");
  EXPECT_EQ(RowCountOf(scan), 3u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
