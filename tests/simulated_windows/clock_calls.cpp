// platform/clock.h: the manual clock, and the calendar as the system computes it.

#include "platform/clock.h"

#include <algorithm>

#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::FaultOf;
using simulated::Living;
using simulated::SeamCall;
using simulated::State;

constexpr std::uint64_t kUnitsPerMillisecond = 10'000;
constexpr std::uint64_t kUnitsPerMinute = 600'000'000;
constexpr std::uint64_t kMillisecondsPerDay = 86'400'000;
constexpr std::uint64_t kTopBit = std::uint64_t{1} << 63;
constexpr std::uint64_t kDaysPer400Years = 146'097;
constexpr std::uint64_t kDaysPer100Years = 36'524;
constexpr std::uint64_t kDaysPer4Years = 1'461;

bool IsLeap(std::uint64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

std::uint64_t DaysOfMonth(std::uint64_t year, std::uint64_t month) {
  constexpr std::uint8_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

// Days from 1601-01-01 to the first of January; 1601 begins a cycle of 400 years.
std::uint64_t DaysBeforeYear(std::uint64_t year) {
  const std::uint64_t years = year - 1601;
  return years * 365 + years / 4 - years / 100 + years / 400;
}

std::uint64_t YearOfDay(std::uint64_t day) {
  const std::uint64_t cycle = day / kDaysPer400Years;
  std::uint64_t rest = day % kDaysPer400Years;
  // The last day of a leap cycle would begin one cycle too many.
  const std::uint64_t century = std::min<std::uint64_t>(rest / kDaysPer100Years, 3);
  rest -= century * kDaysPer100Years;
  const std::uint64_t leap = rest / kDaysPer4Years;
  rest -= leap * kDaysPer4Years;
  return 1601 + cycle * 400 + century * 100 + leap * 4 + std::min<std::uint64_t>(rest / 365, 3);
}

bool IsInRange(const CalendarTime& c) {
  return c.year >= 1601 && c.year <= 30827 && c.month >= 1 && c.month <= 12 && c.day >= 1 &&
         c.day <= DaysOfMonth(c.year, c.month) && c.hour <= 23 && c.minute <= 59 &&
         c.second <= 59 && c.milliseconds <= 999;
}

template <typename T>
std::uint16_t Short(T value) {
  return static_cast<std::uint16_t>(value);
}

}  // namespace

Result<std::uint64_t> ToLocalFileTime(std::uint64_t utc) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kToLocalFileTime, nullptr, utc);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const std::uint64_t local =
      utc + static_cast<std::uint64_t>(s.zone_minutes.load()) * kUnitsPerMinute;
  if (local >= kTopBit) {
    return call.Answer(Error::kInvalidParameter);
  }
  return local;
}

Result<CalendarTime> ToCalendarTime(std::uint64_t file_time) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kToCalendarTime, nullptr, file_time);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  if (file_time >= kTopBit) {
    return call.Answer(Error::kInvalidParameter);
  }
  const std::uint64_t total = file_time / kUnitsPerMillisecond;
  const std::uint64_t day = total / kMillisecondsPerDay;
  const std::uint64_t within = total % kMillisecondsPerDay;
  const std::uint64_t year = YearOfDay(day);
  std::uint64_t day_of_year = day - DaysBeforeYear(year);
  std::uint64_t month = 1;
  while (day_of_year >= DaysOfMonth(year, month)) {
    day_of_year -= DaysOfMonth(year, month);
    ++month;
  }
  // 1601-01-01 was a Monday.
  return CalendarTime{Short(year),
                      Short(month),
                      Short((day + 1) % 7),
                      Short(day_of_year + 1),
                      Short(within / 3'600'000),
                      Short(within / 60'000 % 60),
                      Short(within / 1'000 % 60),
                      Short(within % 1'000)};
}

Result<std::uint64_t> ToFileTime(const CalendarTime& calendar) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kToFileTime);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  if (!IsInRange(calendar)) {
    return call.Answer(Error::kInvalidParameter);
  }
  std::uint64_t days = DaysBeforeYear(calendar.year) + calendar.day - 1u;
  for (std::uint64_t month = 1; month < calendar.month; ++month) {
    days += DaysOfMonth(calendar.year, month);
  }
  const std::uint64_t seconds =
      (days * 24 + calendar.hour) * 3600 + calendar.minute * 60u + calendar.second;
  return (seconds * 1000 + calendar.milliseconds) * kUnitsPerMillisecond;
}

std::uint64_t SystemFileTime() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kSystemFileTime);
  return s.file_time.load();
}

std::uint64_t TickMilliseconds() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kTickMilliseconds);
  return s.ticks_ms.load();
}

std::int64_t MonotonicNanoseconds() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kMonotonicNanoseconds);
  return s.monotonic_ns.load();
}

}  // namespace quastel::platform
