#include "duplicate/file_hash.h"

#include <algorithm>

#include "duplicate/hash_text.h"
#include "duplicate/xxhash32.h"
#include "frame/cancel.h"
#include "frame/thread_buffer.h"
#include "fs/path_rules.h"
#include "platform/file.h"

namespace quastel::duplicate {
namespace {

platform::Result<platform::FileHandle> OpenForHashing(const Char* path) {
  return platform::OpenFile(LongPath(path).c_str(), platform::kAccessRead, platform::kShareAll,
                            platform::Disposition::kOpenExisting,
                            platform::kAttributeNormal | platform::kFlagSequentialScan);
}

}  // namespace

qs_status HashFile(const Char* path, std::uint32_t* cancel, std::string& text) {
  const auto file = OpenForHashing(path);
  if (!file.ok()) {
    return QS_FAILED;
  }
  unsigned char* const buffer = ThreadBuffer();
  if (buffer == nullptr) {
    return QS_FAILED;
  }
  XxHash32 hash;
  for (;;) {
    if (IsCancelLoaded(cancel)) {
      return QS_CANCELLED;
    }
    const auto read = platform::ReadFrom(file.value(), buffer, kThreadBufferSize);
    if (!read.ok()) {
      return QS_FAILED;
    }
    if (read.value() == 0) {
      break;
    }
    if (IsCancelLoaded(cancel)) {
      return QS_CANCELLED;
    }
    hash.Update(buffer, read.value());
  }
  text = HashText(hash.Digest());
  return QS_OK;
}

std::optional<std::string> HashFileBlock(const Char* path, std::int64_t size, BlockPlace place) {
  if (size < 0) {
    return std::nullopt;
  }
  const auto file = OpenForHashing(path);
  if (!file.ok()) {
    return std::nullopt;
  }
  unsigned char block[kBlockSize];
  const auto length = static_cast<std::uint32_t>(std::min(size, kBlockSize));
  const std::int64_t offset = place == BlockPlace::kEnd ? size - length : 0;
  if (platform::SeekTo(file.value(), offset) != platform::Error::kNone) {
    return std::nullopt;
  }
  if (length > 0) {
    const auto read = platform::ReadFrom(file.value(), block, length);
    if (!read.ok() || read.value() != length) {
      return std::nullopt;
    }
  }
  return HashText(HashBytes(block, length));
}

}  // namespace quastel::duplicate
