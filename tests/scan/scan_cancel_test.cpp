#include <algorithm>

#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

// Two roots, folders in folders, large and small files, and a protected folder.
void Furnish(SimulatedWindows& machine) {
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"60");
  machine.AddSizedFile(u"C:\\one\\a.zip", kLarge);
  machine.AddSizedFile(u"C:\\one\\b.txt", 3);
  machine.AddSizedFile(u"C:\\one\\m\\c.pdf", kLarge);
  machine.AddSizedFile(u"C:\\one\\m\\deep\\d.mkv", kLarge);
  machine.AddFolder(u"C:\\one\\n\\empty");
  machine.AddSizedFile(u"C:\\two.d\\e.jpg", kLarge);
  machine.AddSizedFile(u"C:\\two.d\\f", kLarge);
}

Request Roots() {
  return Request::ProtectedLargeFiles({u"C:\\one", u"C:\\two.d"});
}

// The clocks may be read while the scan's own lock is held; every other call is a place where
// another thread's cancel can come in between.
bool CanCancelInside(const CallRecord& record) {
  return record.call != Call::kMonotonicNanoseconds;
}

TEST(ScanCancel, At_any_call_of_a_scan_ends_it_at_once_with_a_prefix_of_the_report) {
  SimulatedWindows machine;
  Furnish(machine);
  ScanHandle scan;
  ASSERT_EQ(scan.Start(Roots()), QS_OK);
  const std::vector<Row> full = ReadReport(scan);
  ASSERT_EQ(full.size(), 5u);

  std::uint64_t rounds = 0;
  std::size_t longest_prefix = 0;
  for (std::uint64_t cancel_at = 1;; ++cancel_at) {
    ASSERT_LT(cancel_at, 10'000u) << "the sweep must end";
    SCOPED_TRACE(cancel_at);
    std::uint64_t calls = 0;
    std::uint64_t listing_calls_after = 0;
    std::uint64_t sleeps_after = 0;
    bool cancelled = false;
    const char* inside = "";
    machine.SetHook([&](const CallRecord& record) {
      if (!CanCancelInside(record)) {
        return;
      }
      if (++calls == cancel_at) {
        EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
        cancelled = true;
        inside = NameOf(record.call);
      }
      if (cancelled) {
        listing_calls_after += record.call == Call::kFindFirstBasic ||
                               record.call == Call::kFindFirst || record.call == Call::kFindNext;
        sleeps_after += record.call == Call::kSleepMilliseconds;
      }
    });
    const qs_status status = scan.Start(Roots());
    machine.SetHook(nullptr);
    if (!cancelled) {
      EXPECT_EQ(status, QS_OK);
      EXPECT_EQ(ReadReport(scan), full);
      break;
    }
    ++rounds;
    SCOPED_TRACE(inside);
    EXPECT_EQ(status, QS_CANCELLED);
    EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
    EXPECT_EQ(Poll(scan).status, QS_CANCELLED);
    EXPECT_EQ(PerformanceOf(scan).status, QS_CANCELLED);
    EXPECT_EQ(machine.open_handles(), 0u);
    EXPECT_LE(listing_calls_after, 1u);
    EXPECT_LE(sleeps_after, 1u);
    const std::vector<Row> rows = ReadReport(scan);
    EXPECT_LE(rows.size(), full.size());
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), full.begin()));
    EXPECT_EQ(Poll(scan).item_count, rows.size());
    longest_prefix = std::max(longest_prefix, rows.size());
  }
  // The hold, the root filter, the root checks, seven folders and their entries.
  EXPECT_GT(rounds, 40u);
  EXPECT_EQ(longest_prefix, full.size());
}

TEST(ScanCancel, Keeps_the_rows_appended_so_far) {
  SimulatedWindows machine;
  Furnish(machine);
  ScanHandle scan;
  // All files of C:\one have been reported when its second folder is opened.
  InsideCall(machine, Call::kFindFirstBasic, 2, [&] { qs_product_scan_cancel(scan); });
  EXPECT_EQ(scan.Start(Roots()), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(PathsOf(ReadReport(scan)), std::vector<Text>{u"C:\\one\\a.zip"});
  EXPECT_EQ(Poll(scan).files_visited, 2u);
}

TEST(ScanCancel, Leaves_the_later_roots_alone) {
  SimulatedWindows machine;
  Furnish(machine);
  machine.SetRecording(true);
  ScanHandle scan;
  InsideCall(machine, Call::kFindNext, 1, [&] { qs_product_scan_cancel(scan); });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\one", u"C:\\two.d"})), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(machine.CallCountFor(Call::kQueryAttributes, u"C:\\one"), 1u);
  EXPECT_EQ(machine.CallCountFor(Call::kQueryAttributes, u"C:\\two.d"), 0u);
}

TEST(ScanCancel, Asked_for_twice_is_one_cancel) {
  SimulatedWindows machine;
  Furnish(machine);
  ScanHandle scan;
  InsideCall(machine, Call::kFindNext, 1, [&] {
    EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
    EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK);
    EXPECT_EQ(Poll(scan).state, QS_STATE_RUNNING) << "a cancel is a request, not the end";
  });
  EXPECT_EQ(scan.Start(Roots()), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(scan.Start(Roots()), QS_OK);
}

}  // namespace
}  // namespace quastel::scan_tests
