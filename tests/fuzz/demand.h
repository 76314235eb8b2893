// How a fuzz target says that a rule is broken: it ends the process, which is what the fuzzer and
// the replay of the seeds both notice.

#ifndef QUASTEL_TESTS_FUZZ_DEMAND_H_
#define QUASTEL_TESTS_FUZZ_DEMAND_H_

#include <cstdio>
#include <cstdlib>

namespace quastel::fuzz {

// Not an assertion: it must hold in every build.
inline void Demand(bool holds, const char* rule) {
  if (!holds) {
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
  }
}

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_DEMAND_H_
