// What a fault sweep has done, left behind for the table in docs/testing.md.
//
// A sweep calls this when everything that it checks has held. When the environment variable
// QUASTEL_SWEEP_RECORD names a file, that file is emptied when the program starts, and every call
// appends a line of JSON to it; otherwise nothing is written. scripts/fault_table.py reads it.

#ifndef QUASTEL_TESTS_SUPPORT_SWEEP_RECORD_H_
#define QUASTEL_TESTS_SUPPORT_SWEEP_RECORD_H_

#include <cstdint>
#include <string_view>

namespace quastel::support {

enum class Swept {
  kCalls,           // that can fail, of a run without faults
  kSingleFaults,    // pairs of a call and an error, the call failing once
  kLastingFaults,   // the same, with every later call failing as well
  kCrashPoints,     // calls at which the system died
  kMemoryFailures,  // allocations that failed, once and from then on
};

// Counts of the same kind for the same scenario add up in the table. Writes nothing when the
// current test has failed already.
void RecordSweep(std::string_view scenario, Swept what, std::uint64_t count);

// Of a scenario that makes no call which could fail: 0 of each kind that is about calls.
void RecordNoCalls(std::string_view scenario);

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_SWEEP_RECORD_H_
