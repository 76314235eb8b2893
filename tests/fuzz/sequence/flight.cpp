#include "fuzz/sequence/flight.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace quastel::fuzz::sequence {
namespace {

// Two threads that wait for each other.
class Rendezvous {
 public:
  // On the thread of the operation.
  void Park() {
    std::unique_lock lock(mutex_);
    parked_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return released_; });
  }
  void Finish() {
    const std::lock_guard lock(mutex_);
    finished_ = true;
    changed_.notify_all();
  }

  // On the other one: whether the operation was parked before it ended.
  bool Await() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return parked_ || finished_; });
    return parked_;
  }
  void Release() {
    const std::lock_guard lock(mutex_);
    released_ = true;
    changed_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool parked_ = false;
  bool finished_ = false;
  bool released_ = false;
};

bool FlyParked(Watch& watch, std::uint64_t nth, const std::function<void()>& operation,
               const std::function<void()>& meanwhile) {
  Rendezvous rendezvous;
  watch.InterruptAt(nth, [&rendezvous] { rendezvous.Park(); });
  std::thread thread([&] {
    operation();
    rendezvous.Finish();
  });
  const bool met = rendezvous.Await();
  if (met) {
    const Watch::Quiet quiet;
    meanwhile();
  }
  rendezvous.Release();
  thread.join();
  return met;
}

}  // namespace

Plan Plan::From(Input& input) {
  Plan plan;
  switch (input.Below(8)) {
    case 0:
    case 1:
      plan.meeting = Meeting::kInside;
      break;
    case 2:
      plan.meeting = Meeting::kParked;
      break;
    case 3:
      plan.meeting = Meeting::kRacing;
      break;
    default:
      return plan;
  }
  plan.nth = 1 + input.Byte();
  return plan;
}

bool Fly(Watch& watch, const Plan& plan, const std::function<void()>& operation,
         const std::function<void()>& meanwhile) {
  bool met = false;
  switch (plan.meeting) {
    case Meeting::kNone:
      operation();
      break;
    case Meeting::kInside:
      watch.InterruptAt(plan.nth, [&] {
        met = true;
        meanwhile();
      });
      operation();
      break;
    case Meeting::kParked:
      met = FlyParked(watch, plan.nth, operation, meanwhile);
      break;
    case Meeting::kRacing: {
      std::thread thread(operation);
      {
        const Watch::Quiet quiet;
        meanwhile();
      }
      thread.join();
      met = true;
      break;
    }
  }
  return met;
}

}  // namespace quastel::fuzz::sequence
