#include "stress/stressed_handle.h"

#include <mutex>
#include <thread>

namespace quastel::stress {

void StressedHandle::Renew() {
  ending_ = true;
  {
    const std::unique_lock<std::shared_mutex> alone(lifetime_);
    Destroy();
    Create();
  }
  ending_ = false;
  ++tally_.destroyed;
}

void StressedHandle::Observing(const std::function<void()>& action) {
  // Readers would keep the writer waiting for ever.
  while (ending_) {
    std::this_thread::yield();
  }
  const std::shared_lock<std::shared_mutex> together(lifetime_);
  action();
}

StressedHandle*& DrivenHandle() {
  thread_local StressedHandle* driven = nullptr;
  return driven;
}

}  // namespace quastel::stress
