#include "duplicate/cache_bytes.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

namespace quastel::duplicate_tests {
namespace {

// Takes fields off the front of the file; nothing once it is too short.
class Taker {
 public:
  explicit Taker(std::string_view bytes) : bytes_(bytes) {}

  std::optional<std::string_view> Raw(std::uint64_t size) {
    if (size > bytes_.size()) {
      bytes_ = {};
      return std::nullopt;
    }
    const std::string_view out = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return out;
  }

  std::optional<std::uint64_t> Number(std::size_t size) {
    const auto raw = Raw(size);
    if (!raw) {
      return std::nullopt;
    }
    std::uint64_t out = 0;
    for (std::size_t i = size; i > 0; --i) {
      out = out << 8 | static_cast<unsigned char>((*raw)[i - 1]);
    }
    return out;
  }

  std::optional<std::string_view> Counted(std::uint64_t limit, std::uint64_t unit) {
    const auto length = Number(4);
    return length && *length <= limit ? Raw(*length * unit) : std::nullopt;
  }

 private:
  std::string_view bytes_;
};

bool TakeEntry(Taker& taker, std::uint64_t now, CacheMap& out) {
  const auto path = taker.Counted(32'767, 2);
  const auto size = taker.Number(8);
  const auto last_write = taker.Number(8);
  const auto confirmed = taker.Number(8);
  const auto sample = taker.Counted(300, 1);
  const auto hash = taker.Counted(8, 1);
  if (!path || !size || !last_write || !confirmed || !sample || !hash) {
    return false;
  }
  if (*confirmed <= now && now - *confirmed <= 72 * kHour && !sample->empty()) {
    Text key;
    for (std::size_t i = 0; i < path->size(); i += 2) {
      key += static_cast<Char>(static_cast<unsigned char>((*path)[i]) |
                               static_cast<unsigned char>((*path)[i + 1]) << 8);
    }
    out[key] = {*size, *last_write, *confirmed, std::string(*sample), std::string(*hash)};
  }
  return true;
}

}  // namespace

CacheMap EntriesOf(const duplicate::HashCache& cache) {
  CacheMap entries = support::EntriesOf(cache);
  EXPECT_EQ(entries.size(), cache.size()) << "a key is there twice";
  return entries;
}

CacheMap LoadCache(const Text& location, std::uint32_t* cancel) {
  return EntriesOf(duplicate::LoadDuplicateCache(location, cancel));
}

void SaveCache(const Text& location, const CacheMap& entries, std::uint32_t* cancel) {
  duplicate::SaveDuplicateCache(location, CacheOf(entries), cancel);
}

Bytes& Bytes::Raw(std::string_view bytes) {
  text += bytes;
  return *this;
}

Bytes& Bytes::U32(std::uint32_t value) {
  for (int i = 0; i < 4; ++i, value >>= 8) {
    text += static_cast<char>(value & 0xFF);
  }
  return *this;
}

Bytes& Bytes::U64(std::uint64_t value) {
  return U32(static_cast<std::uint32_t>(value)).U32(static_cast<std::uint32_t>(value >> 32));
}

Bytes& Bytes::Path(TextView path) {
  U32(static_cast<std::uint32_t>(path.size()));
  for (const Char c : path) {
    text += static_cast<char>(c & 0xFF);
    text += static_cast<char>(c >> 8);
  }
  return *this;
}

Bytes& Bytes::Short(std::string_view content) {
  return U32(static_cast<std::uint32_t>(content.size())).Raw(content);
}

Bytes& Bytes::Entry(TextView key, const CacheEntry& entry) {
  return Path(key)
      .U64(entry.size)
      .U64(entry.last_write)
      .U64(entry.confirmed_time)
      .Short(entry.sample)
      .Short(entry.full_hash);
}

Bytes Head(std::uint32_t count) {
  return Bytes().Raw("FWDCACH3").U32(count);
}

std::string FileOf(const CacheMap& cache) {
  const std::size_t count = std::min<std::size_t>(cache.size(), 200'000);
  Bytes out = Head(static_cast<std::uint32_t>(count));
  auto entry = cache.begin();
  for (std::size_t i = 0; i < count; ++i, ++entry) {
    out.Entry(entry->first, entry->second);
  }
  return std::move(out.text);
}

CacheMap ModelRead(std::string_view bytes, std::uint64_t now) {
  Taker taker(bytes);
  CacheMap out;
  const auto magic = taker.Raw(8);
  const auto count = taker.Number(4);
  if (!magic || *magic != "FWDCACH3" || !count || *count > 200'000) {
    return {};
  }
  for (std::uint64_t i = 0; i < *count; ++i) {
    if (!TakeEntry(taker, now, out)) {
      return {};
    }
  }
  return out;
}

bool Same(const CacheMap& a, const CacheMap& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
    return x.first == y.first && x.second.size == y.second.size &&
           x.second.last_write == y.second.last_write &&
           x.second.confirmed_time == y.second.confirmed_time &&
           x.second.sample == y.second.sample && x.second.full_hash == y.second.full_hash;
  });
}

std::vector<std::string> Lines(const CacheMap& cache) {
  std::vector<std::string> out;
  for (const auto& [key, entry] : cache) {
    out.push_back(Utf8(key) + " size " + std::to_string(entry.size) + " written " +
                  std::to_string(entry.last_write) + " confirmed " +
                  std::to_string(entry.confirmed_time) + " sample '" + entry.sample + "' hash '" +
                  entry.full_hash + "'");
  }
  return out;
}

CacheEntry EntryOf(std::string sample, std::string full_hash) {
  return {12, 638'000'000'000'000'000, kNow - kHour, std::move(sample), std::move(full_hash)};
}

CacheMap NumberedEntries(std::size_t count, std::size_t sample_length) {
  CacheMap out;
  for (std::size_t i = 0; i < count; ++i) {
    char name[48];
    std::snprintf(name, sizeof name, "c:\\data\\file%07zu", i);
    CacheEntry entry = EntryOf(std::string(sample_length, static_cast<char>('a' + i % 26)),
                               i % 3 == 0 ? "" : "78563412");
    entry.size = i;
    out.emplace_hint(out.end(), support::Wide(name), std::move(entry));
  }
  return out;
}

void CacheTest::ExpectLoads(const Bytes& bytes, std::size_t entries) {
  Put(bytes);
  const CacheMap expected = ModelRead(bytes.text, kNow);
  EXPECT_EQ(expected.size(), entries) << "the test's own reader";
  EXPECT_EQ(Lines(Load()), Lines(expected));
}

void CacheTest::ExpectFile(const std::string& content) {
  EXPECT_TRUE(machine_.ContentOf(location_) == content);
  EXPECT_FALSE(machine_.Exists(temporary_));
}

}  // namespace quastel::duplicate_tests
