#include "platform/volume.h"

#include "platform/win32/windows_api.h"
// Needs the types of windows.h.
#include <winioctl.h>

namespace quastel::platform {

namespace {

static_assert(sizeof(STORAGE_PROPERTY_QUERY) == 12);
static_assert(sizeof(DEVICE_SEEK_PENALTY_DESCRIPTOR) == 12);

}  // namespace

Error VolumePathName(const Char* path, Char* buffer, std::uint32_t capacity) noexcept {
  return ErrorUnless(::GetVolumePathNameW(path, buffer, capacity));
}

std::uint32_t QueryDriveType(const Char* volume_root) noexcept {
  return ::GetDriveTypeW(volume_root);
}

Result<SeekPenalty> QuerySeekPenalty(const FileHandle& device) noexcept {
  STORAGE_PROPERTY_QUERY query{};
  query.PropertyId = StorageDeviceSeekPenaltyProperty;
  query.QueryType = PropertyStandardQuery;
  DEVICE_SEEK_PENALTY_DESCRIPTOR answer{};
  DWORD returned = 0;
  if (::DeviceIoControl(ToSystemHandle(device.raw()), IOCTL_STORAGE_QUERY_PROPERTY, &query,
                        sizeof(query), &answer, sizeof(answer), &returned, nullptr) == FALSE) {
    return FailureOfLastCall();
  }
  return SeekPenalty{returned, answer.IncursSeekPenalty != FALSE};
}

}  // namespace quastel::platform
