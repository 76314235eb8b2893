// Reading the cache file: whole and sound, or not at all.

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

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

// Reads a file piece by piece, and knows how much of it is left: no length that the file itself
// claims is believed, or allocated for, beyond that.
class CacheReader {
 public:
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the first read fills the buffer
  CacheReader(const platform::FileHandle& file, std::uint64_t size)
      : file_(file), remaining_(size) {}

  std::uint64_t remaining() const { return remaining_; }

  bool Read(std::span<unsigned char> out) {
    if (out.size() > remaining_) {
      return false;
    }
    remaining_ -= out.size();
    while (!out.empty()) {
      if (position_ == filled_ && !Fill()) {
        return false;
      }
      const std::size_t taken = std::min(out.size(), filled_ - position_);
      std::copy_n(buffer_.data() + position_, taken, out.data());
      position_ += taken;
      out = out.subspan(taken);
    }
    return true;
  }

  template <typename T>
  std::optional<T> ReadInteger() {
    unsigned char bytes[sizeof(T)];
    return Read(bytes) ? std::optional<T>(LoadLittleEndian<T>(bytes)) : std::nullopt;
  }

  // A length that is within its limit and within the file.
  std::optional<std::uint32_t> ReadLength(std::uint32_t limit, std::uint32_t unit_size) {
    const auto length = ReadInteger<std::uint32_t>();
    if (!length || *length > limit || std::uint64_t{*length} * unit_size > remaining_) {
      return std::nullopt;
    }
    return length;
  }

 private:
  bool Fill() {
    const auto read =
        platform::ReadFrom(file_, buffer_.data(), static_cast<std::uint32_t>(buffer_.size()));
    if (!read.ok() || read.value() == 0) {
      return false;
    }
    position_ = 0;
    filled_ = read.value();
    return true;
  }

  const platform::FileHandle& file_;
  std::uint64_t remaining_;
  std::array<unsigned char, std::size_t{16} * 1024> buffer_;
  std::size_t position_ = 0;
  std::size_t filled_ = 0;
};

// The fields of one entry, in buffers that are kept from one to the next.
struct EntryFields {
  std::vector<unsigned char> bytes;
  Text key;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  std::uint64_t confirmed_time = 0;
  std::string sample;
  std::string full_hash;
};

bool ReadKey(CacheReader& reader, EntryFields& entry) {
  const auto length = reader.ReadLength(kMaxPathLength, sizeof(Char));
  if (!length) {
    return false;
  }
  entry.bytes.resize(std::size_t{*length} * sizeof(Char));
  if (!reader.Read(entry.bytes)) {
    return false;
  }
  entry.key.resize(*length);
  for (std::size_t i = 0; i < entry.key.size(); ++i) {
    entry.key[i] =
        static_cast<Char>(LoadLittleEndian<std::uint16_t>(entry.bytes.data() + i * sizeof(Char)));
  }
  return true;
}

bool ReadBytes(CacheReader& reader, std::uint32_t limit, std::string& bytes) {
  const auto length = reader.ReadLength(limit, 1);
  if (!length) {
    return false;
  }
  bytes.resize(*length);
  return reader.Read({reinterpret_cast<unsigned char*>(bytes.data()), bytes.size()});
}

bool ReadEntry(CacheReader& reader, EntryFields& entry) {
  if (!ReadKey(reader, entry)) {
    return false;
  }
  const auto size = reader.ReadInteger<std::uint64_t>();
  const auto last_write = reader.ReadInteger<std::uint64_t>();
  const auto confirmed_time = reader.ReadInteger<std::uint64_t>();
  if (!size || !last_write || !confirmed_time) {
    return false;
  }
  entry.size = *size;
  entry.last_write = *last_write;
  entry.confirmed_time = *confirmed_time;
  return ReadBytes(reader, kMaxSampleLength, entry.sample) &&
         ReadBytes(reader, kMaxHashLength, entry.full_hash);
}

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

bool ReadMagic(CacheReader& reader) {
  std::array<unsigned char, kCacheMagic.size()> magic = {};
  return reader.Read(magic) && std::equal(magic.begin(), magic.end(), kCacheMagic.begin());
}

std::optional<HashCache> ReadEntries(CacheReader& reader, std::uint64_t now,
                                     std::uint32_t* cancel) {
  if (!ReadMagic(reader)) {
    return std::nullopt;
  }
  const auto count = reader.ReadInteger<std::uint32_t>();
  if (!count || *count > kMaxEntries) {
    return std::nullopt;
  }
  HashCache cache;
  EntryFields fields;
  for (std::uint32_t i = 0; i < *count; ++i) {
    if (IsCancelRequested(cancel) || !ReadEntry(reader, fields)) {
      return std::nullopt;
    }
    if (StillHolds(fields, now)) {
      PutEntry(cache, fields);
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
