// Writing the cache file: a temporary file first, which then takes the old one's place.

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "base/little_endian.h"
#include "duplicate/hash_cache.h"
#include "duplicate/hash_cache_format.h"
#include "frame/boundary.h"
#include "frame/cancel.h"
#include "fs/path_rules.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/shell.h"

namespace quastel::duplicate {
namespace {

class CacheWriter {
 public:
  explicit CacheWriter(const platform::FileHandle& file) : file_(file) {
    buffer_.reserve(kBufferSize);
  }

  template <typename T>
  void WriteInteger(T value) {
    unsigned char bytes[sizeof(T)];
    StoreLittleEndian(value, bytes);
    buffer_.insert(buffer_.end(), bytes, bytes + sizeof(T));
  }

  void WriteBytes(std::string_view bytes) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
  }

  void WriteText(TextView text) {
    const std::size_t start = buffer_.size();
    buffer_.resize(start + text.size() * sizeof(Char));
    for (std::size_t i = 0; i < text.size(); ++i) {
      StoreLittleEndian(static_cast<std::uint16_t>(text[i]),
                        buffer_.data() + start + i * sizeof(Char));
    }
  }

  // With its length in front.
  void WriteDigest(const DigestText& digest) {
    digest_.clear();
    digest.AppendTo(digest_);
    WriteInteger(static_cast<std::uint32_t>(digest_.size()));
    WriteBytes(digest_);
  }

  // Hands a full buffer to the file.
  bool FlushWhenFull() { return buffer_.size() < kBufferSize || Flush(); }

  bool Flush() {
    const auto size = static_cast<std::uint32_t>(buffer_.size());
    const auto written = platform::WriteTo(file_, buffer_.data(), size);
    buffer_.clear();
    return written.ok() && written.value() == size;
  }

 private:
  static constexpr std::size_t kBufferSize = std::size_t{64} * 1024;

  const platform::FileHandle& file_;
  std::vector<unsigned char> buffer_;
  std::string digest_;
};

void WriteEntry(CacheWriter& writer, const CacheEntry& entry) {
  writer.WriteInteger(static_cast<std::uint32_t>(entry.key.size()));
  writer.WriteText(entry.key);
  writer.WriteInteger(entry.size);
  writer.WriteInteger(entry.last_write);
  writer.WriteInteger(entry.confirmed_time);
  writer.WriteDigest(entry.sample);
  writer.WriteDigest(entry.full_hash);
}

bool WriteEntries(const platform::FileHandle& file, const HashCache& cache, std::uint32_t* cancel) {
  CacheWriter writer(file);
  std::vector<HashCache::Index> order = cache.InKeyOrder();
  order.resize(std::min<std::size_t>(order.size(), kMaxEntries));
  writer.WriteBytes(kCacheMagic);
  writer.WriteInteger(static_cast<std::uint32_t>(order.size()));
  for (const HashCache::Index index : order) {
    if (IsCancelRequested(cancel)) {
      return false;
    }
    WriteEntry(writer, cache[index]);
    if (!writer.FlushWhenFull()) {
      return false;
    }
  }
  return writer.Flush();
}

// Writes, flushes and closes; the handle is closed in any case.
bool WriteTemporary(platform::FileHandle file, const HashCache& cache, std::uint32_t* cancel) {
  return WriteEntries(file, cache, cancel) && platform::FlushFile(file) == platform::Error::kNone &&
         platform::CloseFile(std::move(file)) == platform::Error::kNone;
}

bool MakeFolderOf(const Text& location) {
  const std::size_t last = LastSeparator(location);
  if (last == TextView::npos) {
    return false;
  }
  const platform::Error error = platform::CreateFolderTree(location.substr(0, last).c_str());
  return error == platform::Error::kNone || platform::IsAlreadyThere(error);
}

// A file that goes away again unless it takes the place of another one.
class TemporaryFile {
 public:
  explicit TemporaryFile(Text path) : path_(std::move(path)) {}
  ~TemporaryFile() {
    if (present_) {
      // Left behind it would do no harm: the next write truncates it.
      (void)platform::RemoveFile(path_.c_str());
    }
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  platform::Result<platform::FileHandle> Create() {
    auto file =
        platform::OpenFile(path_.c_str(), platform::kAccessWrite, platform::kShareAll,
                           platform::Disposition::kCreateAlways, platform::kAttributeNormal);
    present_ = file.ok();
    return file;
  }

  void Replace(const Text& other) {
    const platform::Error error = platform::RenameFile(
        path_.c_str(), other.c_str(), platform::kMoveReplaceExisting | platform::kMoveWriteThrough);
    present_ = error != platform::Error::kNone;
  }

 private:
  const Text path_;
  bool present_ = false;
};

void WriteCacheFile(const Text& location, const HashCache& cache, std::uint32_t* cancel) {
  if (!MakeFolderOf(location)) {
    return;
  }
  const Text final_path = ToLongPath(location);
  TemporaryFile temporary(ToLongPath(Text(location).append(kTemporarySuffix)));
  auto file = temporary.Create();
  if (file.ok() && WriteTemporary(std::move(file).value(), cache, cancel)) {
    temporary.Replace(final_path);
  }
}

}  // namespace

void SaveDuplicateCache(const Text& location, const HashCache& cache, std::uint32_t* cancel) {
  if (!location.empty() && !IsCancelRequested(cancel)) {
    // A lack of memory is a failure like any other: the old file stays.
    (void)StatusBoundary([&]() -> qs_status {
      WriteCacheFile(location, cache, cancel);
      return QS_OK;
    });
  }
}

}  // namespace quastel::duplicate
