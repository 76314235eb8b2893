// The size and age classes that an interface filters by.

#ifndef QUASTEL_FS_MATCHERS_H_
#define QUASTEL_FS_MATCHERS_H_

#include <cstdint>

namespace quastel {

bool MatchesSize(std::int64_t size, std::uint32_t mode);

// Both times in ticks since 0001-01-01, local time.
bool MatchesDate(std::int64_t file_time, std::int64_t now, std::int32_t mode);

}  // namespace quastel

#endif  // QUASTEL_FS_MATCHERS_H_
