// The manual clock, and what of the system's conversions Wine does not show.

#include "platform/clock.h"

#include <gtest/gtest.h>

#include "platform/thread.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::CalendarTime;
using platform::Error;

CalendarTime At(std::uint16_t year, std::uint16_t month, std::uint16_t day) {
  CalendarTime time{};
  time.year = year;
  time.month = month;
  time.day = day;
  return time;
}

TEST(ManualClock, It_stands_still_until_it_is_moved) {
  SimulatedWindows windows;
  const std::uint64_t file_time = platform::SystemFileTime();
  const std::uint64_t ticks = platform::TickMilliseconds();
  const std::int64_t nanoseconds = platform::MonotonicNanoseconds();
  EXPECT_EQ(platform::TickMilliseconds(), ticks);
  windows.AdvanceClock(20);
  EXPECT_EQ(platform::SystemFileTime(), file_time + 200'000);
  EXPECT_EQ(platform::TickMilliseconds(), ticks + 20);
  EXPECT_EQ(platform::MonotonicNanoseconds(), nanoseconds + 20'000'000);
}

TEST(ManualClock, A_sleep_moves_it_and_is_remembered) {
  SimulatedWindows windows;
  const std::uint64_t ticks = platform::TickMilliseconds();
  platform::SleepMilliseconds(25);
  platform::SleepMilliseconds(0);
  platform::SleepMilliseconds(5);
  EXPECT_EQ(platform::TickMilliseconds(), ticks + 30);
  EXPECT_EQ(windows.sleeps(), (std::vector<std::uint32_t>{25, 0, 5}));
}

TEST(ManualClock, The_system_time_is_set_alone) {
  SimulatedWindows windows;
  const std::uint64_t ticks = platform::TickMilliseconds();
  windows.SetSystemFileTime(42);
  EXPECT_EQ(platform::SystemFileTime(), 42u);
  EXPECT_EQ(platform::TickMilliseconds(), ticks);
}

TEST(TimeZone, Local_time_is_as_far_from_UTC_as_the_zone_says) {
  SimulatedWindows windows;
  constexpr std::uint64_t kHour = 36'000'000'000;
  EXPECT_EQ(platform::ToLocalFileTime(5).value(), 5u);
  windows.SetTimeZoneOffset(330);
  EXPECT_EQ(platform::ToLocalFileTime(5).value(), 5 + 5 * kHour + kHour / 2);
  windows.SetTimeZoneOffset(-480);
  EXPECT_EQ(platform::ToLocalFileTime(9 * kHour).value(), kHour);
}

TEST(TimeZone, A_time_before_1601_or_with_the_top_bit_is_refused) {
  SimulatedWindows windows;
  constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;
  EXPECT_TRUE(platform::ToLocalFileTime(kTopBit - 1).ok());
  EXPECT_EQ(platform::ToLocalFileTime(kTopBit).error(), Error::kInvalidParameter);
  windows.SetTimeZoneOffset(-60);
  EXPECT_EQ(platform::ToLocalFileTime(0).error(), Error::kInvalidParameter);
  windows.SetTimeZoneOffset(60);
  EXPECT_EQ(platform::ToLocalFileTime(kTopBit - 1).error(), Error::kInvalidParameter);
}

TEST(Calendar, Only_leap_years_have_a_29th_of_February) {
  const SimulatedWindows windows;
  EXPECT_TRUE(platform::ToFileTime(At(2000, 2, 29)).ok());
  EXPECT_TRUE(platform::ToFileTime(At(2024, 2, 29)).ok());
  EXPECT_EQ(platform::ToFileTime(At(2023, 2, 29)).error(), Error::kInvalidParameter);
  EXPECT_EQ(platform::ToFileTime(At(2100, 2, 29)).error(), Error::kInvalidParameter);
}

TEST(Calendar, The_last_year_is_30827) {
  const SimulatedWindows windows;
  EXPECT_TRUE(platform::ToFileTime(At(30827, 12, 31)).ok());
  EXPECT_EQ(platform::ToFileTime(At(30828, 1, 1)).error(), Error::kInvalidParameter);
  const auto last = platform::ToCalendarTime((std::uint64_t{1} << 63) - 1);
  ASSERT_TRUE(last.ok());
  EXPECT_EQ(last.value().year, 30828);
  EXPECT_EQ(last.value().month, 9);
  EXPECT_EQ(last.value().day, 14);
  EXPECT_EQ(last.value().hour, 2);
  EXPECT_EQ(last.value().minute, 48);
  EXPECT_EQ(last.value().second, 5);
  EXPECT_EQ(last.value().milliseconds, 477);
}

}  // namespace
}  // namespace quastel::simulated
