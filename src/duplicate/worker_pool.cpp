#include "duplicate/worker_pool.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "base/mutex.h"
#include "frame/boundary.h"
#include "platform/clock.h"
#include "platform/thread.h"

namespace quastel::duplicate {
namespace {

constexpr std::int64_t kProgressIntervalNs = 20'000'000;

// Lets one call pass every 20 ms, over all workers; the first always passes.
class ProgressThrottle {
 public:
  explicit ProgressThrottle(const ParallelStage& stage) : stage_(stage) {}

  void Report(std::size_t index) {
    const std::int64_t now = platform::MonotonicNanoseconds();
    const MutexLock lock(mutex_);
    if (!last_ || now - *last_ >= kProgressIntervalNs) {
      last_ = now;
      stage_.progress(index);
    }
  }

 private:
  const ParallelStage& stage_;
  Mutex mutex_;
  std::optional<std::int64_t> last_ QS_GUARDED_BY(mutex_);
};

// What the workers of one run share.
struct Run {
  explicit Run(const ParallelStage& stage_to_run) : stage(stage_to_run), throttle(stage_to_run) {}

  const ParallelStage& stage;
  ProgressThrottle throttle;
  std::atomic<std::size_t> next_index{0};
  std::atomic<bool> stop{false};
  std::atomic<bool> failed{false};
};

// The caller's thread pool may have given its threads another priority.
class NormalPriority {
 public:
  NormalPriority() : remembered_(platform::CurrentThreadPriority()) {
    platform::SetCurrentThreadPriority(platform::kPriorityNormal);
  }
  ~NormalPriority() {
    platform::SetCurrentThreadPriority(
        remembered_ == platform::kPriorityError ? platform::kPriorityNormal : remembered_);
  }
  NormalPriority(const NormalPriority&) = delete;
  NormalPriority& operator=(const NormalPriority&) = delete;

 private:
  const std::int32_t remembered_;
};

void TakeItems(Run& run) {
  while (!run.stop) {
    if (run.stage.should_stop()) {
      run.stop = true;
      return;
    }
    const std::size_t index = run.next_index.fetch_add(1);
    if (index >= run.stage.count) {
      return;
    }
    if (!run.stage.is_done(index)) {
      run.throttle.Report(index);
      run.stage.work(index);
    }
  }
}

void WorkerEntry(void* argument) noexcept {
  Run& run = *static_cast<Run*>(argument);
  const NormalPriority priority;
  const qs_status status = StatusBoundary([&run]() -> qs_status {
    TakeItems(run);
    return QS_OK;
  });
  if (status != QS_OK) {
    run.failed = true;
    run.stop = true;
  }
}

// The started threads; joined on every way out, since they use the run on the caller's stack.
class Workers {
 public:
  explicit Workers(Run& run) : run_(run) {}
  ~Workers() { Join(); }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  void Start(std::size_t count) {
    threads_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      auto thread = platform::StartThread(WorkerEntry, &run_);
      if (!thread.ok()) {
        run_.stop = true;
        throw std::runtime_error("a worker thread could not be started");
      }
      threads_.push_back(std::move(thread).value());
    }
  }

  void Join() noexcept {
    for (const platform::ThreadHandle& thread : threads_) {
      platform::JoinThread(thread);
    }
    threads_.clear();
  }

 private:
  Run& run_;
  std::vector<platform::ThreadHandle> threads_;
};

// The first item without a result, or their count; nothing when the stage was stopped meanwhile.
std::optional<std::size_t> FirstDue(const ParallelStage& stage) {
  constexpr std::size_t kItemsBetweenLooks = 256;
  std::size_t first = 0;
  while (first < stage.count && stage.is_done(first)) {
    if (first % kItemsBetweenLooks == 0 && stage.should_stop()) {
      return std::nullopt;
    }
    ++first;
  }
  return first;
}

}  // namespace

StageEnd RunParallel(const ParallelStage& stage, std::size_t threads) {
  if (stage.count == 0) {
    return StageEnd::kFinished;
  }
  if (!stage.should_stop || !stage.work || !stage.progress) {
    return StageEnd::kStopped;
  }
  // What has its result is passed over before there are workers: on a second scan that is
  // everything.
  const std::optional<std::size_t> first = FirstDue(stage);
  if (!first) {
    return StageEnd::kStopped;
  }
  if (*first == stage.count) {
    return stage.should_stop() ? StageEnd::kStopped : StageEnd::kFinished;
  }
  Run run(stage);
  run.next_index = *first;
  Workers workers(run);
  workers.Start(std::max<std::size_t>(std::min(stage.count, threads), 1));
  workers.Join();
  if (run.failed) {
    throw std::runtime_error("a worker failed");
  }
  return run.stop ? StageEnd::kStopped : StageEnd::kFinished;
}

}  // namespace quastel::duplicate
