// Makes operator new fail, by number, on one thread.
//
// Linking the .cpp replaces operator new of the whole executable. Allocations of the simulated
// system neither count nor fail: what Windows allocates on its own is not the library's.

#ifndef QUASTEL_TESTS_FAULTS_ALLOCATION_FAULTS_H_
#define QUASTEL_TESTS_FAULTS_ALLOCATION_FAULTS_H_

#include <cstdint>

#include "simulated_windows/simulated_windows.h"

namespace quastel::faults {

using simulated::Repeat;

// As long as it lives, the nth allocation of this thread (and every later one, if asked for)
// throws std::bad_alloc, or answers null where no exception is wanted. One at a time on a thread.
class AllocationFaults {
 public:
  AllocationFaults(std::uint64_t nth, Repeat repeat);
  ~AllocationFaults();
  AllocationFaults(const AllocationFaults&) = delete;
  AllocationFaults& operator=(const AllocationFaults&) = delete;

  std::uint64_t injected() const;
  std::uint64_t allocations() const;  // that could have failed, so far
};

// As long as it lives, the allocations of this thread are a test's own.
class AllocationFaultPause {
 public:
  AllocationFaultPause();
  ~AllocationFaultPause();
  AllocationFaultPause(const AllocationFaultPause&) = delete;
  AllocationFaultPause& operator=(const AllocationFaultPause&) = delete;
};

}  // namespace quastel::faults

#endif  // QUASTEL_TESTS_FAULTS_ALLOCATION_FAULTS_H_
