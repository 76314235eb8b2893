// A hash cache as the tests think of it: a plain map.

#ifndef QUASTEL_TESTS_SUPPORT_CACHE_ENTRIES_H_
#define QUASTEL_TESTS_SUPPORT_CACHE_ENTRIES_H_

#include <cstdint>
#include <map>
#include <string>

#include "base/text.h"
#include "duplicate/hash_cache.h"

namespace quastel::support {

struct CacheEntry {
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  std::uint64_t confirmed_time = 0;
  std::string sample;
  std::string full_hash;
};
using CacheMap = std::map<Text, CacheEntry>;

// The same as the library has it, and back. A key that the library had twice is there once.
duplicate::HashCache CacheOf(const CacheMap& entries);
CacheMap EntriesOf(const duplicate::HashCache& cache);

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_CACHE_ENTRIES_H_
