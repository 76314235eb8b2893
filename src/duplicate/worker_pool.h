// Running one stage of the duplicate scan on several threads.

#ifndef QUASTEL_DUPLICATE_WORKER_POOL_H_
#define QUASTEL_DUPLICATE_WORKER_POOL_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "base/text.h"

namespace quastel::duplicate {

// A file to be read, and what comes of it. An item that has a result already is passed over.
struct WorkItem {
  const Text* path = nullptr;  // the candidate's own
  std::string result;
};

// Hashes in part: what the second stage extends is the head text.
struct SampleWorkItem : WorkItem {
  std::int64_t size = 0;
  std::string head;
};

// Hashes in full.
struct HashWorkItem : WorkItem {};

// The stage as the workers see it. `count` items; the functions are called from several threads at
// once, each index by one thread only.
struct ParallelStage {
  std::size_t count = 0;
  std::function<bool()> should_stop;
  std::function<bool(std::size_t index)> is_done;
  std::function<const Text&(std::size_t index)> path_of;
  std::function<void(std::size_t index)> work;
  std::function<void(const Text& path)> progress;  // at most every 20 ms
};

enum class StageEnd { kFinished, kStopped };

// Blocks until every worker has ended. Each takes the next index until none is left or somebody
// stopped the stage; all of them work at normal priority. Throws when a thread cannot be started or
// a function threw, after the others were stopped and joined.
StageEnd RunParallel(const ParallelStage& stage, std::size_t threads);

// The same over an array of items. `work` gives an item's result, or nothing when it failed: a
// failed item keeps its empty result.
// NOLINTBEGIN(performance-unnecessary-value-param): they are moved, which a template hides
template <typename Item, typename Work>
StageEnd RunParallel(std::span<Item> items, std::size_t threads, std::function<bool()> should_stop,
                     Work work, std::function<void(const Text& path)> progress) {
  return RunParallel(
      ParallelStage{
          .count = items.size(),
          .should_stop = std::move(should_stop),
          .is_done = [items](std::size_t i) { return !items[i].result.empty(); },
          .path_of = [items](std::size_t i) -> const Text& { return *items[i].path; },
          .work =
              [items, &work](std::size_t i) {
                if (std::optional<std::string> result = work(items[i])) {
                  items[i].result = std::move(*result);
                }
              },
          .progress = std::move(progress),
      },
      threads);
}
// NOLINTEND(performance-unnecessary-value-param)

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_WORKER_POOL_H_
