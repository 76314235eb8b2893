// A file that shares its size with another one, and what its content said so far.

#ifndef QUASTEL_DUPLICATE_SAMPLED_FILE_H_
#define QUASTEL_DUPLICATE_SAMPLED_FILE_H_

#include <cstdint>
#include <limits>
#include <vector>

#include "duplicate/candidate_list.h"
#include "duplicate/sample.h"
#include "duplicate/worker_pool.h"

namespace quastel::duplicate {

// Up to this size the sample is the whole content, and nothing has to be hashed.
inline constexpr std::uint64_t kSmallFile = kSampleSize;

// The place of a file in the array of those that share their size.
using SampledIndex = std::uint32_t;
inline constexpr std::uint32_t kNotHashed = std::numeric_limits<std::uint32_t>::max();

// The result is the sample: the content of a small file, the hash of a head, or the hashes of head
// and tail; empty until there is one, and again when the file turned out to be unreadable.
struct SampledFile : WorkItem {
  CandidateIndex candidate = 0;
  std::uint32_t hash_item = kNotHashed;
};
static_assert(sizeof(SampledFile) == 24);

using SampledFiles = std::vector<SampledFile>;

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_SAMPLED_FILE_H_
