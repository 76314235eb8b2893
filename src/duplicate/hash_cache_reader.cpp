// Reading the cache file: whole and sound, or not at all.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "base/little_endian.h"
#include "duplicate/hash_cache.h"
#include "duplicate/hash_cache_format.h"
#include "frame/boundary.h"
#include "frame/cancel.h"
#include "fs/path_rules.h"
#include "platform/clock.h"
#include "platform/file.h"

namespace quastel::duplicate {
namespace {

// Hands a file out in pieces that lie whole in its buffer, and knows how much of it is left: no
// length that the file itself claims is believed beyond that.
class CacheReader {
 public:
  CacheReader(const platform::FileHandle& file, std::uint64_t size)
      : file_(file),
        remaining_(size),
        buffer_(std::make_unique_for_overwrite<unsigned char[]>(kBufferSize)) {}

  // The next bytes, without going past them; they hold until the next call. Null when there are not
  // as many.
  const unsigned char* Peek(std::size_t size) {
    if (size > remaining_ || size > kBufferSize) {
      return nullptr;
    }
    while (filled_ - position_ < size) {
      if (!Fill()) {
        return nullptr;
      }
    }
    return buffer_.get() + position_;
  }

  // Goes past bytes that were peeked at.
  void Skip(std::size_t size) {
    position_ += size;
    remaining_ -= size;
  }

 private:
  // Room for the longest entry behind the rest of another one.
  static constexpr std::size_t kBufferSize = std::size_t{128} * 1024;
  static_assert(kBufferSize >= kLongestEntry);

  // Moves what is left to the front and reads behind it.
  bool Fill() {
    std::copy(buffer_.get() + position_, buffer_.get() + filled_, buffer_.get());
    filled_ -= position_;
    position_ = 0;
    const auto read = platform::ReadFrom(file_, buffer_.get() + filled_,
                                         static_cast<std::uint32_t>(kBufferSize - filled_));
    if (!read.ok() || read.value() == 0) {
      return false;
    }
    filled_ += read.value();
    return true;
  }

  const platform::FileHandle& file_;
  std::uint64_t remaining_;
  const std::unique_ptr<unsigned char[]> buffer_;
  std::size_t position_ = 0;
  std::size_t filled_ = 0;
};

// The texts hold until the next entry is read.
struct EntryFields {
  Text key;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  std::uint64_t confirmed_time = 0;
  std::string_view sample;
  std::string_view full_hash;
};

// Makes one entry after the other of the bytes behind the reader's place.
class EntryReader {
 public:
  explicit EntryReader(CacheReader& reader) : reader_(reader) {}

  bool Next(EntryFields& entry) {
    std::size_t offset = 0;
    const auto key_length = Length(offset, kMaxPathLength);
    if (!key_length) {
      return false;
    }
    const std::size_t key_at = offset;
    const std::size_t key_bytes = *key_length * sizeof(Char);
    const std::size_t numbers_at = key_at + key_bytes;
    offset = numbers_at + 3 * sizeof(std::uint64_t);
    const auto sample_length = Length(offset, kMaxSampleLength);
    if (!sample_length) {
      return false;
    }
    const std::size_t sample_at = offset;
    offset += *sample_length;
    const auto hash_length = Length(offset, kMaxHashLength);
    if (!hash_length) {
      return false;
    }
    const std::size_t hash_at = offset;
    offset += *hash_length;
    const unsigned char* const bytes = reader_.Peek(offset);
    if (bytes == nullptr) {
      return false;
    }
    // A key may lie at an odd place, where no text can be looked at.
    entry.key.resize(*key_length);
    std::memcpy(entry.key.data(), bytes + key_at, key_bytes);
    constexpr std::size_t kNumber = sizeof(std::uint64_t);
    entry.size = LoadLittleEndian<std::uint64_t>(bytes + numbers_at);
    entry.last_write = LoadLittleEndian<std::uint64_t>(bytes + numbers_at + kNumber);
    entry.confirmed_time = LoadLittleEndian<std::uint64_t>(bytes + numbers_at + 2 * kNumber);
    entry.sample = {reinterpret_cast<const char*>(bytes) + sample_at, *sample_length};
    entry.full_hash = {reinterpret_cast<const char*>(bytes) + hash_at, *hash_length};
    reader_.Skip(offset);
    return true;
  }

 private:
  // A length that is within its limit; `offset` moves behind it.
  std::optional<std::uint32_t> Length(std::size_t& offset, std::uint32_t limit) {
    const unsigned char* const bytes = reader_.Peek(offset + sizeof(std::uint32_t));
    if (bytes == nullptr) {
      return std::nullopt;
    }
    const auto length = LoadLittleEndian<std::uint32_t>(bytes + offset);
    offset += sizeof(length);
    return length <= limit ? std::optional<std::uint32_t>(length) : std::nullopt;
  }

  CacheReader& reader_;
};

// An entry from the future means that the clock was set back: its age is unknown.
bool StillHolds(const EntryFields& entry, std::uint64_t now) {
  return entry.confirmed_time <= now && now - entry.confirmed_time <= kLifetime &&
         !entry.sample.empty();
}

void PutEntry(HashCache& cache, const EntryFields& fields) {
  CacheEntry& entry = cache[cache.FindOrAdd(fields.key)];
  entry.size = fields.size;
  entry.last_write = fields.last_write;
  entry.confirmed_time = fields.confirmed_time;
  entry.sample = cache.Keep(fields.sample);
  entry.full_hash = cache.Keep(fields.full_hash);
}

// The number of entries that the header announces.
std::optional<std::uint32_t> ReadHeader(CacheReader& reader) {
  constexpr std::size_t kHeaderSize = kCacheMagic.size() + sizeof(std::uint32_t);
  const unsigned char* const header = reader.Peek(kHeaderSize);
  if (header == nullptr || !std::equal(kCacheMagic.begin(), kCacheMagic.end(), header)) {
    return std::nullopt;
  }
  const auto count = LoadLittleEndian<std::uint32_t>(header + kCacheMagic.size());
  reader.Skip(kHeaderSize);
  return count <= kMaxEntries ? std::optional<std::uint32_t>(count) : std::nullopt;
}

std::optional<HashCache> ReadEntries(CacheReader& reader, std::uint64_t now,
                                     std::uint32_t* cancel) {
  const auto count = ReadHeader(reader);
  if (!count) {
    return std::nullopt;
  }
  HashCache cache;
  EntryReader entries(reader);
  EntryFields entry;
  for (std::uint32_t i = 0; i < *count; ++i) {
    if (IsCancelRequested(cancel) || !entries.Next(entry)) {
      return std::nullopt;
    }
    if (StillHolds(entry, now)) {
      PutEntry(cache, entry);
    }
  }
  return cache;
}

HashCache ReadCacheFile(const Text& location, std::uint32_t* cancel) {
  const std::uint64_t now = platform::SystemFileTime();
  const auto file =
      platform::OpenFile(ToLongPath(location).c_str(), platform::kAccessRead, platform::kShareAll,
                         platform::Disposition::kOpenExisting, platform::kAttributeNormal);
  if (!file.ok()) {
    return {};
  }
  const auto size = platform::QuerySize(file.value());
  if (!size.ok()) {
    return {};
  }
  CacheReader reader(file.value(), static_cast<std::uint64_t>(size.value()));
  return ReadEntries(reader, now, cancel).value_or(HashCache());
}

}  // namespace

HashCache LoadDuplicateCache(const Text& location, std::uint32_t* cancel) {
  HashCache cache;
  if (!location.empty() && !IsCancelRequested(cancel)) {
    // A lack of memory is a failure like any other: the scan goes on without the cache.
    (void)StatusBoundary([&]() -> qs_status {
      cache = ReadCacheFile(location, cancel);
      return QS_OK;
    });
  }
  return cache;
}

}  // namespace quastel::duplicate
