// Which files share their head with another one.

#ifndef QUASTEL_DUPLICATE_SHARED_HEADS_H_
#define QUASTEL_DUPLICATE_SHARED_HEADS_H_

#include <vector>

#include "duplicate/candidate_list.h"
#include "duplicate/sampled_file.h"

namespace quastel::duplicate {

// The files whose head another file has, of whatever size, in the order of the heads as texts;
// those of one head in the order in which they are. Heads that a small file has are left out: its
// sample says all there is.
std::vector<SampledIndex> FindSharedHeads(const CandidateList& candidates,
                                          const SampledFiles& sampled);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_SHARED_HEADS_H_
