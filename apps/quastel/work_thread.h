#ifndef QUASTEL_APPS_QUASTEL_WORK_THREAD_H_
#define QUASTEL_APPS_QUASTEL_WORK_THREAD_H_

#include <quastel_core.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace quastel::client {

// How often a waiting caller looks up: to draw the progress line, and to hear an interrupt.
inline constexpr std::chrono::milliseconds kPollInterval(100);

// A thread for one call of the library that blocks, so that the caller can poll and cancel it.
class WorkThread {
 public:
  WorkThread() = default;
  // Waits for the end.
  ~WorkThread();
  WorkThread(const WorkThread&) = delete;
  WorkThread& operator=(const WorkThread&) = delete;

  // Once for each object. An exception of `work` counts as QS_FAILED.
  void Start(std::function<qs_status()> work);

  bool IsStarted() const { return thread_.joinable(); }

  // True when the work has ended, which wakes the caller at once; false after `time`.
  bool WaitFor(std::chrono::milliseconds time);

  // Waits for the end and answers what the work answered.
  qs_status Finish();

 private:
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable ended_signal_;
  bool ended_ = false;        // guarded by mutex_
  qs_status status_ = QS_OK;  // guarded by mutex_
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_WORK_THREAD_H_
