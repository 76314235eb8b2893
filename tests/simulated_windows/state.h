// What the seam functions of the simulation share: the living machine and the way into a call.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_STATE_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_STATE_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "base/mutex.h"
#include "base/text.h"
#include "platform/error.h"
#include "simulated_windows/disk.h"
#include "simulated_windows/fault_plan.h"
#include "simulated_windows/ledger.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {

struct ShellScript {
  bool ineffective = false;
  bool aborts = false;
  bool multithreaded = false;
  std::int32_t delete_code = 0;
  bool delete_aborted = false;
  bool delete_removes = true;
};

struct SimulatedWindows::State {
  using Hook = std::function<void(const CallRecord&)>;
  static constexpr std::size_t kKinds = static_cast<std::size_t>(Call::kCount);

  Mutex mutex;
  Disk disk QS_GUARDED_BY(mutex);
  FaultPlan faults QS_GUARDED_BY(mutex);
  Ledger ledger QS_GUARDED_BY(mutex);
  std::map<Text, Text> environment QS_GUARDED_BY(mutex);  // by folded name
  std::vector<std::uint32_t> sleeps QS_GUARDED_BY(mutex);
  ShellScript shell QS_GUARDED_BY(mutex);
  std::vector<Text> recycled QS_GUARDED_BY(mutex);
  // How often each thread has initialised COM; only the code under test does.
  std::map<std::uint64_t, int> com_depth QS_GUARDED_BY(mutex);

  // The folder that AddFile used last: a million files are mostly added folder by folder.
  Text last_parent_path QS_GUARDED_BY(mutex);
  NodePtr last_parent QS_GUARDED_BY(mutex);

  std::atomic<bool> directory_limit{true};
  std::atomic<bool> real_sleep{false};
  std::atomic<std::uint32_t> processors{4};
  std::atomic<std::int64_t> zone_minutes{0};
  std::atomic<std::uint64_t> file_time{133'500'000'000'000'000};
  std::atomic<std::uint64_t> ticks_ms{1'000'000};
  std::atomic<std::int64_t> monotonic_ns{1'000'000'000'000};

  // Threads that the code under test started and that have not ended yet.
  std::shared_ptr<std::atomic<int>> running_threads = std::make_shared<std::atomic<int>>(0);

  std::array<std::atomic<std::uint64_t>, kKinds> call_counts{};
  std::atomic<bool> recording{false};
  std::atomic<bool> hooked{false};
  mutable Mutex record_mutex;
  std::vector<CallRecord> records QS_GUARDED_BY(record_mutex);
  std::map<std::uint64_t, std::uint64_t> thread_numbers QS_GUARDED_BY(record_mutex);
  std::shared_ptr<const Hook> hook QS_GUARDED_BY(record_mutex);

  std::uint64_t NumberOfThisThread() QS_EXCLUDES(record_mutex);
  void AdvanceClock(std::uint64_t milliseconds);
  // Anything that could make the remembered parent folder wrong.
  void ForgetParent() QS_REQUIRES(mutex) { last_parent = nullptr; }
};

using State = SimulatedWindows::State;

// The machine of the process, or null.
State* LivingOrNull();
// Dies when there is none.
State& Living();

// Becomes the machine of the process; null gives the place up.
void SetLiving(State* state);

// A number that no other thread of the process has or will have; the system's own come again.
std::uint64_t ThreadKey();

// Marks the thread as being inside the simulation: see InsideSimulation.
class InsideScope {
 public:
  InsideScope();
  ~InsideScope();
  InsideScope(const InsideScope&) = delete;
  InsideScope& operator=(const InsideScope&) = delete;
};

// One seam call from its beginning to its end: calls the hook, counts, and records. It stands
// before the lock of the machine, because the hook may change the machine.
class SeamCall {
 public:
  SeamCall(State& state, Call call, const Char* path = nullptr, std::uint64_t number = 0);
  ~SeamCall();
  SeamCall(const SeamCall&) = delete;
  SeamCall& operator=(const SeamCall&) = delete;

  Call kind() const { return kind_; }
  bool silent() const { return silent_; }
  void set_number(std::uint64_t number) { number_ = number; }

  // Each notes the answer for the record and hands it on.
  platform::Error Answer(platform::Error error) {
    result_ = error;
    return error;
  }
  template <typename T>
  platform::Result<T> Answer(platform::Result<T> result) {
    result_ = result.error();
    return result;
  }
  template <typename T>
  T AnswerValue(T value, platform::Error error = platform::Error::kNone) {
    result_ = error;
    return value;
  }

 private:
  InsideScope inside_;
  State& state_;
  const Call kind_;
  const bool silent_;  // made by the hook itself: neither recorded nor counted nor failed
  Text path_;
  std::uint64_t number_;
  platform::Error result_ = platform::Error::kNone;
};

// The error with which the fault plan lets this call fail, or kNone.
platform::Error FaultOf(State& state, const SeamCall& call) QS_REQUIRES(state.mutex);

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_STATE_H_
