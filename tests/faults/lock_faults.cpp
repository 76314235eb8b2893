#include "faults/lock_faults.h"

#include <pthread.h>

#include <cerrno>

#include "faults/nth_time.h"

namespace quastel::faults {
namespace {

thread_local constinit NthTime failing_lock;

bool LockMustFail() noexcept {
  return failing_lock.nth != 0 && !simulated::InsideSimulation() && failing_lock.MustFail();
}

}  // namespace

LockFaults::LockFaults(std::uint64_t nth, Repeat repeat) {
  failing_lock = {nth, repeat == Repeat::kFromThenOn, 0, 0};
}

LockFaults::~LockFaults() {
  failing_lock.nth = 0;
}

std::uint64_t LockFaults::injected() const {
  return failing_lock.injected;
}

}  // namespace quastel::faults

// The linker's names for the replacement and the original.
extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);   // NOLINT
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex);   // NOLINT
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {  // NOLINT
  return quastel::faults::LockMustFail() ? EAGAIN : __real_pthread_mutex_lock(mutex);
}
