#include "platform/clock.h"

#include <gtest/gtest.h>

#include "contract/machine.h"
#include "platform/thread.h"

namespace quastel::contract {
namespace {

using platform::CalendarTime;
using platform::Error;
using platform::ToCalendarTime;
using platform::ToFileTime;
using platform::ToLocalFileTime;

constexpr std::uint64_t kDay = 864'000'000'000;
constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;

CalendarTime At(std::uint16_t year, std::uint16_t month, std::uint16_t day) {
  CalendarTime time{};
  time.year = year;
  time.month = month;
  time.day = day;
  return time;
}

TEST(ClockContract, The_calendar_begins_on_a_Monday_in_1601) {
  const Machine machine;
  const auto first = ToCalendarTime(0);
  ASSERT_TRUE(first.ok());
  EXPECT_EQ(first.value().year, 1601);
  EXPECT_EQ(first.value().month, 1);
  EXPECT_EQ(first.value().day, 1);
  EXPECT_EQ(first.value().day_of_week, 1);
  EXPECT_EQ(ToFileTime(At(1601, 1, 1)).value(), 0u);
}

TEST(ClockContract, A_known_moment_has_its_parts) {
  const Machine machine;
  // 2009-07-25 23:00:00.123, a Saturday; 4567 units of 100 ns are lost.
  const auto parts = ToCalendarTime(128'930'364'001'234'567);
  ASSERT_TRUE(parts.ok());
  EXPECT_EQ(parts.value().year, 2009);
  EXPECT_EQ(parts.value().month, 7);
  EXPECT_EQ(parts.value().day, 25);
  EXPECT_EQ(parts.value().day_of_week, 6);
  EXPECT_EQ(parts.value().hour, 23);
  EXPECT_EQ(parts.value().minute, 0);
  EXPECT_EQ(parts.value().second, 0);
  EXPECT_EQ(parts.value().milliseconds, 123);
  EXPECT_EQ(ToFileTime(parts.value()).value(), 128'930'364'001'230'000u);
}

TEST(ClockContract, Every_day_of_eight_centuries_goes_there_and_back) {
  const Machine machine;
  std::uint64_t failures = 0;
  for (std::uint64_t day = 0; day < 292'194; ++day) {
    const auto parts = ToCalendarTime(day * kDay);
    failures += parts.ok() && ToFileTime(parts.value()).value() == day * kDay &&
                        parts.value().day_of_week == (day + 1) % 7
                    ? 0
                    : 1;
  }
  EXPECT_EQ(failures, 0u);
}

TEST(ClockContract, Days_that_do_not_exist_are_refused) {
  const Machine machine;
  EXPECT_TRUE(ToFileTime(At(2000, 2, 29)).ok());
  EXPECT_TRUE(ToFileTime(At(2024, 2, 29)).ok());
  // Not the 29th of February: Wine 8 lets every year have one.
  for (const CalendarTime& time :
       {At(2023, 2, 30), At(2023, 4, 31), At(2023, 1, 32), At(2023, 1, 0), At(2023, 0, 1),
        At(2023, 13, 1), At(1600, 12, 31)}) {
    EXPECT_EQ(ToFileTime(time).error(), Error::kInvalidParameter)
        << time.year << '-' << time.month << '-' << time.day;
  }
}

TEST(ClockContract, Times_that_do_not_exist_are_refused) {
  const Machine machine;
  CalendarTime last = At(2023, 12, 31);
  last.hour = 23;
  last.minute = 59;
  last.second = 59;
  last.milliseconds = 999;
  EXPECT_TRUE(ToFileTime(last).ok());
  CalendarTime time = last;
  time.hour = 24;
  EXPECT_EQ(ToFileTime(time).error(), Error::kInvalidParameter);
  time = last;
  time.minute = 60;
  EXPECT_EQ(ToFileTime(time).error(), Error::kInvalidParameter);
  time = last;
  time.second = 60;
  EXPECT_EQ(ToFileTime(time).error(), Error::kInvalidParameter);
  time = last;
  time.milliseconds = 1000;
  EXPECT_EQ(ToFileTime(time).error(), Error::kInvalidParameter);
}

TEST(ClockContract, The_day_of_the_week_is_not_read) {
  const Machine machine;
  CalendarTime time = At(2009, 7, 25);
  const std::uint64_t expected = ToFileTime(time).value();
  time.day_of_week = 3;
  EXPECT_EQ(ToFileTime(time).value(), expected);
}

TEST(ClockContract, A_time_with_the_top_bit_has_no_calendar) {
  const Machine machine;
  EXPECT_TRUE(ToCalendarTime(kTopBit - 1).ok());
  EXPECT_EQ(ToCalendarTime(kTopBit).error(), Error::kInvalidParameter);
  EXPECT_EQ(ToCalendarTime(~std::uint64_t{0}).error(), Error::kInvalidParameter);
}

TEST(ClockContract, Local_time_is_whole_minutes_away_from_UTC) {
  const Machine machine;
  constexpr std::uint64_t kMoment = 133'000'000'000'000'007;
  const auto local = ToLocalFileTime(kMoment);
  ASSERT_TRUE(local.ok());
  const auto difference = static_cast<std::int64_t>(local.value() - kMoment);
  EXPECT_EQ(difference % 600'000'000, 0);
  EXPECT_LE(std::abs(difference), std::int64_t{15} * 36'000'000'000);
  EXPECT_EQ(ToLocalFileTime(kMoment + 123).value(), local.value() + 123);
}

// A walk asks for the difference once and adds it to other times.
TEST(ClockContract, Local_time_is_away_from_UTC_by_the_same_in_all_seasons_and_centuries) {
  const Machine machine;
  constexpr std::uint64_t kMoment = 133'000'000'000'000'007;
  const std::uint64_t difference = ToLocalFileTime(kMoment).value() - kMoment;
  for (std::uint64_t day = 0; day < 366; ++day) {
    const std::uint64_t time = kMoment + day * kDay;
    EXPECT_EQ(ToLocalFileTime(time).value() - time, difference) << day;
  }
  for (const std::uint64_t time : {kDay, kMoment / 2, kMoment * 10, kTopBit - kDay - 1}) {
    EXPECT_EQ(ToLocalFileTime(time).value() - time, difference) << time;
  }
}

TEST(ClockContract, No_clock_goes_back_and_a_sleep_moves_all_three) {
  const Machine machine;
  const std::uint64_t file_time = platform::SystemFileTime();
  const std::uint64_t ticks = platform::TickMilliseconds();
  const std::int64_t nanoseconds = platform::MonotonicNanoseconds();
  platform::SleepMilliseconds(60);
  EXPECT_GE(platform::SystemFileTime(), file_time + 300'000);
  EXPECT_GE(platform::TickMilliseconds(), ticks + 30);
  EXPECT_GE(platform::MonotonicNanoseconds(), nanoseconds + 30'000'000);
}

TEST(ClockContract, The_system_time_lies_in_this_century) {
  const Machine machine;
  const auto now = ToCalendarTime(platform::SystemFileTime());
  ASSERT_TRUE(now.ok());
  EXPECT_GE(now.value().year, 2020);
  EXPECT_LT(now.value().year, 2100);
}

}  // namespace
}  // namespace quastel::contract
