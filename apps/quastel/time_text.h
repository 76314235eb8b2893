#ifndef QUASTEL_APPS_QUASTEL_TIME_TEXT_H_
#define QUASTEL_APPS_QUASTEL_TIME_TEXT_H_

#include <cstdint>
#include <optional>
#include <string>

namespace quastel::client {

// The library's times are local, in 100-nanosecond ticks since 0001-01-01. Both answer nothing for
// ticks that name no date Windows knows.
std::optional<std::string> LocalMinuteText(std::uint64_t ticks);  // "2024-05-31 17:04"
std::optional<std::string> LocalIsoText(std::uint64_t ticks);     // "2024-05-31T17:04:09"

// "2024-05-31T15:04:09.120Z"
std::string UtcNowIsoText();

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_TIME_TEXT_H_
