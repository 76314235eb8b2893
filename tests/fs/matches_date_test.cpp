#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calendar.h"
#include "support/named_case.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;
using support::Moment;
using support::TicksOf;

constexpr std::int64_t kEarliest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kLatest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kYear1601 = 504911232000000000;
constexpr std::int32_t kAnyTime = 0;
constexpr std::int32_t kOlderThanAYear = 1;
constexpr std::int32_t kOlderThanAMonth = 2;
constexpr std::int32_t kWithinAMonth = 3;

// A mode and everything that has no meaning of its own: all of them look one month back.
constexpr std::int32_t kMonthModes[] = {2,
                                        4,
                                        12,
                                        -1,
                                        -2,
                                        std::numeric_limits<std::int32_t>::max(),
                                        std::numeric_limits<std::int32_t>::min()};

struct DateCase : support::NamedCase {
  Moment now;
  Moment month_back;
  Moment year_back;
};

constexpr DateCase kDateCases[] = {
    {{"Middle_of_a_month"}, {2023, 7, 15, 10, 30}, {2023, 6, 15, 10, 30}, {2022, 7, 15, 10, 30}},
    {{"End_of_March"}, {2023, 3, 31, 10}, {2023, 2, 28, 10}, {2022, 3, 31, 10}},
    {{"End_of_March_in_a_leap_year"}, {2024, 3, 31, 10}, {2024, 2, 29, 10}, {2023, 3, 31, 10}},
    {{"March_29_in_a_leap_year"}, {2024, 3, 29, 10}, {2024, 2, 29, 10}, {2023, 3, 29, 10}},
    {{"March_30_in_a_leap_year"}, {2024, 3, 30, 10}, {2024, 2, 29, 10}, {2023, 3, 30, 10}},
    {{"March_29_in_a_common_year"}, {2023, 3, 29, 10}, {2023, 2, 28, 10}, {2022, 3, 29, 10}},
    {{"End_of_March_1900"}, {1900, 3, 31, 10}, {1900, 2, 28, 10}, {1899, 3, 31, 10}},
    {{"End_of_March_2000"}, {2000, 3, 31, 10}, {2000, 2, 29, 10}, {1999, 3, 31, 10}},
    {{"End_of_March_2100"}, {2100, 3, 31, 10}, {2100, 2, 28, 10}, {2099, 3, 31, 10}},
    {{"Leap_day"}, {2024, 2, 29, 1, 2, 3}, {2024, 1, 29, 1, 2, 3}, {2023, 2, 28, 1, 2, 3}},
    {{"Leap_day_of_2000"}, {2000, 2, 29}, {2000, 1, 29}, {1999, 2, 28}},
    {{"Middle_of_January"}, {2023, 1, 15, 10}, {2022, 12, 15, 10}, {2022, 1, 15, 10}},
    {{"First_of_January"}, {2023, 1, 1}, {2022, 12, 1}, {2022, 1, 1}},
    {{"End_of_January"},
     {2023, 1, 31, 23, 59, 59, 999},
     {2022, 12, 31, 23, 59, 59, 999},
     {2022, 1, 31, 23, 59, 59, 999}},
    {{"End_of_May"}, {2023, 5, 31}, {2023, 4, 30}, {2022, 5, 31}},
    {{"End_of_July"}, {2023, 7, 31}, {2023, 6, 30}, {2022, 7, 31}},
    {{"End_of_August"}, {2023, 8, 31}, {2023, 7, 31}, {2022, 8, 31}},
    {{"End_of_October"}, {2023, 10, 31}, {2023, 9, 30}, {2022, 10, 31}},
    {{"End_of_December"}, {2023, 12, 31}, {2023, 11, 30}, {2022, 12, 31}},
    {{"First_of_December"}, {2023, 12, 1}, {2023, 11, 1}, {2022, 12, 1}},
    {{"First_of_February"}, {2023, 2, 1}, {2023, 1, 1}, {2022, 2, 1}},
    {{"Far_future"}, {9999, 12, 31, 23, 59}, {9999, 11, 30, 23, 59}, {9998, 12, 31, 23, 59}},
};

class MatchesDateTest : public ::testing::TestWithParam<DateCase> {
 protected:
  std::int64_t now() const { return TicksOf(GetParam().now); }
  std::int64_t month_back() const { return TicksOf(GetParam().month_back); }
  std::int64_t year_back() const { return TicksOf(GetParam().year_back); }

 private:
  SimulatedWindows windows_;
};

TEST_P(MatchesDateTest, Mode_1_matches_what_is_older_than_a_year) {
  EXPECT_EQ(qs_matches_date(year_back() - 1, now(), kOlderThanAYear), 1);
  EXPECT_EQ(qs_matches_date(year_back(), now(), kOlderThanAYear), 0);
  EXPECT_EQ(qs_matches_date(year_back() + 1, now(), kOlderThanAYear), 0);
}

TEST_P(MatchesDateTest, Mode_3_matches_what_changed_within_the_last_month) {
  EXPECT_EQ(qs_matches_date(month_back() - 1, now(), kWithinAMonth), 0);
  EXPECT_EQ(qs_matches_date(month_back(), now(), kWithinAMonth), 1);
  EXPECT_EQ(qs_matches_date(month_back() + 1, now(), kWithinAMonth), 1);
}

TEST_P(MatchesDateTest, Mode_2_and_every_unknown_mode_match_what_is_older_than_a_month) {
  for (const std::int32_t mode : kMonthModes) {
    EXPECT_EQ(qs_matches_date(month_back() - 1, now(), mode), 1) << mode;
    EXPECT_EQ(qs_matches_date(month_back(), now(), mode), 0) << mode;
    EXPECT_EQ(qs_matches_date(month_back() + 1, now(), mode), 0) << mode;
  }
}

TEST_P(MatchesDateTest, The_part_of_now_below_a_millisecond_makes_no_difference) {
  const std::int64_t later = now() + support::kTicksPerMillisecond - 1;
  EXPECT_EQ(qs_matches_date(month_back(), later, kWithinAMonth), 1);
  EXPECT_EQ(qs_matches_date(month_back() - 1, later, kWithinAMonth), 0);
}

INSTANTIATE_TEST_SUITE_P(MatchesDate, MatchesDateTest, ::testing::ValuesIn(kDateCases),
                         support::CaseName());

class MatchesDate : public ::testing::Test {
 protected:
  SimulatedWindows windows_;
};

constexpr std::int64_t kNow = TicksOf({2023, 7, 15, 10});

TEST_F(MatchesDate, Times_at_the_ends_of_the_range_are_compared_with_their_sign) {
  EXPECT_EQ(qs_matches_date(kEarliest, kNow, kOlderThanAYear), 1);
  EXPECT_EQ(qs_matches_date(-1, kNow, kOlderThanAMonth), 1);
  EXPECT_EQ(qs_matches_date(0, kNow, kWithinAMonth), 0);
  EXPECT_EQ(qs_matches_date(kEarliest, kNow, kWithinAMonth), 0);
  EXPECT_EQ(qs_matches_date(kLatest, kNow, kOlderThanAYear), 0);
  EXPECT_EQ(qs_matches_date(kLatest, kNow, kWithinAMonth), 1);
}

TEST_F(MatchesDate, A_time_after_now_is_within_the_last_month) {
  EXPECT_EQ(qs_matches_date(kNow + 1, kNow, kWithinAMonth), 1);
  EXPECT_EQ(qs_matches_date(kNow + 1, kNow, kOlderThanAMonth), 0);
}

TEST_F(MatchesDate, Mode_0_matches_always_and_asks_the_system_for_nothing) {
  windows_.SetRecording(true);
  for (const std::int64_t now :
       {kEarliest, std::int64_t{-1}, std::int64_t{0}, kYear1601 - 1, kYear1601, kNow, kLatest}) {
    EXPECT_EQ(qs_matches_date(kEarliest, now, kAnyTime), 1) << now;
    EXPECT_EQ(qs_matches_date(kLatest, now, kAnyTime), 1) << now;
  }
  EXPECT_TRUE(windows_.record().empty());
}

TEST_F(MatchesDate, Before_1601_no_other_mode_matches) {
  for (const std::int64_t now : {kYear1601 - 1, std::int64_t{0}, std::int64_t{-1}, kEarliest}) {
    for (const std::int32_t mode : {1, 2, 3, 4, -1}) {
      EXPECT_EQ(qs_matches_date(kEarliest, now, mode), 0) << now << " mode " << mode;
      EXPECT_EQ(qs_matches_date(kLatest, now, mode), 0) << now << " mode " << mode;
    }
  }
  EXPECT_EQ(windows_.CallCount(Call::kToCalendarTime), 0u);
}

TEST_F(MatchesDate, A_threshold_before_1601_matches_nothing) {
  for (const std::int64_t now : {kYear1601, TicksOf({1601, 1, 31, 23})}) {
    for (const std::int32_t mode : {1, 2, 3, 4}) {
      EXPECT_EQ(qs_matches_date(kEarliest, now, mode), 0) << now << " mode " << mode;
      EXPECT_EQ(qs_matches_date(kLatest, now, mode), 0) << now << " mode " << mode;
    }
  }
  EXPECT_EQ(qs_matches_date(kEarliest, TicksOf({1601, 12, 31}), kOlderThanAYear), 0);
}

TEST_F(MatchesDate, The_earliest_threshold_is_the_start_of_1601) {
  EXPECT_EQ(qs_matches_date(kYear1601 - 1, TicksOf({1601, 2, 1}), kOlderThanAMonth), 1);
  EXPECT_EQ(qs_matches_date(kYear1601, TicksOf({1601, 2, 1}), kOlderThanAMonth), 0);
  EXPECT_EQ(qs_matches_date(kYear1601, TicksOf({1601, 2, 1}), kWithinAMonth), 1);
  EXPECT_EQ(qs_matches_date(kYear1601 - 1, TicksOf({1602, 1, 1}), kOlderThanAYear), 1);
  EXPECT_EQ(qs_matches_date(kYear1601, TicksOf({1602, 1, 1}), kOlderThanAYear), 0);
}

TEST_F(MatchesDate, The_last_representable_now_has_a_threshold) {
  EXPECT_EQ(qs_matches_date(kLatest, kLatest, kWithinAMonth), 1);
  EXPECT_EQ(qs_matches_date(kNow, kLatest, kWithinAMonth), 0);
  EXPECT_EQ(qs_matches_date(kNow, kLatest, kOlderThanAYear), 1);
}

TEST_F(MatchesDate, Nothing_matches_when_now_cannot_be_turned_into_a_date) {
  for (const std::int32_t mode : {1, 2, 3, 4, -1}) {
    windows_.ClearFaults();
    windows_.FailCall(Call::kToCalendarTime, 1);
    EXPECT_EQ(qs_matches_date(kEarliest, kNow, mode), 0) << mode;
    EXPECT_EQ(windows_.faults_injected(), 1u);
    windows_.ClearFaults();
    windows_.FailCall(Call::kToCalendarTime, 1);
    EXPECT_EQ(qs_matches_date(kLatest, kNow, mode), 0) << mode;
  }
}

TEST_F(MatchesDate, Nothing_matches_when_the_threshold_cannot_be_turned_into_a_time) {
  for (const std::int32_t mode : {1, 2, 3, 4, -1}) {
    windows_.ClearFaults();
    windows_.FailCall(Call::kToFileTime, 1);
    EXPECT_EQ(qs_matches_date(kEarliest, kNow, mode), 0) << mode;
    EXPECT_EQ(windows_.faults_injected(), 1u);
    windows_.ClearFaults();
    windows_.FailCall(Call::kToFileTime, 1);
    EXPECT_EQ(qs_matches_date(kLatest, kNow, mode), 0) << mode;
  }
}

TEST_F(MatchesDate, The_time_zone_plays_no_part) {
  windows_.SetTimeZoneOffset(-8 * 60);
  EXPECT_EQ(qs_matches_date(TicksOf({2023, 6, 15, 10}), kNow, kWithinAMonth), 1);
  EXPECT_EQ(qs_matches_date(TicksOf({2023, 6, 15, 10}) - 1, kNow, kWithinAMonth), 0);
  EXPECT_EQ(windows_.CallCount(Call::kToLocalFileTime), 0u);
}

TEST_F(MatchesDate, Every_day_of_five_centuries_has_the_threshold_of_the_calendar) {
  std::mt19937 random(20231);
  for (std::int64_t year = 1700; year < 2200; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (const std::int64_t day :
           {std::int64_t{1}, std::int64_t{28}, support::DaysInMonth(year, month)}) {
        const Moment now{year, month, static_cast<int>(day), static_cast<int>(random() % 24)};
        for (const int months : {1, 12}) {
          const int index = month - 1 - months;
          Moment back = now;
          back.year = year - (index < 0 ? 1 : 0);
          back.month = (index + 12) % 12 + 1;
          back.day = static_cast<int>(std::min(day, support::DaysInMonth(back.year, back.month)));
          const std::int32_t mode = months == 1 ? kOlderThanAMonth : kOlderThanAYear;
          ASSERT_EQ(qs_matches_date(TicksOf(back), TicksOf(now), mode), 0)
              << year << '-' << month << '-' << day << ", " << months << " months back";
          ASSERT_EQ(qs_matches_date(TicksOf(back) - 1, TicksOf(now), mode), 1)
              << year << '-' << month << '-' << day << ", " << months << " months back";
        }
      }
    }
  }
}

}  // namespace
}  // namespace quastel
