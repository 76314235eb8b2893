// What earlier scans learned about files, kept in one file for each user profile.
//
// The cache only saves work. Every failure, a damaged file included, reads as an empty cache, and a
// failed write leaves the file as it was.

#ifndef QUASTEL_DUPLICATE_HASH_CACHE_H_
#define QUASTEL_DUPLICATE_HASH_CACHE_H_

#include <cstdint>
#include <map>
#include <string>

#include "base/text.h"

namespace quastel::duplicate {

struct CacheEntry {
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;      // ticks, as enumeration reports them
  std::uint64_t confirmed_time = 0;  // FILETIME, UTC
  std::string sample;
  std::string full_hash;  // empty when the file was never hashed in full
};

// In plain code-unit order of the key, the order of the file.
using CacheMap = std::map<Text, CacheEntry>;

// The key of a file: its full path with "\" as the separator, folded to lower case.
Text CacheKeyOf(const Text& path);

// Where the cache of a profile lies; empty when the folder is neither drive-absolute nor UNC: then
// there is no cache.
Text CacheLocationOf(TextView user_home);

// The entries that still hold. `cancel` set means an empty map.
CacheMap LoadDuplicateCache(const Text& location, std::uint32_t* cancel);

// Writes the first kMaxEntries entries through a temporary file that replaces the old one whole.
void SaveDuplicateCache(const Text& location, const CacheMap& cache, std::uint32_t* cancel);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_HASH_CACHE_H_
