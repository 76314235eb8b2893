// The machine apart from its tree: life, surroundings, faults, record.

#include "simulated_windows/simulated_windows.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/ascii.h"
#include "simulated_windows/state.h"

namespace quastel::simulated {
namespace {

// Threads whose handle has been closed may be about to end; a thread that does not is a bug.
void AwaitThreads(const std::atomic<int>& running) {
  using std::chrono::milliseconds;
  for (int i = 0; running.load() != 0; ++i) {
    if (i == 10'000) {
      Die("a thread of the code under test is still running");
    }
    std::this_thread::sleep_for(milliseconds(1));
  }
}

Text FoldedText(TextView text) {
  Text folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), FoldName);
  return folded;
}

}  // namespace

SimulatedWindows::SimulatedWindows() : state_(std::make_unique<State>()) {
  AddDrive('C');
  SetLiving(state_.get());
}

SimulatedWindows::~SimulatedWindows() {
  AwaitThreads(*state_->running_threads);
  SetLiving(nullptr);
  MutexLock lock(state_->mutex);
  if (state_->ledger.size() != 0) {
    Die("still open: " + state_->ledger.Describe());
  }
  if (!state_->com_depth.empty()) {
    Die("COM is still initialised on " + std::to_string(state_->com_depth.size()) + " threads");
  }
}

void SimulatedWindows::SetEnvironment(TextView name, std::optional<Text> value) {
  MutexLock lock(state_->mutex);
  if (value) {
    state_->environment[FoldedText(name)] = *std::move(value);
  } else {
    state_->environment.erase(FoldedText(name));
  }
}

void SimulatedWindows::SetProcessorCount(std::uint32_t count) {
  state_->processors = count;
}

void SimulatedWindows::SetTimeZoneOffset(std::int64_t minutes_east_of_utc) {
  state_->zone_minutes = minutes_east_of_utc;
}

void SimulatedWindows::AdvanceClock(std::uint64_t milliseconds) {
  state_->AdvanceClock(milliseconds);
}

void SimulatedWindows::SetSystemFileTime(std::uint64_t utc) {
  state_->file_time = utc;
}

void SimulatedWindows::SetRealSleep(bool real) {
  state_->real_sleep = real;
}

void SimulatedWindows::SetDirectoryLimitHonoured(bool honoured) {
  state_->directory_limit = honoured;
}

std::vector<std::uint32_t> SimulatedWindows::sleeps() const {
  MutexLock lock(state_->mutex);
  return state_->sleeps;
}

std::vector<Text> SimulatedWindows::recycled() const {
  MutexLock lock(state_->mutex);
  return state_->recycled;
}

void SimulatedWindows::SetRecyclingIneffective(bool ineffective) {
  MutexLock lock(state_->mutex);
  state_->shell.ineffective = ineffective;
}

void SimulatedWindows::SetOperationsAborted(bool aborted) {
  MutexLock lock(state_->mutex);
  state_->shell.aborts = aborted;
}

void SimulatedWindows::SetShellDeleteResult(std::int32_t code, bool aborted, bool removes) {
  MutexLock lock(state_->mutex);
  state_->shell.delete_code = code;
  state_->shell.delete_aborted = aborted;
  state_->shell.delete_removes = removes;
}

void SimulatedWindows::SetComMultithreaded(bool multithreaded) {
  MutexLock lock(state_->mutex);
  state_->shell.multithreaded = multithreaded;
}

void SimulatedWindows::FailCall(Call call, std::uint64_t nth, Repeat repeat,
                                std::optional<platform::Error> error) {
  MutexLock lock(state_->mutex);
  state_->faults.FailCall(call, nth, repeat, error);
}

void SimulatedWindows::FailAnyCall(std::uint64_t nth, Repeat repeat,
                                   std::optional<platform::Error> error) {
  MutexLock lock(state_->mutex);
  state_->faults.FailAnyCall(nth, repeat, error);
}

void SimulatedWindows::CrashAtCall(std::uint64_t nth) {
  MutexLock lock(state_->mutex);
  state_->faults.CrashAtCall(nth);
}

void SimulatedWindows::ClearFaults() {
  MutexLock lock(state_->mutex);
  state_->faults.Clear();
}

std::uint64_t SimulatedWindows::faults_injected() const {
  MutexLock lock(state_->mutex);
  return state_->faults.injected();
}

std::optional<Call> SimulatedWindows::first_fault() const {
  MutexLock lock(state_->mutex);
  return state_->faults.first_injected();
}

std::uint64_t SimulatedWindows::fallible_calls() const {
  MutexLock lock(state_->mutex);
  return state_->faults.calls();
}

void SimulatedWindows::SetHook(std::function<void(const CallRecord&)> hook) {
  MutexLock lock(state_->record_mutex);
  state_->hooked = hook != nullptr;
  state_->hook = hook == nullptr ? nullptr : std::make_shared<const State::Hook>(std::move(hook));
}

void SimulatedWindows::SetRecording(bool on) {
  state_->recording = on;
}

void SimulatedWindows::ClearRecord() {
  MutexLock lock(state_->record_mutex);
  state_->records.clear();
  for (std::atomic<std::uint64_t>& count : state_->call_counts) {
    count = 0;
  }
}

std::vector<CallRecord> SimulatedWindows::record() const {
  MutexLock lock(state_->record_mutex);
  return state_->records;
}

std::uint64_t SimulatedWindows::CallCount(Call call) const {
  return state_->call_counts[static_cast<std::size_t>(call)].load();
}

std::uint64_t SimulatedWindows::CallCountFor(Call call, TextView path) const {
  MutexLock lock(state_->record_mutex);
  return static_cast<std::uint64_t>(
      std::count_if(state_->records.begin(), state_->records.end(), [&](const CallRecord& record) {
        return record.call == call && EqualsFolded(record.path, path);
      }));
}

std::size_t SimulatedWindows::open_handles() const {
  MutexLock lock(state_->mutex);
  return state_->ledger.size();
}

std::size_t SimulatedWindows::most_open_searches() const {
  MutexLock lock(state_->mutex);
  return state_->ledger.most_searches();
}

}  // namespace quastel::simulated
