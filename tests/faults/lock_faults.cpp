#include "faults/lock_faults.h"

#include <pthread.h>

#include <cerrno>

namespace quastel::faults {
namespace {

struct Plan {
  std::uint64_t nth = 0;  // 0: no plan
  bool from_then_on = false;
  std::uint64_t seen = 0;
  std::uint64_t injected = 0;
};

thread_local constinit Plan plan;

bool MustFail() noexcept {
  if (plan.nth == 0 || simulated::InsideSimulation()) {
    return false;
  }
  ++plan.seen;
  if (plan.from_then_on ? plan.seen < plan.nth : plan.seen != plan.nth) {
    return false;
  }
  ++plan.injected;
  return true;
}

}  // namespace

LockFaults::LockFaults(std::uint64_t nth, Repeat repeat) {
  plan = {nth, repeat == Repeat::kFromThenOn, 0, 0};
}

LockFaults::~LockFaults() {
  plan.nth = 0;
}

std::uint64_t LockFaults::injected() const {
  return plan.injected;
}

}  // namespace quastel::faults

// The linker's names for the replacement and the original.
extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);   // NOLINT
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex);   // NOLINT
extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {  // NOLINT
  return quastel::faults::MustFail() ? EAGAIN : __real_pthread_mutex_lock(mutex);
}
