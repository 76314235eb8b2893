// Every export with a null where none is allowed.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_NULL_ARGUMENTS_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_NULL_ARGUMENTS_H_

#include "fuzz/input.h"

namespace quastel::fuzz::sequence {

// One handle of each family, made for it, with every null that is refused, and records that are too
// small. Nothing may be stored.
void CallWithNulls(Input& input);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_NULL_ARGUMENTS_H_
