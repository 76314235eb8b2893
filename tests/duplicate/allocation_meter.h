// How much memory the code under test asks for.

#ifndef QUASTEL_TESTS_DUPLICATE_ALLOCATION_METER_H_
#define QUASTEL_TESTS_DUPLICATE_ALLOCATION_METER_H_

#include <cstddef>

namespace quastel::duplicate_tests {

// As long as it lives, it adds up what this thread allocates; what the simulated system allocates
// does not count. One at a time on a thread.
class AllocationMeter {
 public:
  AllocationMeter();
  ~AllocationMeter();
  AllocationMeter(const AllocationMeter&) = delete;
  AllocationMeter& operator=(const AllocationMeter&) = delete;

  std::size_t count() const;
  std::size_t bytes() const;    // of all allocations together, freed or not
  std::size_t largest() const;  // of one allocation
};

// The blocks of 1 MiB and more that nobody has freed, on all threads.
std::size_t LiveLargeBlocks();

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_ALLOCATION_METER_H_
