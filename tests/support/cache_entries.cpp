#include "support/cache_entries.h"

namespace quastel::support {

duplicate::HashCache CacheOf(const CacheMap& entries) {
  duplicate::HashCache cache;
  for (const auto& [key, of] : entries) {
    duplicate::CacheEntry& entry = cache[cache.FindOrAdd(key)];
    entry.size = of.size;
    entry.last_write = of.last_write;
    entry.confirmed_time = of.confirmed_time;
    entry.sample = cache.Keep(of.sample);
    entry.full_hash = cache.Keep(of.full_hash);
  }
  return cache;
}

CacheMap EntriesOf(const duplicate::HashCache& cache) {
  CacheMap entries;
  for (const duplicate::HashCache::Index index : cache.InKeyOrder()) {
    const duplicate::CacheEntry& entry = cache[index];
    entries.emplace_hint(entries.end(), Text(entry.key),
                         CacheEntry{entry.size, entry.last_write, entry.confirmed_time,
                                    entry.sample.Get(), entry.full_hash.Get()});
  }
  return entries;
}

}  // namespace quastel::support
