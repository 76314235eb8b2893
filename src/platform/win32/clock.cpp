#include "platform/clock.h"

#include <cstddef>

#include "platform/win32/windows_api.h"

namespace quastel::platform {

namespace {

static_assert(sizeof(CalendarTime) == sizeof(SYSTEMTIME));
static_assert(offsetof(CalendarTime, year) == offsetof(SYSTEMTIME, wYear));
static_assert(offsetof(CalendarTime, month) == offsetof(SYSTEMTIME, wMonth));
static_assert(offsetof(CalendarTime, day_of_week) == offsetof(SYSTEMTIME, wDayOfWeek));
static_assert(offsetof(CalendarTime, day) == offsetof(SYSTEMTIME, wDay));
static_assert(offsetof(CalendarTime, hour) == offsetof(SYSTEMTIME, wHour));
static_assert(offsetof(CalendarTime, minute) == offsetof(SYSTEMTIME, wMinute));
static_assert(offsetof(CalendarTime, second) == offsetof(SYSTEMTIME, wSecond));
static_assert(offsetof(CalendarTime, milliseconds) == offsetof(SYSTEMTIME, wMilliseconds));

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

Result<std::uint64_t> ToLocalFileTime(std::uint64_t utc) noexcept {
  const FILETIME given = ToSystemFileTime(utc);
  FILETIME local;
  if (::FileTimeToLocalFileTime(&given, &local) == FALSE) {
    return FailureOfLastCall();
  }
  return ToTicks(local);
}

Result<CalendarTime> ToCalendarTime(std::uint64_t file_time) noexcept {
  const FILETIME given = ToSystemFileTime(file_time);
  CalendarTime calendar = {};
  if (::FileTimeToSystemTime(&given, reinterpret_cast<SYSTEMTIME*>(&calendar)) == FALSE) {
    return FailureOfLastCall();
  }
  return calendar;
}

Result<std::uint64_t> ToFileTime(const CalendarTime& calendar) noexcept {
  FILETIME result;
  if (::SystemTimeToFileTime(reinterpret_cast<const SYSTEMTIME*>(&calendar), &result) == FALSE) {
    return FailureOfLastCall();
  }
  return ToTicks(result);
}

std::uint64_t SystemFileTime() noexcept {
  FILETIME now;
  ::GetSystemTimeAsFileTime(&now);
  return ToTicks(now);
}

std::uint64_t TickMilliseconds() noexcept {
  return ::GetTickCount64();
}

std::int64_t MonotonicNanoseconds() noexcept {
  LARGE_INTEGER frequency;
  LARGE_INTEGER count;
  ::QueryPerformanceFrequency(&frequency);
  ::QueryPerformanceCounter(&count);
  // Whole seconds and the rest apart: the product of the whole count would overflow after weeks.
  const std::int64_t seconds = count.QuadPart / frequency.QuadPart;
  const std::int64_t rest = count.QuadPart % frequency.QuadPart;
  return seconds * kNanosecondsPerSecond + rest * kNanosecondsPerSecond / frequency.QuadPart;
}

}  // namespace quastel::platform
