// Volumes and the devices below them.

#ifndef QUASTEL_PLATFORM_VOLUME_H_
#define QUASTEL_PLATFORM_VOLUME_H_

#include <cstdint>

#include "base/text.h"
#include "platform/error.h"
#include "platform/file.h"

namespace quastel::platform {

// GetVolumePathNameW.
[[nodiscard]] Error VolumePathName(const Char* path, Char* buffer, std::uint32_t capacity) noexcept;

inline constexpr std::uint32_t kDriveUnknown = 0;
inline constexpr std::uint32_t kDriveNoRoot = 1;
inline constexpr std::uint32_t kDriveRemovable = 2;
inline constexpr std::uint32_t kDriveFixed = 3;
inline constexpr std::uint32_t kDriveRemote = 4;

// GetDriveTypeW.
[[nodiscard]] std::uint32_t QueryDriveType(const Char* volume_root) noexcept;

struct SeekPenalty {
  std::uint32_t bytes_returned = 0;  // 12 for a whole answer
  bool incurs_seek_penalty = false;
};

// DeviceIoControl with IOCTL_STORAGE_QUERY_PROPERTY, StorageDeviceSeekPenaltyProperty and
// PropertyStandardQuery, 12 bytes in and out.
Result<SeekPenalty> QuerySeekPenalty(const FileHandle& device) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_VOLUME_H_
