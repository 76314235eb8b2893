#include <string>

#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

Text Numbered(TextView prefix, unsigned number, TextView suffix) {
  const std::string digits = std::to_string(10'000 + number).substr(1);
  return Text(prefix) + Text(digits.begin(), digits.end()) + Text(suffix);
}

void AddSmallFiles(SimulatedWindows& machine, TextView folder, unsigned count) {
  for (unsigned i = 1; i <= count; ++i) {
    machine.AddSizedFile(Numbered(Text(folder) + u"\\f", i, u".txt"), 10);
  }
}

struct PathCase {
  const char* name;
  std::uint64_t milliseconds_per_file;
  std::uint64_t every;  // the current path changes with every such file
};
void PrintTo(const PathCase& c, std::ostream* out) {
  *out << c.name;
}

class CurrentPath : public ::testing::TestWithParam<PathCase> {};

TEST_P(CurrentPath, Changes_at_most_every_20_milliseconds) {
  constexpr unsigned kFiles = 60;
  SimulatedWindows machine;
  AddSmallFiles(machine, u"C:\\data", kFiles);
  ScanHandle scan;
  std::vector<Text> seen;
  // Each file costs so much; what is seen inside the tick of one file is what those before it left.
  InsideEveryCall(machine, Call::kTickMilliseconds, [&](std::uint64_t) {
    seen.push_back(CurrentPathOf(scan));
    machine.AdvanceClock(GetParam().milliseconds_per_file);
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  seen.push_back(CurrentPathOf(scan));

  ASSERT_EQ(seen.size(), kFiles + 1);
  EXPECT_EQ(seen[0], u"");
  for (unsigned file = 1; file <= kFiles; ++file) {
    // The first file is always shown.
    const auto last_shown =
        static_cast<unsigned>((file - 1) / GetParam().every * GetParam().every + 1);
    EXPECT_EQ(seen[file], Numbered(u"C:\\data\\f", last_shown, u".txt")) << file;
  }
}

INSTANTIATE_TEST_SUITE_P(All, CurrentPath,
                         ::testing::Values(PathCase{"a_clock_that_stands_still", 0, 1'000'000},
                                           PathCase{"1_ms_per_file", 1, 20},
                                           PathCase{"5_ms_per_file", 5, 4},
                                           PathCase{"19_ms_per_file", 19, 2},
                                           PathCase{"20_ms_per_file", 20, 1},
                                           PathCase{"21_ms_per_file", 21, 1}),
                         support::CaseName());

struct YieldCase {
  unsigned files;
  std::size_t yields;
};
void PrintTo(const YieldCase& c, std::ostream* out) {
  *out << c.files << " files";
}

class Yield : public ::testing::TestWithParam<YieldCase> {};

TEST_P(Yield, Comes_with_every_256th_file) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\data");
  AddSmallFiles(machine, u"C:\\data", GetParam().files);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>(GetParam().yields, 0));
  EXPECT_EQ(Poll(scan).files_visited, GetParam().files);
}

INSTANTIATE_TEST_SUITE_P(All, Yield,
                         ::testing::Values(YieldCase{0, 0}, YieldCase{255, 0}, YieldCase{256, 1},
                                           YieldCase{257, 1}, YieldCase{511, 1}, YieldCase{512, 2},
                                           YieldCase{1000, 3}));

TEST(Yields, Count_the_files_of_all_roots_together) {
  SimulatedWindows machine;
  AddSmallFiles(machine, u"C:\\a", 200);
  AddSmallFiles(machine, u"C:\\b", 200);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\a", u"C:\\b"})), QS_OK);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>{0});
}

TEST(Yields, Begin_to_count_anew_with_every_scan) {
  SimulatedWindows machine;
  AddSmallFiles(machine, u"C:\\a", 200);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\a"})), QS_OK);
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\a"})), QS_OK);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>{});
  EXPECT_EQ(Poll(scan).files_visited, 200u);
}

TEST(LiveCounters, Show_a_running_scan_what_it_has_seen_and_found) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
  machine.AddSizedFile(u"C:\\data\\b.txt", 7);
  machine.AddSizedFile(u"C:\\data\\c.txt", 0);
  machine.AddSizedFile(u"C:\\data\\sub\\d.zip", kLarge + 5);
  ScanHandle scan;
  qs_product_scan_status status = {};
  qs_product_scan_performance performance = {};
  std::vector<Row> rows;
  // The second folder is opened when all files of the first one have been looked at.
  InsideCall(machine, Call::kFindFirstBasic, 2, [&] {
    machine.AdvanceClock(3);
    status = Poll(scan);
    performance = PerformanceOf(scan);
    rows = ReadReport(scan);
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);

  EXPECT_EQ(status.state, QS_STATE_RUNNING);
  EXPECT_EQ(status.files_visited, 3u);
  EXPECT_EQ(status.bytes_visited, kLarge + 7);
  EXPECT_EQ(status.total_bytes, kLarge);
  EXPECT_EQ(status.item_count, 1u);
  EXPECT_EQ(status.status, QS_OK);
  EXPECT_EQ(performance.elapsed_us, 3'000u);
  EXPECT_EQ(performance.files_visited, 3u);
  EXPECT_EQ(performance.bytes_visited, kLarge + 7);
  EXPECT_EQ(performance.row_count, 1u);
  EXPECT_EQ(performance.item_count, 1u);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0], ReadRow(scan, 0)) << "a row never changes";

  status = Poll(scan);
  EXPECT_EQ(status.state, QS_STATE_DONE);
  EXPECT_EQ(status.files_visited, 4u);
  EXPECT_EQ(status.bytes_visited, 2 * kLarge + 12);
  EXPECT_EQ(status.total_bytes, 2 * kLarge + 5);
  EXPECT_EQ(status.item_count, 2u);
}

TEST(LiveCounters, Stay_after_the_end_and_start_at_zero_again) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
  machine.AddFolder(u"C:\\empty");
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  EXPECT_EQ(Poll(scan).files_visited, 1u);
  EXPECT_EQ(CurrentPathOf(scan), u"C:\\data\\a.zip");
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\empty"})), QS_OK);
  const qs_product_scan_status status = Poll(scan);
  EXPECT_EQ(status.files_visited, 0u);
  EXPECT_EQ(status.bytes_visited, 0u);
  EXPECT_EQ(status.total_bytes, 0u);
  EXPECT_EQ(status.item_count, 0u);
  EXPECT_EQ(CurrentPathOf(scan), u"");
}

TEST(CurrentPathOfAScan, Is_shown_at_once_by_the_next_scan_too) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\a\\one.txt", 1);
  machine.AddSizedFile(u"C:\\b\\two.txt", 1);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\a"})), QS_OK);
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\b"})), QS_OK);
  EXPECT_EQ(CurrentPathOf(scan), u"C:\\b\\two.txt");
}

TEST(PathPublished, Is_set_by_a_stage_that_names_its_path_and_by_no_progress) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    EXPECT_EQ(own.Poll().path_published, 0u);
    scan.ReportProgress(u"C:\\seen", 5);
    EXPECT_EQ(own.CurrentPath(), u"C:\\seen");
    EXPECT_EQ(own.Poll().path_published, 0u);
    scan.SetCurrentPath(u"C:\\hashed");
    EXPECT_EQ(own.CurrentPath(), u"C:\\hashed");
    EXPECT_EQ(own.Poll().path_published, 1u);
    EXPECT_EQ(own.Poll().files_visited, 1u);
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Poll().path_published, 1u);
  EXPECT_EQ(own.CurrentPath(), u"C:\\hashed");
  EXPECT_EQ(own.Run([&](ProductScan&, const OwnedRequest&) {
    EXPECT_EQ(own.Poll().path_published, 0u);
    EXPECT_EQ(own.CurrentPath(), u"");
    return QS_OK;
  }),
            QS_OK);
}

TEST(CurrentGroupOfAScan, Is_what_the_kind_named_last_and_goes_with_the_next_start) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    EXPECT_EQ(own.CurrentGroup(), u"");
    scan.SetCurrentGroup(u"One");
    scan.SetCurrentGroup(u"Two");
    EXPECT_EQ(own.CurrentGroup(), u"Two");
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.CurrentGroup(), u"Two");
  EXPECT_EQ(own.Run([&](ProductScan&, const OwnedRequest&) {
    EXPECT_EQ(own.CurrentGroup(), u"");
    return QS_OK;
  }),
            QS_OK);
}

TEST(Progress, Counts_every_file_but_only_positive_sizes) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    scan.ReportProgress(u"a", 5);
    scan.ReportProgress(u"b", 0);
    scan.ReportProgress(u"c", -7);
    scan.ReportProgress(u"d", INT64_MAX);
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Poll().files_visited, 4u);
  EXPECT_EQ(own.Poll().bytes_visited, std::uint64_t{INT64_MAX} + 5);
}

TEST(Progress, Without_a_path_shows_none) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    scan.ReportProgress(u"C:\\seen", 1);
    machine.AdvanceClock(20);
    scan.ReportProgress(nullptr, 1);
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.CurrentPath(), u"");
  EXPECT_EQ(own.Poll().files_visited, 2u);
}

}  // namespace
}  // namespace quastel::scan_tests
