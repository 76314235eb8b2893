// A file that a duplicate scan may find a copy of.

#ifndef QUASTEL_DUPLICATE_CANDIDATE_H_
#define QUASTEL_DUPLICATE_CANDIDATE_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "base/ascii.h"
#include "base/text.h"
#include "duplicate/hash_cache.h"

namespace quastel::duplicate {

// Between the head hash and the tail hash of a complete sample.
inline constexpr char kTailMark = '|';

struct DuplicateCandidate {
  Text path;
  Text odd_name;  // empty when the name is the path's last component, as it nearly always is
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  std::string sample;  // empty until sampled: the content of a small file, the hash of a head, or
                       // the hashes of head and tail
  std::string full_hash;         // empty until hashed in full
  CacheEntry* cached = nullptr;  // what the cache knows about the path, up to date or not

  TextView name() const { return odd_name.empty() ? LeafOf(path) : TextView(odd_name); }

  std::string_view head() const {
    return std::string_view(sample).substr(0, sample.find(kTailMark));
  }

  bool has_tail() const { return sample.find(kTailMark) != std::string::npos; }

  // The cache entry, if the file is still the one that it describes.
  const CacheEntry* valid_entry() const {
    const bool unchanged =
        cached != nullptr && cached->size == size && cached->last_write == last_write;
    return unchanged ? cached : nullptr;
  }
};

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_CANDIDATE_H_
