#include <optional>

#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

struct HoldCase {
  const char* name;
  std::optional<Text> value;
  std::vector<std::uint32_t> sleeps;
};
void PrintTo(const HoldCase& c, std::ostream* out) {
  *out << c.name;
}

const std::vector<std::uint32_t> kFiveSeconds(200, 25);

class ScanHold : public ::testing::TestWithParam<HoldCase> {};

TEST_P(ScanHold, Sleeps_in_slices_before_the_scan) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", GetParam().value);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  EXPECT_EQ(machine.sleeps(), GetParam().sleeps);
  EXPECT_EQ(RowCountOf(scan), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    All, ScanHold,
    ::testing::Values(HoldCase{"absent", std::nullopt, {}}, HoldCase{"empty", u"", {}},
                      HoldCase{"none", u"0", {}}, HoldCase{"one_millisecond", u"1", {1}},
                      HoldCase{"one_slice", u"25", {25}},
                      HoldCase{"a_slice_and_a_rest", u"30", {25, 5}},
                      HoldCase{"several_slices", u"76", {25, 25, 25, 1}},
                      HoldCase{"the_cap", u"5000", kFiveSeconds},
                      HoldCase{"above_the_cap", u"5001", kFiveSeconds},
                      HoldCase{"far_above_the_cap", u"9000", kFiveSeconds},
                      HoldCase{"minus_one_wraps_to_the_cap", u"-1", kFiveSeconds},
                      HoldCase{"more_than_32_bits", u"99999999999", kFiveSeconds},
                      HoldCase{"no_digits", u"abc", {}}, HoldCase{"leading_digits", u"12ms", {12}},
                      HoldCase{"leading_blanks", u"  30", {25, 5}},
                      HoldCase{"plus_sign", u"+30", {25, 5}}, HoldCase{"base_10_only", u"0x20", {}},
                      HoldCase{"15_units", u"000000000000030", {25, 5}},
                      HoldCase{"16_units_are_ignored", u"0000000000000030", {}},
                      HoldCase{"17_units_are_ignored", u"00000000000000030", {}}),
    support::CaseName());

TEST(ScanHoldCancel, Within_the_hold_ends_the_scan_after_its_slice_without_rows) {
  for (std::uint64_t slice = 1; slice <= 4; ++slice) {
    SCOPED_TRACE(slice);
    SimulatedWindows machine;
    machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
    machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"100");
    ScanHandle scan;
    InsideCall(machine, Call::kSleepMilliseconds, slice,
               [&] { EXPECT_EQ(qs_product_scan_cancel(scan), QS_OK); });
    EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_CANCELLED);
    machine.SetHook(nullptr);
    EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>(slice, 25));
    EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
    EXPECT_EQ(Poll(scan).status, QS_CANCELLED);
    EXPECT_EQ(PerformanceOf(scan).status, QS_CANCELLED);
    EXPECT_EQ(PerformanceOf(scan).elapsed_us, slice * 25'000);
    EXPECT_EQ(RowCountOf(scan), 0u);
    EXPECT_EQ(machine.CallCount(Call::kQueryAttributes), 0u) << "no root may be touched";
    EXPECT_EQ(machine.CallCount(Call::kFullPathName), 0u);
  }
}

TEST(ScanHoldCancel, Before_the_first_slice_sleeps_not_at_all) {
  SimulatedWindows machine;
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"100");
  ScanHandle scan;
  InsideCall(machine, Call::kEnvironmentVariable, 1, [&] { qs_product_scan_cancel(scan); });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\"})), QS_CANCELLED);
  machine.SetHook(nullptr);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>{});
  EXPECT_EQ(Poll(scan).state, QS_STATE_CANCELLED);
}

TEST(ScanHoldState, Shows_a_running_scan_that_has_found_nothing) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\data\\a.zip", kLarge);
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"50");
  ScanHandle scan;
  int slices = 0;
  InsideEveryCall(machine, Call::kSleepMilliseconds, [&](std::uint64_t) {
    ++slices;
    EXPECT_EQ(Poll(scan).state, QS_STATE_RUNNING);
    EXPECT_EQ(Poll(scan).status, QS_OK);
    EXPECT_EQ(RowCountOf(scan), 0u);
  });
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\data"})), QS_OK);
  machine.SetHook(nullptr);
  EXPECT_EQ(slices, 2);
}

TEST(ScanHoldState, Reads_the_variable_anew_at_every_start) {
  SimulatedWindows machine;
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\"})), QS_OK);
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"3");
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\"})), QS_OK);
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", std::nullopt);
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\"})), QS_OK);
  EXPECT_EQ(machine.sleeps(), std::vector<std::uint32_t>{3});
}

}  // namespace
}  // namespace quastel::scan_tests
