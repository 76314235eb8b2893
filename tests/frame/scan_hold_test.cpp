#include "frame/scan_hold.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <vector>

#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::CallRecord;
using simulated::SimulatedWindows;
using Sleeps = std::vector<std::uint32_t>;

constexpr TextView kVariable = u"QUASTEL_SCAN_HOLD_MS";

struct NumberCase : support::NamedCase {
  const char* text;
  std::uint32_t number;
};

constexpr NumberCase kNumbers[] = {
    {{"Empty"}, "", 0},
    {{"Zero"}, "0", 0},
    {{"One_digit"}, "7", 7},
    {{"Leading_zeros"}, "000030", 30},
    {{"No_digits"}, "abc", 0},
    {{"Digits_then_letters"}, "12abc34", 12},
    {{"Letters_then_digits"}, "a12", 0},
    {{"Hexadecimal_is_not_read"}, "0x10", 0},
    {{"Stops_at_a_point"}, "3.9", 3},
    {{"Stops_at_a_blank"}, "3 9", 3},
    {{"Leading_blank"}, " 30", 30},
    {{"Every_kind_of_blank"}, " \t\n\v\f\r12", 12},
    {{"Only_blanks"}, "   ", 0},
    {{"What_comes_before_the_blanks_is_none"}, "\b5", 0},
    {{"What_comes_behind_the_blanks_is_none"}, "\0165", 0},
    {{"Plus"}, "+5", 5},
    {{"Blank_then_plus"}, " +5", 5},
    {{"Minus_zero"}, "-0", 0},
    {{"Minus_one_wraps"}, "-1", 4294967295},
    {{"Minus_wraps_to_a_small_number"}, "-4294967290", 6},
    {{"Minus_the_largest_wraps_to_one"}, "-4294967295", 1},
    {{"Minus_beyond_the_largest_is_the_largest"}, "-4294967296", 4294967295},
    {{"Sign_alone"}, "-", 0},
    {{"Two_signs"}, "--5", 0},
    {{"Plus_then_minus"}, "+-5", 0},
    {{"Blank_after_the_sign"}, "- 5", 0},
    {{"Largest"}, "4294967295", 4294967295},
    {{"One_beyond_the_largest"}, "4294967296", 4294967295},
    {{"A_number_whose_low_half_is_small"}, "4294967301", 4294967295},
    {{"Fifteen_digits"}, "999999999999999", 4294967295},
    {{"Twenty_five_digits"}, "1844674407370955161600000", 4294967295},
    {{"Ten_times_the_largest"}, "42949672950", 4294967295},
};

class ParseUnsigned32Test : public ::testing::TestWithParam<NumberCase> {};

TEST_P(ParseUnsigned32Test, Reads_the_number_at_the_front) {
  EXPECT_EQ(ParseUnsigned32(support::Wide(GetParam().text)), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(ScanHold, ParseUnsigned32Test, ::testing::ValuesIn(kNumbers),
                         support::CaseName());

TEST(ParseUnsigned32, Reads_no_further_than_the_text_goes) {
  EXPECT_EQ(ParseUnsigned32(TextView(u"1234", 2)), 12u);
}

// "25x200+3": 200 sleeps of 25 ms, then one of 3 ms.
struct HoldCase : support::NamedCase {
  const char* value;  // null: not in the environment
  std::uint32_t whole_slices;
  std::uint32_t rest;
};

constexpr HoldCase kHolds[] = {
    {{"Absent"}, nullptr, 0, 0},
    {{"Empty"}, "", 0, 0},
    {{"Zero"}, "0", 0, 0},
    {{"Letters"}, "abc", 0, 0},
    {{"One"}, "1", 0, 1},
    {{"One_short_of_a_slice"}, "24", 0, 24},
    {{"One_slice"}, "25", 1, 0},
    {{"One_more_than_a_slice"}, "26", 1, 1},
    {{"Thirty"}, "30", 1, 5},
    {{"Two_slices"}, "50", 2, 0},
    {{"Leading_blank"}, " 30", 1, 5},
    {{"One_below_the_limit"}, "4999", 199, 24},
    {{"The_limit"}, "5000", 200, 0},
    {{"One_above_the_limit"}, "5001", 200, 0},
    {{"Nine_thousand"}, "9000", 200, 0},
    {{"Minus_one"}, "-1", 200, 0},
    {{"Wraps_to_six"}, "-4294967290", 0, 6},
    {{"Fifteen_characters"}, "000000000000030", 1, 5},
    {{"Fifteen_characters_of_a_large_number"}, "999999999999999", 200, 0},
    {{"Sixteen_characters"}, "0000000000000030", 0, 0},
    {{"Seventeen_characters"}, "00000000000000030", 0, 0},
    {{"Sixteen_characters_with_a_number_at_the_front"}, "30 some comments", 0, 0},
    {{"Hundred_characters"},
     "30                                                                                      "
     "            ",
     0,
     0},
};

class HoldTest : public ::testing::TestWithParam<HoldCase> {};

TEST_P(HoldTest, Sleeps_as_long_as_asked_in_slices_of_25_ms) {
  const HoldCase& row = GetParam();
  SimulatedWindows windows;
  if (row.value != nullptr) {
    windows.SetEnvironment(kVariable, support::Wide(row.value));
  }
  CancelFlag cancel;
  HoldScan(cancel);

  Sleeps expected(row.whole_slices, 25);
  if (row.rest != 0) {
    expected.push_back(row.rest);
  }
  EXPECT_EQ(windows.sleeps(), expected);
  EXPECT_EQ(windows.CallCount(Call::kEnvironmentVariable), 1u);
}

INSTANTIATE_TEST_SUITE_P(ScanHold, HoldTest, ::testing::ValuesIn(kHolds), support::CaseName());

TEST(ScanHold, Nine_seconds_hold_five) {
  SimulatedWindows windows;
  windows.SetEnvironment(kVariable, Text(u"9000"));
  CancelFlag cancel;
  HoldScan(cancel);
  const Sleeps sleeps = windows.sleeps();
  EXPECT_EQ(std::accumulate(sleeps.begin(), sleeps.end(), 0u), 5000u);
}

TEST(ScanHold, The_environment_is_read_again_by_every_hold) {
  SimulatedWindows windows;
  CancelFlag cancel;
  HoldScan(cancel);
  windows.SetEnvironment(kVariable, Text(u"10"));
  HoldScan(cancel);
  windows.SetEnvironment(kVariable, std::nullopt);
  HoldScan(cancel);
  EXPECT_EQ(windows.sleeps(), Sleeps{10});
}

TEST(ScanHold, An_environment_that_cannot_be_read_holds_nothing) {
  SimulatedWindows windows;
  windows.SetEnvironment(kVariable, Text(u"100"));
  windows.FailCall(Call::kEnvironmentVariable, 1);
  CancelFlag cancel;
  HoldScan(cancel);
  EXPECT_EQ(windows.sleeps(), Sleeps{});
}

TEST(ScanHold, A_flag_that_is_set_already_holds_nothing) {
  SimulatedWindows windows;
  windows.SetEnvironment(kVariable, Text(u"100"));
  CancelFlag cancel;
  cancel.Set();
  HoldScan(cancel);
  EXPECT_EQ(windows.sleeps(), Sleeps{});
  EXPECT_TRUE(cancel.IsSet()) << "the hold only reads the flag";
}

TEST(ScanHold, A_cancel_during_a_slice_ends_the_hold_with_that_slice) {
  for (std::size_t slice = 1; slice <= 8; ++slice) {
    SimulatedWindows windows;
    windows.SetEnvironment(kVariable, Text(u"180"));
    CancelFlag cancel;
    std::size_t started = 0;
    windows.SetHook([&](const CallRecord& call) {
      if (call.call == Call::kSleepMilliseconds && ++started == slice) {
        cancel.Set();
      }
    });
    HoldScan(cancel);
    Sleeps expected(slice, 25);
    if (slice == 8) {
      expected.back() = 5;
    }
    EXPECT_EQ(windows.sleeps(), expected) << "cancelled in slice " << slice;
  }
}

}  // namespace
}  // namespace quastel
