// Tick times from calendar dates, computed without the system.

#ifndef QUASTEL_TESTS_SUPPORT_CALENDAR_H_
#define QUASTEL_TESTS_SUPPORT_CALENDAR_H_

#include <cstdint>

namespace quastel::support {

inline constexpr std::int64_t kTicksPerMillisecond = 10'000;
inline constexpr std::int64_t kTicksPerSecond = 10'000'000;
inline constexpr std::int64_t kTicksPerDay = 24 * 60 * 60 * kTicksPerSecond;

constexpr bool IsLeapYear(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr std::int64_t DaysInMonth(std::int64_t year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

struct Moment {
  std::int64_t year;
  int month;
  int day;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

// 100-nanosecond units since 0001-01-01.
constexpr std::int64_t TicksOf(const Moment& moment) {
  const std::int64_t before = moment.year - 1;
  std::int64_t days = before * 365 + before / 4 - before / 100 + before / 400;
  for (int month = 1; month < moment.month; ++month) {
    days += DaysInMonth(moment.year, month);
  }
  days += moment.day - 1;
  const std::int64_t seconds =
      std::int64_t{moment.hour} * 3600 + std::int64_t{moment.minute} * 60 + moment.second;
  return days * kTicksPerDay + seconds * kTicksPerSecond +
         moment.millisecond * kTicksPerMillisecond;
}

static_assert(TicksOf({1, 1, 1}) == 0);
static_assert(TicksOf({1601, 1, 1}) == 504911232000000000);
static_assert(TicksOf({1970, 1, 1}) == 621355968000000000);

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_CALENDAR_H_
