// Time: the system's conversions and its three clocks.

#ifndef QUASTEL_PLATFORM_CLOCK_H_
#define QUASTEL_PLATFORM_CLOCK_H_

#include <cstdint>

#include "platform/error.h"

namespace quastel::platform {

// SYSTEMTIME.
struct CalendarTime {
  std::uint16_t year;
  std::uint16_t month;  // 1 to 12
  std::uint16_t day_of_week;
  std::uint16_t day;
  std::uint16_t hour;
  std::uint16_t minute;
  std::uint16_t second;
  std::uint16_t milliseconds;
};
static_assert(sizeof(CalendarTime) == 16);

// FileTimeToLocalFileTime: by the difference that there is now, whatever time is converted.
Result<std::uint64_t> ToLocalFileTime(std::uint64_t utc) noexcept;

// FileTimeToSystemTime; the part below a millisecond is lost.
Result<CalendarTime> ToCalendarTime(std::uint64_t file_time) noexcept;

// SystemTimeToFileTime; day_of_week is not read.
Result<std::uint64_t> ToFileTime(const CalendarTime& calendar) noexcept;

// GetSystemTimeAsFileTime: UTC, 100-nanosecond units since 1601.
[[nodiscard]] std::uint64_t SystemFileTime() noexcept;

// GetTickCount64: milliseconds since the system started.
[[nodiscard]] std::uint64_t TickMilliseconds() noexcept;

// The performance counter, in nanoseconds; never goes back.
[[nodiscard]] std::int64_t MonotonicNanoseconds() noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_CLOCK_H_
