#include <algorithm>
#include <optional>

#include "session/session_fixture.h"
#include "support/named_case.h"

namespace quastel::session_tests {
namespace {

struct HoldCase : support::NamedCase {
  std::optional<Text> value;
  std::vector<std::uint32_t> sleeps;
};

const std::vector<std::uint32_t> kFiveSeconds(200, 25);

class SessionHold : public SessionTest, public ::testing::WithParamInterface<HoldCase> {};

TEST_P(SessionHold, Delays_a_scan_in_slices_and_no_clean) {
  AddFiles(2);
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", GetParam().value);
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  EXPECT_EQ(machine_.sleeps(), GetParam().sleeps);
  EXPECT_EQ(machine_.CallCount(Call::kEnvironmentVariable), 1u);
  EXPECT_EQ(RowCountOf(session_), 2u);
  EXPECT_EQ(session_.Clean({0, 1}), QS_OK);
  EXPECT_EQ(machine_.sleeps(), GetParam().sleeps);
  EXPECT_EQ(machine_.CallCount(Call::kEnvironmentVariable), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    All, SessionHold,
    ::testing::Values(HoldCase{{"absent"}, std::nullopt, {}}, HoldCase{{"none"}, u"0", {}},
                      HoldCase{{"one_slice"}, u"25", {25}},
                      HoldCase{{"a_slice_and_a_rest"}, u"30", {25, 5}},
                      HoldCase{{"the_cap"}, u"5000", kFiveSeconds},
                      HoldCase{{"far_above_the_cap"}, u"9000", kFiveSeconds},
                      HoldCase{{"minus_one_wraps_to_the_cap"}, u"-1", kFiveSeconds},
                      HoldCase{{"no_digits"}, u"abc", {}},
                      HoldCase{{"leading_digits"}, u"12ms", {12}},
                      HoldCase{{"15_units"}, u"000000000000030", {25, 5}},
                      HoldCase{{"16_units_are_ignored"}, u"0000000000000030", {}}),
    support::CaseName());

class SessionScanCancel : public SessionTest {};

TEST_F(SessionScanCancel, Within_the_hold_ends_the_scan_after_its_slice_without_rows) {
  AddFiles(2);
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"100");
  std::size_t slept = 0;
  for (std::uint64_t slice = 1; slice <= 4; ++slice) {
    SCOPED_TRACE(slice);
    machine_.ClearRecord();
    InsideCall(machine_, Call::kSleepMilliseconds, slice,
               [&] { EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK); });
    EXPECT_EQ(session_.Scan(u"C:\\t"), QS_CANCELLED);
    machine_.SetHook(nullptr);
    slept += slice;
    EXPECT_EQ(machine_.sleeps(), std::vector<std::uint32_t>(slept, 25));
    EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_CANCELLED, 0, 0, 0, QS_CANCELLED}));
    EXPECT_EQ(CurrentPathOf(session_), u"");
    EXPECT_EQ(machine_.CallCount(Call::kQueryAttributes), 0u) << "the root may not be touched";
    EXPECT_EQ(machine_.CallCount(Call::kFullPathName), 0u);
  }
}

TEST_F(SessionScanCancel, Before_the_first_slice_sleeps_not_at_all) {
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"100");
  InsideCall(machine_, Call::kEnvironmentVariable, 1, [&] { qs_session_cancel_scan(session_); });
  EXPECT_EQ(session_.Scan(u"C:\\"), QS_CANCELLED);
  EXPECT_EQ(machine_.sleeps(), std::vector<std::uint32_t>{});
  EXPECT_EQ(ScanOf(session_).state, QS_STATE_CANCELLED);
}

TEST_F(SessionScanCancel, Within_the_hold_counts_for_a_root_that_does_not_exist_as_well) {
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"100");
  InsideCall(machine_, Call::kSleepMilliseconds, 2, [&] { qs_session_cancel_scan(session_); });
  EXPECT_EQ(session_.Scan(u"C:\\missing"), QS_CANCELLED);
}

// What files a cancel inside the nth conversion of a time leaves behind: the file under way is
// counted and shown, but not kept. Each is the first of its folder, where there is a conversion.
TEST_F(SessionScanCancel, At_every_file_counts_that_file_and_does_not_keep_it) {
  Paths paths;
  Text folder;
  for (std::uint64_t size = 1; size <= 6; ++size, folder += u"sub\\") {
    paths.push_back(AddFile(folder + u"a", size));
  }
  for (std::uint64_t nth = 1; nth <= paths.size(); ++nth) {
    SCOPED_TRACE(nth);
    InsideCall(machine_, Call::kToLocalFileTime, nth,
               [&] { EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK); });
    EXPECT_EQ(session_.Scan(u"C:\\t"), QS_CANCELLED);
    machine_.SetHook(nullptr);
    EXPECT_EQ(ScanOf(session_),
              (ScanBlock{QS_STATE_CANCELLED, nth, nth * (nth + 1) / 2, nth - 1, QS_CANCELLED}));
    EXPECT_EQ(CurrentPathOf(session_), paths[nth - 1]);
    EXPECT_EQ(PathsOf(ReadReport(session_)),
              Paths(paths.begin(), paths.begin() + static_cast<std::ptrdiff_t>(nth) - 1));
    EXPECT_EQ(session_.Clean({}), QS_UNSUPPORTED) << "a cancelled scan cannot be cleaned";
  }
}

TEST_F(SessionScanCancel, At_any_call_of_a_scan_ends_it_at_once_with_the_first_rows) {
  machine_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"60");
  AddFiles(4);
  AddFile(u"m\\c", 5);
  AddFile(u"m\\deep\\d", 6);
  machine_.AddFolder(u"C:\\t\\n\\empty");
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  const std::vector<Row> full = ReadReport(session_);
  ASSERT_EQ(full.size(), 6u);

  std::uint64_t rounds = 0;
  std::size_t longest = 0;
  for (std::uint64_t cancel_at = 1;; ++cancel_at) {
    ASSERT_LT(cancel_at, 10'000u) << "the sweep must end";
    SCOPED_TRACE(cancel_at);
    std::uint64_t calls = 0;
    std::uint64_t listing_calls_after = 0;
    std::uint64_t sleeps_after = 0;
    bool cancelled = false;
    const char* inside = "";
    machine_.SetHook([&](const CallRecord& record) {
      if (++calls == cancel_at) {
        EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK);
        EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK) << "asked for twice";
        EXPECT_EQ(ScanOf(session_).state, QS_STATE_RUNNING) << "a cancel is a request";
        cancelled = true;
        inside = NameOf(record.call);
      }
      if (cancelled) {
        listing_calls_after +=
            record.call == Call::kFindFirstBasic || record.call == Call::kFindNext;
        sleeps_after += record.call == Call::kSleepMilliseconds;
      }
    });
    const qs_status status = session_.Scan(u"C:\\t");
    machine_.SetHook(nullptr);
    if (!cancelled) {
      EXPECT_EQ(status, QS_OK) << "a cancel that came too late must not stay";
      EXPECT_EQ(ReadReport(session_), full);
      break;
    }
    ++rounds;
    SCOPED_TRACE(inside);
    const std::vector<Row> rows = ReadReport(session_);
    EXPECT_EQ(status, QS_CANCELLED);
    EXPECT_EQ(ScanOf(session_).state, QS_STATE_CANCELLED);
    EXPECT_EQ(ScanOf(session_).status, QS_CANCELLED);
    EXPECT_EQ(ScanOf(session_).row_count, rows.size());
    EXPECT_EQ(machine_.open_handles(), 0u);
    EXPECT_LE(listing_calls_after, 1u);
    EXPECT_LE(sleeps_after, 1u);
    ASSERT_LE(rows.size(), full.size());
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), full.begin()));
    longest = std::max(longest, rows.size());
  }
  // The hold, the root check, five folders and their entries.
  EXPECT_GT(rounds, 30u);
  EXPECT_EQ(longest, full.size()) << "a cancel in the last call of a walk is a cancel as well";
}

TEST_F(SessionScanCancel, Without_a_running_scan_does_nothing_and_is_not_kept) {
  AddFiles(2);
  EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK);
  EXPECT_EQ(ScanOf(session_), ScanBlock{});
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  const std::string before = EverythingOf(session_);
  EXPECT_EQ(qs_session_cancel_scan(session_), QS_OK);
  EXPECT_EQ(EverythingOf(session_), before);
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
}

TEST_F(SessionScanCancel, Of_the_clean_does_not_cancel_the_scan) {
  AddFiles(2);
  InsideEveryCall(machine_, Call::kFindNext,
                  [&](std::uint64_t) { EXPECT_EQ(qs_session_cancel_clean(session_), QS_OK); });
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  machine_.SetHook(nullptr);
  EXPECT_EQ(CleanOf(session_), CleanBlock{});
  EXPECT_EQ(session_.Clean({0}), QS_OK) << "nor is it kept for the next clean";
}

TEST_F(SessionScanCancel, Is_over_with_the_next_scan) {
  AddFiles(2);
  InsideCall(machine_, Call::kFindNext, 1, [&] { qs_session_cancel_scan(session_); });
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_CANCELLED);
  EXPECT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  EXPECT_EQ(ScanOf(session_), (ScanBlock{QS_STATE_DONE, 2, 3, 2, QS_OK}));
  EXPECT_EQ(session_.Clean({0, 1}), QS_OK);
}

}  // namespace
}  // namespace quastel::session_tests
