#ifndef QUASTEL_APPS_QUASTEL_CLEAN_RUN_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_RUN_H_

#include <quastel_core.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "clean_obstacle.h"
#include "clean_options.h"
#include "clean_plan.h"
#include "work_thread.h"

namespace quastel::client {

enum class Outcome {
  kRemoved,      // deleted, or moved to the Recycle Bin
  kWouldRemove,  // the same in a dry run
  kRefused,      // see the obstacle
  kKept,         // a copy that stays
  kUnselected,
  kRepeated,
  kNotTried,  // the clean was cancelled before
};

struct CleanResult {
  Outcome outcome = Outcome::kNotTried;
  std::optional<Obstacle> obstacle;
};

struct CleanProgress {
  std::uint64_t files = 0;  // removed or refused
  std::uint64_t bytes = 0;  // removed
  std::wstring path;
};

// Carries a plan out on a thread of its own, one file after the other.
//
// Each file goes through the library's snapshot functions, which remove nothing that has changed
// since the scan and nothing behind a link. A duplicate is opened and compared with the copy that
// stays while both are held: neither can change between the comparison and the removal.
class CleanRun {
 public:
  CleanRun(const CleanPlan& plan, CleanOptions options);
  // Cancels what still runs and waits for it.
  ~CleanRun();
  CleanRun(const CleanRun&) = delete;
  CleanRun& operator=(const CleanRun&) = delete;

  // Once for each object.
  void Start();

  // True when all is done or was cancelled; false after `time`.
  bool WaitFor(std::chrono::milliseconds time) { return work_.WaitFor(time); }

  // No further file is begun; a comparison ends within a block.
  void Cancel() { cancel_ = true; }

  // Waits for the end: QS_OK, whatever became of single files, or QS_CANCELLED.
  qs_status Finish() { return work_.Finish(); }

  CleanProgress Progress();

  // After the end: one for each file of the plan, and the folders that went because they became
  // empty.
  const std::vector<CleanResult>& results() const { return results_; }
  const std::vector<std::wstring>& removed_folders() const { return removed_folders_; }

 private:
  std::vector<std::size_t> Order() const;
  qs_status RemoveAll();
  CleanResult RemoveOne(const PlannedFile& planned);
  CleanResult RemoveDuplicate(const PlannedFile& planned);
  CleanResult Remove(const CleanFile& file) const;
  void RemoveEmptyFolders(const CleanFile& file);

  const CleanPlan& plan_;
  const CleanOptions options_;
  std::vector<CleanResult> results_;
  std::vector<std::wstring> removed_folders_;
  std::atomic<bool> cancel_{false};
  std::mutex mutex_;
  CleanProgress progress_;  // guarded by mutex_
  WorkThread work_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_RUN_H_
