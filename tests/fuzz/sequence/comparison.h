// The disks after an operation against what it should have left.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_COMPARISON_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_COMPARISON_H_

#include <set>

#include "fuzz/sequence/disk.h"
#include "fuzz/sequence/world.h"

namespace quastel::fuzz::sequence {

// Nothing that nobody else touched differs from what is expected, apart from the hash cache when
// that may be written, and from `uncertain` keys, which may be there or not.
void DemandDisk(World& world, const Disk& expected, bool cache_written,
                const std::set<Text>& uncertain = {});

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_COMPARISON_H_
