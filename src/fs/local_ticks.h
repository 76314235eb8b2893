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

// The same for the files of a folder. What local time is ahead by is asked for at the first of them
// and from time to time: it is the same for all times, and asking is a system call on some systems.
class FolderTicks {
 public:
  // What is known may have changed since the last folder.
  void Forget() { uses_left_ = 0; }

  std::uint64_t Of(std::uint64_t file_time) {
    const bool is_usual = file_time - kFarthestZone < kEndOfTime - 2 * kFarthestZone;
    if (is_usual && uses_left_ > 0) {
      --uses_left_;
      return file_time + ahead_ + kTicksAt1601;
    }
    const auto local = platform::ToLocalFileTime(file_time);
    if (local.ok() && is_usual) {
      ahead_ = local.value() - file_time;
      uses_left_ = kUses;
    }
    return (local.ok() ? local.value() : file_time) + kTicksAt1601;
  }

 private:
  // Near either end of the times that there are, only the system knows what becomes of one.
  static constexpr std::uint64_t kEndOfTime = std::uint64_t{1} << 63;
  static constexpr std::uint64_t kFarthestZone = 864'000'000'000;  // a day

  static constexpr std::uint32_t kUses = 256;

  std::uint64_t ahead_ = 0;  // modulo 2^64
  std::uint32_t uses_left_ = 0;
};

}  // namespace quastel

#endif  // QUASTEL_FS_LOCAL_TICKS_H_
