#include "work_thread.h"

#include <exception>
#include <utility>

namespace quastel::client {

WorkThread::~WorkThread() {
  if (thread_.joinable()) {
    thread_.join();
  }
}

void WorkThread::Start(std::function<qs_status()> work) {
  thread_ = std::thread([this, work = std::move(work)] {
    qs_status status = QS_FAILED;
    try {
      status = work();
    } catch (const std::exception&) {
      status = QS_FAILED;  // most likely no memory: an exception must not leave a thread
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    status_ = status;
    ended_ = true;
    ended_signal_.notify_all();
  });
}

bool WorkThread::WaitFor(std::chrono::milliseconds time) {
  std::unique_lock<std::mutex> lock(mutex_);
  return ended_signal_.wait_for(lock, time, [this] { return ended_; });
}

qs_status WorkThread::Finish() {
  if (thread_.joinable()) {
    thread_.join();
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  return status_;
}

}  // namespace quastel::client
