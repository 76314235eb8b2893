// platform/thread.h: threads are real ones; only their handles are the simulation's.

#include "platform/thread.h"

#include <chrono>
#include <system_error>

#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::FaultOf;
using simulated::InsideScope;
using simulated::Living;
using simulated::SeamCall;
using simulated::State;
using simulated::ThreadControl;
using simulated::ThreadObject;

thread_local std::int32_t own_priority = kPriorityNormal;

bool IsPriority(std::int32_t priority) {
  return (priority >= -2 && priority <= 2) || priority == -15 || priority == 15;
}

}  // namespace

Result<ThreadHandle> StartThread(ThreadEntry entry, void* argument) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kStartThread);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  const std::shared_ptr<std::atomic<int>> running = s.running_threads;
  const auto control = std::make_shared<ThreadControl>();
  ++*running;
  try {
    control->thread = std::thread([entry, argument, running] {
      entry(argument);
      --*running;
    });
  } catch (const std::system_error&) {
    --*running;
    return call.Answer(Error::kNotEnoughMemory);
  }
  return ThreadHandle(s.ledger.Open(ThreadObject{control}));
}

void JoinThread(const ThreadHandle& thread) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kJoinThread);
  std::shared_ptr<ThreadControl> control;
  {
    MutexLock lock(s.mutex);
    control = s.ledger.Get<ThreadObject>(thread.raw()).control;
  }
  const std::lock_guard<std::mutex> waiting(control->mutex);
  if (control->thread.joinable()) {
    control->thread.join();
  }
}

void ThreadPolicy::Close(RawHandle raw) noexcept {
  const InsideScope inside;
  State& s = Living();
  std::shared_ptr<ThreadControl> control;
  {
    MutexLock lock(s.mutex);
    control = s.ledger.Close<ThreadObject>(raw).control;
  }
  const std::lock_guard<std::mutex> giving_up(control->mutex);
  if (control->thread.joinable()) {
    control->thread.detach();
  }
}

std::int32_t CurrentThreadPriority() noexcept {
  State& s = Living();
  SeamCall call(s, Call::kCurrentThreadPriority);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.AnswerValue(kPriorityError, fault);
  }
  return own_priority;
}

void SetCurrentThreadPriority(std::int32_t priority) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kSetCurrentThreadPriority, nullptr,
                static_cast<std::uint64_t>(static_cast<std::int64_t>(priority)));
  if (IsPriority(priority)) {
    own_priority = priority;
  }
}

void SleepMilliseconds(std::uint32_t milliseconds) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kSleepMilliseconds, nullptr, milliseconds);
  {
    MutexLock lock(s.mutex);
    s.sleeps.push_back(milliseconds);
  }
  s.AdvanceClock(milliseconds);
  if (s.real_sleep.load()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  } else {
    std::this_thread::yield();
  }
}

}  // namespace quastel::platform
