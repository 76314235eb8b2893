#include "duplicate/storage_kind.h"

#include <algorithm>
#include <array>

#include "fs/path_rules.h"
#include "platform/process.h"
#include "platform/volume.h"

namespace quastel::duplicate {
namespace {

constexpr std::uint32_t kVolumePathCapacity = 260;
constexpr std::uint32_t kWholeAnswer = 12;

StorageKind ProbeRoot(const Text& root) {
  Char volume[kVolumePathCapacity] = {};
  if (platform::VolumePathName(ToLongPath(root).c_str(), volume, kVolumePathCapacity) !=
      platform::Error::kNone) {
    return StorageKind::kUnknown;
  }
  const TextView volume_path(volume);
  if (platform::QueryDriveType(volume) != platform::kDriveFixed || volume_path.size() < 2 ||
      volume_path[1] != Char{':'}) {
    return StorageKind::kUnknown;
  }
  const Text device_path = Text(QS_TEXT("\\\\.\\")).append(volume_path.substr(0, 2));
  const auto device =
      platform::OpenFile(device_path.c_str(), platform::kAccessQuery, platform::kShareAll,
                         platform::Disposition::kOpenExisting, 0);
  if (!device.ok()) {
    return StorageKind::kUnknown;
  }
  const auto answer = platform::QuerySeekPenalty(device.value());
  if (!answer.ok() || answer.value().bytes_returned < kWholeAnswer) {
    return StorageKind::kUnknown;
  }
  return answer.value().incurs_seek_penalty ? StorageKind::kRotational : StorageKind::kSolidState;
}

}  // namespace

StorageKind ProbeStorageKind(const std::vector<Text>& roots) {
  StorageKind kind = StorageKind::kUnknown;
  for (const Text& root : roots) {
    kind = ProbeRoot(root);
    if (kind != StorageKind::kSolidState) {
      break;
    }
  }
  return kind;
}

std::size_t WorkerCountFor(std::size_t items, StorageKind kind) {
  constexpr std::array<std::size_t, 3> kCaps = {2, 16, 8};
  const std::size_t processors = std::max<std::size_t>(platform::ProcessorCount(), 1);
  return std::min({kCaps[static_cast<std::size_t>(kind)], processors, items});
}

}  // namespace quastel::duplicate
