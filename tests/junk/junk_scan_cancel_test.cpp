#include <algorithm>

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

// Every element of the vocabulary, with something to find for each.
constexpr const char* kRules =
    "<Root><Category DisplayName='A'><Folder Path='{UserHome}\\Temp'/>"
    "<Category DisplayName='B'><FolderList StartPath='{Root}d' "
    "EndPath='c'/></Category>"
    "<Folder Path='{Root}empty'/></Category>"
    "<Category DisplayName='C'><ChildrenList StartPath='{Root}d'/>"
    "<Folder Path='{Root}d' Pattern='*.log'/></Category></Root>";

class JunkScanCancel : public JunkScanTest {
 protected:
  JunkScanCancel() {
    machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"60");
    for (const TextView file :
         {u"C:\\Users\\u\\Temp\\a", u"C:\\Users\\u\\Temp\\sub\\b", u"C:\\d\\1\\c\\d.log",
          u"C:\\d\\2\\c\\e", u"C:\\d\\3\\f", u"C:\\d\\loose.log"}) {
      machine_.AddFile(file, "xy");
    }
    machine_.AddFolder(u"C:\\empty");
  }

  // The clocks may be read while the scan's own lock is held; every other call
  // is a place where another thread's cancel can come in between.
  static bool CanCancelInside(const CallRecord& record) {
    return record.call != Call::kMonotonicNanoseconds;
  }

  static bool Lists(const CallRecord& record) {
    return record.call == Call::kFindFirstBasic || record.call == Call::kFindFirst ||
           record.call == Call::kFindNext;
  }
};

TEST_F(JunkScanCancel, At_any_call_ends_the_scan_soon_with_a_prefix_of_the_report) {
  const std::vector<Row> full = Report(kRules);
  ASSERT_EQ(full.size(), 20u);
  std::uint64_t rounds = 0;
  std::size_t longest_prefix = 0;
  std::size_t different_prefixes = 0;
  for (std::uint64_t cancel_at = 1;; ++cancel_at) {
    ASSERT_LT(cancel_at, 10'000u) << "the sweep must end";
    SCOPED_TRACE(cancel_at);
    std::uint64_t calls = 0;
    std::uint64_t listings_after = 0;
    bool cancelled = false;
    const char* inside = "";
    machine_.SetHook([&](const CallRecord& record) {
      if (!CanCancelInside(record)) {
        return;
      }
      if (++calls == cancel_at) {
        EXPECT_EQ(qs_product_scan_cancel(scan_), QS_OK);
        cancelled = true;
        inside = NameOf(record.call);
      }
      listings_after += cancelled && Lists(record);
    });
    const qs_status status = scan_.Start(JunkRequest());
    machine_.SetHook(nullptr);
    if (!cancelled) {
      EXPECT_EQ(status, QS_OK);
      EXPECT_EQ(scan_tests::ReadReport(scan_), full);
      break;
    }
    ++rounds;
    SCOPED_TRACE(inside);
    EXPECT_EQ(status, QS_CANCELLED);
    EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_CANCELLED);
    EXPECT_EQ(scan_tests::Poll(scan_).status, QS_CANCELLED);
    EXPECT_EQ(scan_tests::PerformanceOf(scan_).status, QS_CANCELLED);
    EXPECT_EQ(machine_.open_handles(), 0u);
    // The end of the folder at hand, and the opening of one list, which then
    // tests before an entry.
    EXPECT_LE(listings_after, 2u);
    const std::vector<Row> rows = scan_tests::ReadReport(scan_);
    ASSERT_LE(rows.size(), full.size());
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), full.begin()))
        << ::testing::PrintToString(Outline(rows));
    different_prefixes += rows.size() > longest_prefix;
    longest_prefix = std::max(longest_prefix, rows.size());
    if (HasFailure()) {
      break;
    }
  }
  EXPECT_GT(rounds, 80u);
  EXPECT_EQ(longest_prefix, full.size());
  EXPECT_GE(different_prefixes, 8u);
}

TEST_F(JunkScanCancel, During_the_hold_ends_it_without_rows_and_without_a_look_at_the_document) {
  scan_tests::InsideCall(machine_, Call::kSleepMilliseconds, 1,
                         [&] { qs_product_scan_cancel(scan_); });
  EXPECT_EQ(Report(kRules, QS_CANCELLED).size(), 0u);
  machine_.SetHook(nullptr);
  EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_CANCELLED);
  EXPECT_EQ(machine_.CallCount(Call::kOpenFile), 0u);
}

TEST_F(JunkScanCancel, Keeps_the_rows_so_far) {
  scan_tests::InsideCall(machine_, Call::kFindFirst, 1, [&] { qs_product_scan_cancel(scan_); });
  EXPECT_EQ(
      Scanned(kRules, QS_CANCELLED),
      (Lines{"[1<0] A", "[g0<1] Temp = C:\\Users\\u\\Temp", "g0<1 Temp: C:\\Users\\u\\Temp\\a",
             "g0<1 Temp: C:\\Users\\u\\Temp\\sub\\b", "[g1<1] B"}));
  machine_.SetHook(nullptr);
}

TEST_F(JunkScanCancel, Outdoes_an_error_that_comes_after_it) {
  for (const std::string document :
       {"<Root", "<root/>", "<Root><Category/></Root>",
        "<Root><Category DisplayName='c'><Folder/></Category></Root>", "<Root/>"}) {
    scan_tests::InsideCall(machine_, Call::kReadFrom, 1, [&] { qs_product_scan_cancel(scan_); });
    EXPECT_EQ(Scan(document), QS_CANCELLED) << document;
    EXPECT_EQ(scan_tests::Poll(scan_).state, QS_STATE_CANCELLED) << document;
    machine_.SetHook(nullptr);
  }
}

TEST_F(JunkScanCancel, Leaves_the_handle_usable) {
  scan_tests::InsideCall(machine_, Call::kFindNext, 1, [&] { qs_product_scan_cancel(scan_); });
  EXPECT_EQ(Scan(kRules), QS_CANCELLED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(Report(kRules).size(), 20u);
}

}  // namespace
}  // namespace quastel::junk_tests
