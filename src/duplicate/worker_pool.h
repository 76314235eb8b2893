// Running one stage of the duplicate scan on several threads.

#ifndef QUASTEL_DUPLICATE_WORKER_POOL_H_
#define QUASTEL_DUPLICATE_WORKER_POOL_H_

#include <cstddef>
#include <functional>
#include <span>
#include <utility>

#include "duplicate/digest_text.h"

namespace quastel::duplicate {

// The stage as the workers see it. `count` items; the functions are called from several threads at
// once, each index by one thread only.
struct ParallelStage {
  std::size_t count = 0;
  std::function<bool()> should_stop;
  std::function<bool(std::size_t index)> is_done;
  std::function<void(std::size_t index)> work;
  std::function<void(std::size_t index)> progress;  // at most every 20 ms
};

enum class StageEnd { kFinished, kStopped };

// Blocks until every worker has ended. Each takes the next index until none is left or somebody
// stopped the stage; all of them work at normal priority. Throws when a thread cannot be started or
// a function threw, after the others were stopped and joined.
StageEnd RunParallel(const ParallelStage& stage, std::size_t threads);

// What comes of reading a file. An item that has a result already is passed over.
struct WorkItem {
  DigestText result;
};

// The same over an array of items. `work` gives an item's result, which is empty when it failed.
// NOLINTBEGIN(performance-unnecessary-value-param): they are moved, which a template hides
template <typename Item, typename Work, typename Progress>
StageEnd RunParallel(std::span<Item> items, std::size_t threads, std::function<bool()> should_stop,
                     Work work, Progress progress) {
  return RunParallel(
      ParallelStage{
          .count = items.size(),
          .should_stop = std::move(should_stop),
          .is_done = [items](std::size_t i) { return !items[i].result.empty(); },
          .work = [items, &work](std::size_t i) { items[i].result = work(items[i]); },
          .progress = [items, &progress](std::size_t i) { progress(items[i]); },
      },
      threads);
}
// NOLINTEND(performance-unnecessary-value-param)

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_WORKER_POOL_H_
