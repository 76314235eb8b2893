// What earlier scans learned about files, kept in one file for each user profile.
//
// The cache only saves work. Every failure, a damaged file included, reads as an empty cache, and a
// failed write leaves the file as it was.

#ifndef QUASTEL_DUPLICATE_HASH_CACHE_H_
#define QUASTEL_DUPLICATE_HASH_CACHE_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "base/arena.h"
#include "base/block_list.h"
#include "base/text.h"
#include "duplicate/digest_text.h"

namespace quastel::duplicate {

struct CacheEntry {
  TextView key;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;      // ticks, as enumeration reports them
  std::uint64_t confirmed_time = 0;  // FILETIME, UTC
  DigestText sample;
  DigestText full_hash;  // empty when the file was never hashed in full
};

// The entries, found by their keys. What their texts point to is kept here, or by whoever put it
// in.
//
// A file holds the keys in their order, and a walk meets the files of a folder in nearly the same:
// so the entry behind the last one that was found is tried first, and the order is searched for the
// first of a folder. Where that does not do, there is a hash table of indexes.
class HashCache {
 public:
  using Index = std::uint32_t;
  static constexpr Index kNone = std::numeric_limits<Index>::max();

  bool empty() const { return entries_.empty(); }
  std::size_t size() const { return entries_.size(); }
  CacheEntry& operator[](Index index) { return entries_[index]; }
  const CacheEntry& operator[](Index index) const { return entries_[index]; }

  // The entry of this key, or kNone.
  Index Find(TextView key);
  Index FindOrAdd(TextView key);

  // The text, packed or kept as long as the cache.
  DigestText Keep(std::string_view text);

  // All entries in plain code-unit order of their keys, the order of the file.
  std::vector<Index> InKeyOrder() const;

 private:
  Index Add(TextView key);
  Index FindAnywhere(TextView key);
  Index SearchInOrder(TextView key) const;
  std::size_t PlaceOf(TextView key) const;
  void BuildTable(std::size_t size);

  BlockList<CacheEntry> entries_;
  bool is_in_key_order_ = true;
  Index next_ = 0;            // behind the entry that was found last
  std::size_t searches_ = 0;  // for keys that were not the next one
  std::vector<Index> table_;  // open addressing; made when there were too many searches
  Arena texts_;
};

// Where the cache of a profile lies; empty when the folder is neither drive-absolute nor UNC: then
// there is no cache.
Text CacheLocationOf(TextView user_home);

// The entries that still hold. `cancel` set means an empty cache.
HashCache LoadDuplicateCache(const Text& location, std::uint32_t* cancel);

// Writes the first kMaxEntries entries through a temporary file that replaces the old one whole.
void SaveDuplicateCache(const Text& location, const HashCache& cache, std::uint32_t* cancel);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_HASH_CACHE_H_
