#include "time_text.h"

#include <windows.h>

#include <array>
#include <cstdio>

namespace quastel::client {
namespace {

// Ticks from 0001-01-01 to 1601-01-01, where the system's file times begin.
constexpr std::uint64_t kTicksTo1601 = 504911232000000000ULL;

std::optional<SYSTEMTIME> Calendar(std::uint64_t ticks) {
  if (ticks < kTicksTo1601) {
    return std::nullopt;
  }
  const std::uint64_t file_ticks = ticks - kTicksTo1601;
  FILETIME file_time = {};
  file_time.dwLowDateTime = static_cast<DWORD>(file_ticks & 0xFFFFFFFFULL);
  file_time.dwHighDateTime = static_cast<DWORD>(file_ticks >> 32);
  SYSTEMTIME calendar = {};
  if (FileTimeToSystemTime(&file_time, &calendar) == 0) {
    return std::nullopt;
  }
  return calendar;
}

template <typename... Values>
std::string Format(const char* format, Values... values) {
  std::array<char, 48> text = {};
  std::snprintf(text.data(), text.size(), format, static_cast<int>(values)...);
  return text.data();
}

}  // namespace

std::optional<std::string> LocalMinuteText(std::uint64_t ticks) {
  const std::optional<SYSTEMTIME> t = Calendar(ticks);
  if (!t) {
    return std::nullopt;
  }
  return Format("%04d-%02d-%02d %02d:%02d", t->wYear, t->wMonth, t->wDay, t->wHour, t->wMinute);
}

std::optional<std::string> LocalIsoText(std::uint64_t ticks) {
  const std::optional<SYSTEMTIME> t = Calendar(ticks);
  if (!t) {
    return std::nullopt;
  }
  return Format("%04d-%02d-%02dT%02d:%02d:%02d", t->wYear, t->wMonth, t->wDay, t->wHour, t->wMinute,
                t->wSecond);
}

std::string UtcNowIsoText() {
  SYSTEMTIME t = {};
  GetSystemTime(&t);
  return Format("%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", t.wYear, t.wMonth, t.wDay, t.wHour,
                t.wMinute, t.wSecond, t.wMilliseconds);
}

}  // namespace quastel::client
