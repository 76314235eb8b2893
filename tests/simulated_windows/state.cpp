#include "simulated_windows/state.h"

namespace quastel::simulated {
namespace {

std::atomic<State*> living{nullptr};

thread_local int inside_depth = 0;
thread_local int hook_depth = 0;

}  // namespace

void SetLiving(State* state) {
  State* expected = nullptr;
  if (state == nullptr) {
    living.store(nullptr);
  } else if (!living.compare_exchange_strong(expected, state)) {
    Die("there is another simulated machine already");
  }
}

State* LivingOrNull() {
  return living.load();
}

State& Living() {
  State* state = living.load();
  if (state == nullptr) {
    Die("a seam function was called while there is no simulated machine");
  }
  return *state;
}

std::uint64_t ThreadKey() {
  static std::atomic<std::uint64_t> last{0};
  thread_local const std::uint64_t key = ++last;
  return key;
}

bool InsideSimulation() noexcept {
  return inside_depth > 0;
}

InsideScope::InsideScope() {
  ++inside_depth;
}
InsideScope::~InsideScope() {
  --inside_depth;
}

std::uint64_t SimulatedWindows::State::NumberOfThisThread() {
  MutexLock lock(record_mutex);
  return thread_numbers.try_emplace(ThreadKey(), thread_numbers.size()).first->second;
}

void SimulatedWindows::State::AdvanceClock(std::uint64_t milliseconds) {
  file_time += milliseconds * 10'000;
  ticks_ms += milliseconds;
  monotonic_ns += static_cast<std::int64_t>(milliseconds) * 1'000'000;
}

SeamCall::SeamCall(State& state, Call call, const Char* path, std::uint64_t number)
    : state_(state), kind_(call), silent_(hook_depth > 0), number_(number) {
  if (silent_) {
    return;
  }
  const bool recording = state_.recording.load();
  const bool hooked = state_.hooked.load();
  if (recording || hooked) {
    path_ = ViewOf(path);
  }
  if (hooked) {
    std::shared_ptr<const State::Hook> hook;
    {
      MutexLock lock(state_.record_mutex);
      hook = state_.hook;
    }
    if (hook != nullptr) {
      ++hook_depth;
      (*hook)({kind_, path_, number_, state_.NumberOfThisThread(), platform::Error::kNone});
      --hook_depth;
    }
  }
  ++state_.call_counts[static_cast<std::size_t>(kind_)];
}

SeamCall::~SeamCall() {
  if (silent_ || !state_.recording.load()) {
    return;
  }
  const std::uint64_t thread = state_.NumberOfThisThread();
  MutexLock lock(state_.record_mutex);
  state_.records.push_back({kind_, std::move(path_), number_, thread, result_});
}

platform::Error FaultOf(State& state, const SeamCall& call) {
  return call.silent() ? platform::Error::kNone : state.faults.Next(call.kind());
}

}  // namespace quastel::simulated
