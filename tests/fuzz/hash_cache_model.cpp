#include "fuzz/hash_cache_model.h"

#include "fuzz/demand.h"

namespace quastel::fuzz::model {
namespace {

constexpr std::uint64_t kLifetime = 72ull * 3600 * 10'000'000;

// Takes fields off the front of the file; nothing once it is too short.
class Fields {
 public:
  explicit Fields(std::string_view bytes) : bytes_(bytes) {}

  std::optional<std::string_view> Raw(std::uint64_t size) {
    if (size > bytes_.size()) {
      return std::nullopt;
    }
    const std::string_view raw = bytes_.substr(0, static_cast<std::size_t>(size));
    bytes_.remove_prefix(raw.size());
    return raw;
  }

  std::optional<std::uint64_t> Number(int size) {
    const auto raw = Raw(static_cast<std::uint64_t>(size));
    if (!raw) {
      return std::nullopt;
    }
    std::uint64_t value = 0;
    for (int i = size - 1; i >= 0; --i) {
      value = value << 8 | static_cast<unsigned char>((*raw)[static_cast<std::size_t>(i)]);
    }
    return value;
  }

  std::optional<std::string_view> Counted(std::uint64_t limit, std::uint64_t unit) {
    const auto count = Number(4);
    return count && *count <= limit ? Raw(*count * unit) : std::nullopt;
  }

 private:
  std::string_view bytes_;
};

void Put(std::string& out, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i, value >>= 8) {
    out += static_cast<char>(value & 0xFF);
  }
}

}  // namespace

CacheMap EntriesOf(const duplicate::HashCache& cache) {
  CacheMap entries = support::EntriesOf(cache);
  Demand(entries.size() == cache.size(), "a key is there once");
  return entries;
}

std::optional<Entries> ReadCacheFile(std::string_view bytes, std::uint64_t now,
                                     std::size_t& dropped) {
  Fields fields(bytes);
  const auto magic = fields.Raw(8);
  const auto count = fields.Number(4);
  if (!magic || *magic != "FWDCACH3" || !count || *count > 200'000) {
    return std::nullopt;
  }
  Entries entries;
  for (std::uint64_t i = 0; i < *count; ++i) {
    const auto path = fields.Counted(32'767, 2);
    const auto size = path ? fields.Number(8) : std::nullopt;
    const auto written = size ? fields.Number(8) : std::nullopt;
    const auto confirmed = written ? fields.Number(8) : std::nullopt;
    const auto sample = confirmed ? fields.Counted(300, 1) : std::nullopt;
    const auto hash = sample ? fields.Counted(8, 1) : std::nullopt;
    if (!hash) {
      return std::nullopt;
    }
    if (*confirmed > now || now - *confirmed > kLifetime || sample->empty()) {
      ++dropped;
      continue;
    }
    Text key;
    for (std::size_t at = 0; at < path->size(); at += 2) {
      key += static_cast<Char>(static_cast<unsigned char>((*path)[at]) |
                               static_cast<unsigned char>((*path)[at + 1]) << 8);
    }
    entries.emplace(
        key, CacheEntry{*size, *written, *confirmed, std::string(*sample), std::string(*hash)});
  }
  return entries;
}

std::string CacheFileOf(const CacheMap& cache) {
  std::string out = "FWDCACH3";
  Put(out, cache.size(), 4);
  for (const auto& [key, entry] : cache) {
    Put(out, key.size(), 4);
    for (const Char unit : key) {
      Put(out, unit, 2);
    }
    Put(out, entry.size, 8);
    Put(out, entry.last_write, 8);
    Put(out, entry.confirmed_time, 8);
    Put(out, entry.sample.size(), 4);
    out += entry.sample;
    Put(out, entry.full_hash.size(), 4);
    out += entry.full_hash;
  }
  return out;
}

}  // namespace quastel::fuzz::model
