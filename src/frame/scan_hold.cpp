#include "frame/scan_hold.h"

#include <algorithm>
#include <limits>

#include "platform/process.h"
#include "platform/thread.h"

namespace quastel {
namespace {

constexpr std::uint32_t kLongestHoldMs = 5000;
constexpr std::uint32_t kSliceMs = 25;
constexpr std::uint32_t kValueCapacity = 16;

constexpr bool IsBlank(Char c) {
  return c == Char{' '} || (c >= Char{'\t'} && c <= Char{'\r'});
}

constexpr bool IsDigit(Char c) {
  return c >= Char{'0'} && c <= Char{'9'};
}

std::uint32_t HoldFromEnvironment() noexcept {
  Char value[kValueCapacity] = {};
  const std::uint32_t length =
      platform::EnvironmentVariable(QS_TEXT("QUASTEL_SCAN_HOLD_MS"), value, kValueCapacity);
  // A longer value is answered with the capacity it needs, and nothing is in the buffer.
  if (length == 0 || length >= kValueCapacity) {
    return 0;
  }
  return std::min(ParseUnsigned32(TextView(value, length)), kLongestHoldMs);
}

}  // namespace

std::uint32_t ParseUnsigned32(TextView text) noexcept {
  constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
  std::size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) {
    ++i;
  }
  bool negative = false;
  if (i < text.size() && (text[i] == Char{'+'} || text[i] == Char{'-'})) {
    negative = text[i] == Char{'-'};
    ++i;
  }
  std::uint64_t number = 0;
  for (; i < text.size() && IsDigit(text[i]); ++i) {
    number = number * 10 + static_cast<std::uint64_t>(text[i] - Char{'0'});
    if (number > kLargest) {
      return static_cast<std::uint32_t>(kLargest);
    }
  }
  const auto magnitude = static_cast<std::uint32_t>(number);
  return negative ? 0 - magnitude : magnitude;
}

void HoldScan(CancelFlag& cancel) noexcept {
  std::uint32_t remaining = HoldFromEnvironment();
  while (remaining != 0 && !cancel.IsSet()) {
    const std::uint32_t slice = std::min(remaining, kSliceMs);
    platform::SleepMilliseconds(slice);
    remaining -= slice;
  }
}

}  // namespace quastel
