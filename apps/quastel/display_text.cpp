#include "display_text.h"

#include <algorithm>
#include <array>

namespace quastel::client {
namespace {

constexpr std::wstring_view kEllipsis = L"...";

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// Coarse on purpose: it decides where a path is cut, and errs to the wide side.
constexpr std::array<Range, 42> kWide = {
    {{0x1100, 0x115F}, {0x231A, 0x231B},   {0x23E9, 0x23EC}, {0x23F0, 0x23F0}, {0x23F3, 0x23F3},
     {0x25FD, 0x25FE}, {0x2614, 0x2615},   {0x2648, 0x2653}, {0x267F, 0x267F}, {0x2693, 0x2693},
     {0x26A1, 0x26A1}, {0x26AA, 0x26AB},   {0x26BD, 0x26BE}, {0x26C4, 0x26C5}, {0x26CE, 0x26CE},
     {0x26D4, 0x26D4}, {0x26EA, 0x26EA},   {0x26F2, 0x26F3}, {0x26F5, 0x26F5}, {0x26FA, 0x26FA},
     {0x26FD, 0x26FD}, {0x2705, 0x2705},   {0x270A, 0x270B}, {0x2728, 0x2728}, {0x274C, 0x274C},
     {0x274E, 0x274E}, {0x2753, 0x2755},   {0x2757, 0x2757}, {0x2795, 0x2797}, {0x27B0, 0x27B0},
     {0x27BF, 0x27BF}, {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50}, {0x2B55, 0x2B55}, {0x2E80, 0x303E},
     {0x3041, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF}, {0xFE30, 0xFE6F}, {0xFF00, 0xFF60},
     {0xFFE0, 0xFFE6}, {0x10000, 0x10FFFF}}};
constexpr std::array<Range, 3> kCombining = {
    {{0x0300, 0x036F}, {0x200B, 0x200F}, {0xFE00, 0xFE0F}}};

template <std::size_t kCount>
bool IsIn(const std::array<Range, kCount>& ranges, std::uint32_t code_point) {
  return std::any_of(ranges.begin(), ranges.end(), [code_point](const Range& range) {
    return code_point >= range.first && code_point <= range.last;
  });
}

// A surrogate counts half of its pair, so that a text may be walked from both ends by units.
std::size_t HalfCells(wchar_t unit) {
  const auto value = static_cast<std::uint32_t>(unit);
  if (value >= 0xD800 && value <= 0xDFFF) {
    return 2;
  }
  if (IsIn(kCombining, value)) {
    return 0;
  }
  return IsIn(kWide, value) ? 4 : 2;
}

bool IsLowSurrogate(wchar_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

}  // namespace

std::string HumanSize(std::uint64_t bytes) {
  static constexpr std::array<const char*, 7> kUnits = {"B",   "KiB", "MiB", "GiB",
                                                        "TiB", "PiB", "EiB"};
  if (bytes < 1024) {
    return std::to_string(bytes) + " B";
  }
  for (std::size_t unit = 1;; ++unit) {
    const unsigned shift = 10 * static_cast<unsigned>(unit);
    const std::uint64_t whole = bytes >> shift;
    const std::uint64_t rest = bytes & ((std::uint64_t{1} << shift) - 1);
    // The fraction has up to 60 bits: its upper ones are enough for one decimal.
    const std::uint64_t fraction = shift > 50 ? rest >> (shift - 50) : rest << (50 - shift);
    const std::uint64_t tenths = whole * 10 + ((fraction * 10 + (std::uint64_t{1} << 49)) >> 50);
    // 1023.97 KiB would round to 1024.0: that is 1.0 of the next unit.
    if (tenths < 10240 || unit + 1 == kUnits.size()) {
      return GroupedNumber(tenths / 10) + "." + std::to_string(tenths % 10) + " " + kUnits[unit];
    }
  }
}

std::string GroupedNumber(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  std::string out;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i != 0 && (digits.size() - i) % 3 == 0) {
      out.push_back(',');
    }
    out.push_back(digits[i]);
  }
  return out;
}

std::string Counted(std::uint64_t number, std::string_view singular, std::string_view plural) {
  return GroupedNumber(number).append(" ").append(number == 1 ? singular : plural);
}

std::string HumanDuration(std::uint64_t microseconds) {
  const auto two_digits = [](std::uint64_t value) {
    return std::string(value < 10 ? "0" : "").append(std::to_string(value));
  };
  const std::uint64_t tenths = microseconds / 100000;
  const std::uint64_t seconds = tenths / 10;
  if (seconds == 0) {
    return std::to_string(microseconds / 1000) + " ms";
  }
  if (seconds < 60) {
    return std::to_string(seconds) + "." + std::to_string(tenths % 10) + " s";
  }
  if (seconds < 3600) {
    return std::to_string(seconds / 60) + " min " + two_digits(seconds % 60) + " s";
  }
  return GroupedNumber(seconds / 3600) + " h " + two_digits(seconds / 60 % 60) + " min";
}

std::size_t CellWidth(std::wstring_view text) {
  std::size_t halves = 0;
  for (const wchar_t unit : text) {
    halves += HalfCells(unit);
  }
  return (halves + 1) / 2;
}

std::wstring FitMiddle(std::wstring_view text, std::size_t cells) {
  if (CellWidth(text) <= cells) {
    return std::wstring(text);
  }
  if (cells <= kEllipsis.size()) {
    return std::wstring(kEllipsis.substr(0, cells));
  }
  const std::size_t room = 2 * (cells - kEllipsis.size());
  std::size_t head = 0;
  for (std::size_t used = 0; head < text.size(); ++head) {
    used += HalfCells(text[head]);
    if (used > room / 3) {
      break;
    }
  }
  if (head < text.size() && IsLowSurrogate(text[head])) {
    --head;
  }
  std::size_t left = room - 2 * CellWidth(text.substr(0, head));
  std::size_t tail = text.size();
  while (tail > head && HalfCells(text[tail - 1]) <= left) {
    left -= HalfCells(text[--tail]);
  }
  if (tail < text.size() && IsLowSurrogate(text[tail])) {
    ++tail;
  }
  return std::wstring(text.substr(0, head)).append(kEllipsis).append(text.substr(tail));
}

std::wstring Printable(std::wstring_view text) {
  std::wstring out(text);
  std::replace_if(
      out.begin(), out.end(),
      [](wchar_t unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); }, L'?');
  return out;
}

std::string PadLeft(std::string_view text, std::size_t width) {
  return std::string(width > text.size() ? width - text.size() : 0, ' ').append(text);
}

std::string PadRight(std::string_view text, std::size_t width) {
  std::string out(text);
  out.resize(std::max(width, text.size()), ' ');
  return out;
}

}  // namespace quastel::client
