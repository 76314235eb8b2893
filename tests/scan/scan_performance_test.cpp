#include <cstring>
#include <stdexcept>

#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

using Performance = qs_product_scan_performance;

TEST(ScanPerformance, Times_the_root_filter_and_the_walk_and_no_other_stage) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\one\\a.zip", kLarge);
  machine.AddSizedFile(u"C:\\one\\sub\\b.zip", kLarge);
  machine.AddSizedFile(u"C:\\two\\c.txt", 1);
  ScanHandle scan;
  // Short paths and no protection: only the filter resolves names, only the walk lists folders.
  std::uint64_t resolved = 0;
  std::uint64_t listed = 0;
  machine.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kFullPathName) {
      ++resolved;
      machine.AdvanceClock(7);
    } else if (record.call == Call::kFindFirstBasic) {
      ++listed;
      machine.AdvanceClock(11);
    }
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\one", u"C:\\two"})), QS_OK);
  machine.SetHook(nullptr);
  ASSERT_GT(resolved, 0u);
  ASSERT_EQ(listed, 3u);

  Performance expected = {};
  expected.size = 192;
  expected.kind = QS_SCAN_KIND_LARGE_FILES;
  expected.elapsed_us = resolved * 7'000 + listed * 11'000;
  expected.filter_roots_us = resolved * 7'000;
  expected.walk_us = listed * 11'000;
  expected.files_visited = 3;
  expected.bytes_visited = 2 * kLarge + 1;
  expected.row_count = 2;
  expected.item_count = 2;
  const Performance actual = PerformanceOf(scan);
  EXPECT_EQ(std::memcmp(&actual, &expected, sizeof(actual)), 0)
      << "elapsed " << actual.elapsed_us << " filter " << actual.filter_roots_us << " walk "
      << actual.walk_us << " expected " << expected.filter_roots_us << ", " << expected.walk_us;
}

TEST(ScanPerformance, Times_the_walk_of_a_cancelled_scan_too) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\one\\a.zip", kLarge);
  ScanHandle scan;
  InsideCall(machine, Call::kFindNext, 1, [&] {
    machine.AdvanceClock(9);
    qs_product_scan_cancel(scan);
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\one"})), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(PerformanceOf(scan).walk_us, 9'000u);
  EXPECT_EQ(PerformanceOf(scan).elapsed_us, 9'000u);
  EXPECT_EQ(PerformanceOf(scan).status, QS_CANCELLED);
}

TEST(ScanPerformance, Elapsed_time_begins_with_the_hold) {
  SimulatedWindows machine;
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"40");
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\"})), QS_OK);
  EXPECT_EQ(PerformanceOf(scan).elapsed_us, 40'000u);
  EXPECT_EQ(PerformanceOf(scan).walk_us, 0u);
}

TEST(ScanPerformance, Is_live_while_the_scan_runs_and_frozen_afterwards) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    EXPECT_EQ(own.Performance().elapsed_us, 0u);
    machine.AdvanceClock(2);
    EXPECT_EQ(own.Performance().elapsed_us, 2'000u);
    scan.ReportProgress(u"a", 5);
    scan.AppendRow(RowOf(RowKind::kGroup, 1, 0, u"g"));
    scan.AppendRow(RowOf(RowKind::kJunk, 1, 5, u"a"));
    const Performance live = own.Performance();
    EXPECT_EQ(live.files_visited, 1u);
    EXPECT_EQ(live.bytes_visited, 5u);
    EXPECT_EQ(live.row_count, 2u);
    EXPECT_EQ(live.item_count, 1u);
    EXPECT_EQ(live.status, QS_OK);
    machine.AdvanceClock(3);
    return QS_NOT_FOUND;
  }),
            QS_NOT_FOUND);
  const Performance after = own.Performance();
  EXPECT_EQ(after.elapsed_us, 5'000u);
  EXPECT_EQ(after.files_visited, 1u);
  EXPECT_EQ(after.bytes_visited, 5u);
  EXPECT_EQ(after.row_count, 2u);
  EXPECT_EQ(after.item_count, 1u);
  EXPECT_EQ(after.status, QS_NOT_FOUND);
  machine.AdvanceClock(1'000);
  const Performance later = own.Performance();
  EXPECT_EQ(std::memcmp(&after, &later, sizeof(after)), 0);
}

TEST(ScanPerformance, Is_never_negative_when_the_clock_goes_back) {
  SimulatedWindows machine;
  OwnKindScan own;
  // Wraps around to five milliseconds back.
  const std::uint64_t back = 0 - std::uint64_t{5};
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    PerfTimer timer(scan, &Performance::walk_us);
    machine.AdvanceClock(back);
    EXPECT_EQ(own.Performance().elapsed_us, 0u);
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Performance().elapsed_us, 0u);
  EXPECT_EQ(own.Performance().walk_us, 0u);
}

TEST(ScanPerformance, Names_the_kind_of_the_last_start) {
  SimulatedWindows machine;
  OwnKindScan own;
  for (std::uint32_t kind = 0; kind <= 2; ++kind) {
    Request request = Request::LargeFiles({u"C:\\"});
    request.kind = kind;
    EXPECT_EQ(own.Run(request,
                      [&](ProductScan&, const OwnedRequest&) {
                        EXPECT_EQ(own.Performance().kind, kind);
                        return QS_OK;
                      }),
              QS_OK);
    EXPECT_EQ(own.Performance().kind, kind);
  }
}

TEST(PerformanceFields, Keep_the_last_value_that_is_set) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([](ProductScan& scan, const OwnedRequest&) {
    scan.SetPerformanceField(&Performance::candidates, 3);
    scan.SetPerformanceField(&Performance::candidates, 8);
    scan.SetPerformanceField(&Performance::sampled_items, UINT64_MAX);
    scan.SetPerformanceField(&Performance::hashed_items, 2);
    scan.SetPerformanceField(&Performance::unhashed_groups, 1);
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Performance().candidates, 8u);
  EXPECT_EQ(own.Performance().sampled_items, UINT64_MAX);
  EXPECT_EQ(own.Performance().hashed_items, 2u);
  EXPECT_EQ(own.Performance().unhashed_groups, 1u);
  EXPECT_EQ(own.Run([](ProductScan&, const OwnedRequest&) { return QS_OK; }), QS_OK);
  EXPECT_EQ(own.Performance().candidates, 0u);
}

TEST(PerformanceTimes, Add_up_in_whole_microseconds_and_never_go_back) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([](ProductScan& scan, const OwnedRequest&) {
    scan.AddPerformanceTime(&Performance::hash_us, 1'999);
    scan.AddPerformanceTime(&Performance::hash_us, 999);
    scan.AddPerformanceTime(&Performance::hash_us, 5'000);
    scan.AddPerformanceTime(&Performance::hash_us, -60'000);
    scan.AddPerformanceTime(&Performance::sample_us, -1);
    return QS_OK;
  }),
            QS_OK);
  EXPECT_EQ(own.Performance().hash_us, 6u);
  EXPECT_EQ(own.Performance().sample_us, 0u);
}

TEST(PerfTimer, Adds_the_time_of_its_scope_to_its_own_field) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    {
      PerfTimer timer(scan, &Performance::sample_us);
      machine.AdvanceClock(2);
      EXPECT_EQ(own.Performance().sample_us, 0u) << "the time is known when it is over";
    }
    machine.AdvanceClock(100);
    {
      PerfTimer timer(scan, &Performance::sample_us);
      machine.AdvanceClock(3);
    }
    {
      PerfTimer outer(scan, &Performance::plan_hashes_us);
      PerfTimer inner(scan, &Performance::group_by_hash_us);
      machine.AdvanceClock(4);
    }
    return QS_OK;
  }),
            QS_OK);
  const Performance performance = own.Performance();
  EXPECT_EQ(performance.sample_us, 5'000u);
  EXPECT_EQ(performance.plan_hashes_us, 4'000u);
  EXPECT_EQ(performance.group_by_hash_us, 4'000u);
  EXPECT_EQ(performance.elapsed_us, 109'000u);
}

TEST(PerfTimer, Counts_a_scope_that_an_exception_ends) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) -> qs_status {
    PerfTimer timer(scan, &Performance::load_rules_us);
    machine.AdvanceClock(6);
    throw std::runtime_error("the document is gone");
  }),
            QS_FAILED);
  EXPECT_EQ(own.Performance().load_rules_us, 6'000u);
}

}  // namespace
}  // namespace quastel::scan_tests
