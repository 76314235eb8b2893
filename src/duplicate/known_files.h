// What the cache knows about the files of one scan, and learns from it.

#ifndef QUASTEL_DUPLICATE_KNOWN_FILES_H_
#define QUASTEL_DUPLICATE_KNOWN_FILES_H_

#include <functional>
#include <utility>
#include <vector>

#include "duplicate/cache_key.h"
#include "duplicate/candidate_list.h"
#include "duplicate/hash_cache.h"
#include "duplicate/sampled_file.h"

namespace quastel::duplicate {

class KnownFiles {
 public:
  explicit KnownFiles(const CandidateList& candidates) : candidates_(candidates) {}

  void Load(const Text& location, std::uint32_t* cancel) {
    cache_ = LoadDuplicateCache(location, cancel);
  }

  // Looks every file up and sets the sample of those that are still as the cache describes them.
  void FindSamples(SampledFiles& sampled, std::uint32_t* cancel);

  // The full hash of a file that is still as the cache describes it; empty when it is not known.
  DigestText FullHashOf(const SampledFiles& sampled, SampledIndex file) const;

  // Puts what a file's content said into the cache.
  void Remember(const SampledFiles& sampled, SampledIndex file, const DigestText& full_hash);

  void Save(const Text& location, std::uint32_t* cancel) const {
    SaveDuplicateCache(location, cache_, cancel);
  }

 private:
  HashCache::Index EntryOf(SampledIndex file) const {
    return entries_.empty() ? HashCache::kNone : entries_[file];
  }
  const CacheEntry* ValidEntry(const SampledFile& sampled, SampledIndex file) const;
  const Text& KeyOf(CandidateIndex index);

  // The time, asked for once for several entries: they are written within microseconds, and asking
  // is a system call on some systems.
  std::uint64_t Now();

  const CandidateList& candidates_;
  HashCache cache_;
  CacheKeys keys_;
  Text leaf_;                              // kept, with its room
  std::vector<HashCache::Index> entries_;  // of each sampled file; none when the cache was empty
  std::uint64_t now_ = 0;
  std::uint32_t now_uses_left_ = 0;
};

// The place of each candidate in the array of the sampled files, or kNotSampled: files are looked
// up in the order of the walk, folder by folder.
inline constexpr SampledIndex kNotSampled = std::numeric_limits<SampledIndex>::max();
std::vector<SampledIndex> InWalkOrder(const CandidateList& candidates, const SampledFiles& sampled);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_KNOWN_FILES_H_
