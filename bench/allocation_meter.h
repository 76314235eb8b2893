// Counts what operator new hands out in a benchmark.

#ifndef QUASTEL_BENCH_ALLOCATION_METER_H_
#define QUASTEL_BENCH_ALLOCATION_METER_H_

#include <cstdint>

namespace quastel::bench {

std::uint64_t BytesInUse();

// The most bytes in use since the last ResetPeak.
std::uint64_t PeakBytes();
void ResetPeak();

}  // namespace quastel::bench

#endif  // QUASTEL_BENCH_ALLOCATION_METER_H_
