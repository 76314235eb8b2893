// The last-write time of a file as rows and callbacks give it.

#ifndef QUASTEL_FS_LOCAL_TICKS_H_
#define QUASTEL_FS_LOCAL_TICKS_H_

#include <cstdint>

#include "base/ticks.h"
#include "platform/clock.h"

namespace quastel {

// Local ticks of a FILETIME in UTC, which is taken for local time when it cannot be converted. One
// function for the scans and for the test before a deletion: a file is recognised by its result.
inline std::uint64_t LocalTicks(std::uint64_t file_time) {
  const auto local = platform::ToLocalFileTime(file_time);
  return (local.ok() ? local.value() : file_time) + kTicksAt1601;
}

}  // namespace quastel

#endif  // QUASTEL_FS_LOCAL_TICKS_H_
