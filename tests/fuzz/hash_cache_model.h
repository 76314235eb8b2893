// The cache file a second time, read and written as its format says.

#ifndef QUASTEL_TESTS_FUZZ_HASH_CACHE_MODEL_H_
#define QUASTEL_TESTS_FUZZ_HASH_CACHE_MODEL_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "duplicate/hash_cache.h"
#include "support/cache_entries.h"

namespace quastel::fuzz::model {

using support::CacheEntry;
using support::CacheMap;
using support::CacheOf;

// What the library has, and each key once.
CacheMap EntriesOf(const duplicate::HashCache& cache);

// A key that stands in a file twice may keep either entry.
using Entries = std::multimap<Text, CacheEntry>;

// The entries that hold at `now`; nothing when the file is damaged. `dropped` goes up with each of
// the others.
std::optional<Entries> ReadCacheFile(std::string_view bytes, std::uint64_t now,
                                     std::size_t& dropped);

std::string CacheFileOf(const CacheMap& cache);

}  // namespace quastel::fuzz::model

#endif  // QUASTEL_TESTS_FUZZ_HASH_CACHE_MODEL_H_
