#include "fs/matchers.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/ticks.h"
#include "platform/clock.h"

namespace quastel {
namespace {

constexpr std::int64_t kHalfGiB = 536'870'912;
constexpr std::int64_t kGiB = 1'073'741'824;

constexpr std::int32_t kOlderThanYear = 1;
constexpr std::int32_t kWithinMonth = 3;

constexpr bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

constexpr int DaysInMonth(int year, int month) {
  constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

// The same time of day so many months earlier (12 at most), on the last day of a month that is too
// short for the day.
platform::CalendarTime MonthsBefore(platform::CalendarTime time, int months) {
  int year = time.year;
  int month = time.month - months;
  if (month < 1) {
    month += 12;
    --year;
  }
  time.day = static_cast<std::uint16_t>(std::min<int>(time.day, DaysInMonth(year, month)));
  time.year = static_cast<std::uint16_t>(year);
  time.month = static_cast<std::uint16_t>(month);
  return time;
}

// `now` is local time already, so the conversions must not shift it by the time zone.
std::optional<std::int64_t> MonthsBeforeTicks(std::int64_t now, int months) {
  constexpr auto kEpoch = static_cast<std::int64_t>(kTicksAt1601);
  if (now < kEpoch) {
    return std::nullopt;
  }
  const auto calendar = platform::ToCalendarTime(static_cast<std::uint64_t>(now - kEpoch));
  if (!calendar.ok()) {
    return std::nullopt;
  }
  const auto moved = platform::ToFileTime(MonthsBefore(calendar.value(), months));
  if (!moved.ok()) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(moved.value()) + kEpoch;
}

}  // namespace

// Exactly 512 MiB and exactly 1 GiB belong to no class: the gaps are part of the interface.
bool MatchesSize(std::int64_t size, std::uint32_t mode) {
  switch (mode) {
    case 1:
      return size > kGiB;
    case 2:
      return size > kHalfGiB && size < kGiB;
    case 3:
      return size < kHalfGiB;
    default:
      return true;
  }
}

bool MatchesDate(std::int64_t file_time, std::int64_t now, std::int32_t mode) {
  if (mode == 0) {
    return true;
  }
  const auto threshold = MonthsBeforeTicks(now, mode == kOlderThanYear ? 12 : 1);
  if (!threshold) {
    return false;
  }
  return mode == kWithinMonth ? file_time >= *threshold : file_time < *threshold;
}

}  // namespace quastel
