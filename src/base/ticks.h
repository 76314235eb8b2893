// Tick times: 100-nanosecond units since 0001-01-01 00:00, local time.

#ifndef QUASTEL_BASE_TICKS_H_
#define QUASTEL_BASE_TICKS_H_

#include <cstdint>

namespace quastel {

// The ticks from 0001-01-01 to 1601-01-01, where the FILETIME of the system begins.
inline constexpr std::uint64_t kTicksAt1601 = 504'911'232'000'000'000;

}  // namespace quastel

#endif  // QUASTEL_BASE_TICKS_H_
