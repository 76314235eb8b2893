// Writing the cache file: a temporary file first, which then takes the old one's place.

#include <algorithm>
#include <cstddef>
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
  explicit CacheWriter(const platform::FileHandle& file)
      : file_(file), buffer_(kFlushSize + kLongestEntry) {}

  void WriteHeader(std::uint32_t entries) {
    WriteBytes(kCacheMagic.data(), kCacheMagic.size());
    WriteInteger(entries);
  }

  void WriteEntry(const CacheEntry& entry) {
    MakeRoomFor(entry);
    WriteInteger(static_cast<std::uint32_t>(entry.key.size()));
    WriteBytes(entry.key.data(), entry.key.size() * sizeof(Char));
    WriteInteger(entry.size);
    WriteInteger(entry.last_write);
    WriteInteger(entry.confirmed_time);
    WriteDigest(entry.sample);
    WriteDigest(entry.full_hash);
  }

  // Hands a full buffer to the file.
  bool FlushWhenFull() { return used_ < kFlushSize || Flush(); }

  bool Flush() {
    const auto size = static_cast<std::uint32_t>(used_);
    const auto written = platform::WriteTo(file_, buffer_.data(), size);
    used_ = 0;
    return written.ok() && written.value() == size;
  }

 private:
  static constexpr std::size_t kFlushSize = std::size_t{64} * 1024;

  // There is room for every entry that the reader takes. Nothing keeps a caller's from being
  // longer.
  void MakeRoomFor(const CacheEntry& entry) {
    const std::size_t needed = used_ + kEmptyEntry + entry.key.size() * sizeof(Char) +
                               entry.sample.size() + entry.full_hash.size();
    if (needed > buffer_.size()) {
      buffer_.resize(needed);
    }
  }

  template <typename T>
  void WriteInteger(T value) {
    StoreLittleEndian(value, buffer_.data() + used_);
    used_ += sizeof(T);
  }

  void WriteBytes(const void* bytes, std::size_t size) {
    std::copy_n(static_cast<const unsigned char*>(bytes), size, buffer_.data() + used_);
    used_ += size;
  }

  // With its length in front.
  void WriteDigest(const DigestText& digest) {
    WriteInteger(static_cast<std::uint32_t>(digest.size()));
    digest.CopyTo(reinterpret_cast<char*>(buffer_.data()) + used_);
    used_ += digest.size();
  }

  const platform::FileHandle& file_;
  std::vector<unsigned char> buffer_;
  std::size_t used_ = 0;
};

bool WriteEntries(const platform::FileHandle& file, const HashCache& cache, std::uint32_t* cancel) {
  CacheWriter writer(file);
  std::vector<HashCache::Index> order = cache.InKeyOrder();
  order.resize(std::min<std::size_t>(order.size(), kMaxEntries));
  writer.WriteHeader(static_cast<std::uint32_t>(order.size()));
  for (const HashCache::Index index : order) {
    if (IsCancelRequested(cancel)) {
      return false;
    }
    writer.WriteEntry(cache[index]);
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
