// The fiber slots of platform/thread.h.
//
// They belong to the process and not to a machine: the library may keep a slot for as long as it
// is loaded, while tests make one machine after the other.

#include <map>

#include "platform/thread.h"
#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::FaultOf;
using simulated::InsideScope;
using simulated::SeamCall;
using simulated::State;
using simulated::ThreadKey;

constexpr std::uint32_t kMostSlots = 4000;  // of a process

struct Slot {
  FiberDestructor destructor;
  std::map<std::uint64_t, void*> values;  // by thread
};

struct Slots {
  Mutex mutex;
  std::map<std::uint32_t, Slot> used QS_GUARDED_BY(mutex);
  std::uint32_t last QS_GUARDED_BY(mutex) = 0;
};

// Never destroyed: threads may end after everything static is gone.
Slots& AllSlots() {
  static Slots* const slots = new Slots;
  return *slots;
}

// Runs the destructors of a thread's values when the thread ends.
struct ThreadEnd {
  ThreadEnd() = default;
  ~ThreadEnd() {
    std::map<std::uint32_t, std::pair<FiberDestructor, void*>> due;
    Slots& slots = AllSlots();
    {
      MutexLock lock(slots.mutex);
      for (auto& [number, slot] : slots.used) {
        const auto value = slot.values.find(key);
        if (value != slot.values.end()) {
          due.emplace(number, std::pair(slot.destructor, value->second));
          slot.values.erase(value);
        }
      }
    }
    for (const auto& [number, work] : due) {
      if (work.first != nullptr && work.second != nullptr) {
        work.first(work.second);
      }
    }
  }
  ThreadEnd(const ThreadEnd&) = delete;
  ThreadEnd& operator=(const ThreadEnd&) = delete;

  const std::uint64_t key = ThreadKey();
};

std::uint64_t KeyOfThisThread() {
  thread_local const ThreadEnd end;
  return end.key;
}

Error FaultOfThisCall(State* state, const SeamCall& call) {
  MutexLock lock(state->mutex);
  return FaultOf(*state, call);
}

}  // namespace

std::uint32_t AllocateFiberSlot(FiberDestructor destructor) noexcept {
  const InsideScope inside;
  if (State* state = simulated::LivingOrNull(); state != nullptr) {
    SeamCall call(*state, Call::kAllocateFiberSlot);
    if (const Error fault = FaultOfThisCall(state, call); fault != Error::kNone) {
      return call.AnswerValue(kNoFiberSlot, fault);
    }
  }
  Slots& slots = AllSlots();
  MutexLock lock(slots.mutex);
  if (slots.used.size() >= kMostSlots) {
    return kNoFiberSlot;
  }
  slots.used.emplace(++slots.last, Slot{destructor, {}});
  return slots.last;
}

void FreeFiberSlot(std::uint32_t number) noexcept {
  const InsideScope inside;
  if (State* state = simulated::LivingOrNull(); state != nullptr) {
    SeamCall call(*state, Call::kFreeFiberSlot, nullptr, number);
  }
  Slot slot{};
  {
    Slots& slots = AllSlots();
    MutexLock lock(slots.mutex);
    const auto found = slots.used.find(number);
    if (found == slots.used.end()) {
      simulated::Die("fiber slot " + std::to_string(number) + " is not allocated");
    }
    slot = std::move(found->second);
    slots.used.erase(found);
  }
  for (const auto& [thread, value] : slot.values) {
    if (slot.destructor != nullptr && value != nullptr) {
      slot.destructor(value);
    }
  }
}

void* FiberValue(std::uint32_t number) noexcept {
  const InsideScope inside;
  Slots& slots = AllSlots();
  MutexLock lock(slots.mutex);
  const auto found = slots.used.find(number);
  if (found == slots.used.end()) {
    return nullptr;
  }
  const auto value = found->second.values.find(ThreadKey());
  return value == found->second.values.end() ? nullptr : value->second;
}

bool SetFiberValue(std::uint32_t number, void* value) noexcept {
  const InsideScope inside;
  if (State* state = simulated::LivingOrNull(); state != nullptr) {
    SeamCall call(*state, Call::kSetFiberValue, nullptr, number);
    if (const Error fault = FaultOfThisCall(state, call); fault != Error::kNone) {
      return call.AnswerValue(false, fault);
    }
  }
  const std::uint64_t key = KeyOfThisThread();
  Slots& slots = AllSlots();
  MutexLock lock(slots.mutex);
  const auto found = slots.used.find(number);
  if (found == slots.used.end()) {
    return false;
  }
  found->second.values[key] = value;
  return true;
}

}  // namespace quastel::platform
