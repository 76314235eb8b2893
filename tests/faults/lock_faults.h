// Makes taking a mutex fail, by number, on one thread.
//
// The executable must be linked with --wrap=pthread_mutex_lock. Locks of the simulated system
// neither count nor fail.

#ifndef QUASTEL_TESTS_FAULTS_LOCK_FAULTS_H_
#define QUASTEL_TESTS_FAULTS_LOCK_FAULTS_H_

#include <cstdint>

#include "simulated_windows/simulated_windows.h"

namespace quastel::faults {

using simulated::Repeat;

// As long as it lives, the nth lock of this thread (and every later one, if asked for) throws
// std::system_error. One at a time on a thread; what a test itself locks counts as well.
class LockFaults {
 public:
  LockFaults(std::uint64_t nth, Repeat repeat);
  ~LockFaults();
  LockFaults(const LockFaults&) = delete;
  LockFaults& operator=(const LockFaults&) = delete;

  std::uint64_t injected() const;
};

}  // namespace quastel::faults

#endif  // QUASTEL_TESTS_FAULTS_LOCK_FAULTS_H_
