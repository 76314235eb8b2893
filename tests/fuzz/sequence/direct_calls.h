// The functions that need no handle, called on whatever the disks hold.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_DIRECT_CALLS_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_DIRECT_CALLS_H_

#include "fuzz/call_sequences_check.h"
#include "fuzz/input.h"
#include "fuzz/sequence/watch.h"
#include "fuzz/sequence/world.h"

namespace quastel::fuzz::sequence {

// One of them, with its answer and the disks afterwards compared with what they must be.
void CallDirectly(World& world, Watch& watch, Input& input, CallSequenceSeen& seen);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_DIRECT_CALLS_H_
