// The session: a scan of one folder that keeps a flat list of files, and the clean of that list.
//
// StartScan and StartClean run on the caller's thread; one of them at a time is inside. Queries and
// cancels come from any other thread. Four mutexes keep what they need apart, so that a reader of
// the rows never waits for one of the path: rows, path, and a control for the scan and the clean.

#ifndef QUASTEL_SESSION_SESSION_H_
#define QUASTEL_SESSION_SESSION_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "base/mutex.h"
#include "base/text.h"
#include "frame/busy_flag.h"
#include "frame/cancel.h"

namespace quastel {

enum class SessionMode : std::uint32_t { kAllFiles = 0, kLargeFiles = 1, kInspect = 2 };

enum class SessionState : std::uint32_t {
  kIdle = 0,
  kRunning = 1,
  kDone = 2,
  kCancelled = 3,
  kFailed = 4,
};

struct SessionRow {
  Text path;
  Text name;
  std::uint64_t size = 0;
  std::uint64_t modified = 0;  // with `size` the snapshot that a clean checks
  bool deleted = false;
};

// Where an export wants a text to go.
struct SessionTextTarget {
  Char* buffer;
  std::uint64_t capacity;
  std::uint64_t* needed;
};

// The cancel flag of a scan or clean, and whether there is one that could be cancelled.
class CancelControl {
 public:
  void Begin() QS_EXCLUDES(mutex_);

  // Whether a cancel was waiting; a later one does nothing.
  bool End() QS_EXCLUDES(mutex_);

  // The end after a failure, which may have been that of the mutex.
  void Abandon() noexcept;

  void Cancel() QS_EXCLUDES(mutex_);

  CancelFlag& flag() { return flag_; }

 private:
  Mutex mutex_;
  CancelFlag flag_;                  // set under the mutex, read without
  std::atomic<bool> active_{false};  // written under the mutex, but for a failure
};

class Session {
 public:
  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Walks the folder and returns the scan's status. QS_BUSY changes nothing.
  qs_status StartScan(const Char* root, SessionMode mode);

  // Deletes the files of the rows in the order given, up to the first that cannot be deleted, and
  // returns the clean's status. A request that is refused deletes and changes nothing.
  qs_status StartClean(const std::uint64_t* indexes, std::uint64_t count);

  // Ask what runs to stop; do nothing when none runs.
  void CancelScan() { scan_control_.Cancel(); }
  void CancelClean() { clean_control_.Cancel(); }

  // True when nothing runs and nothing can start any more: the caller deletes the object.
  [[nodiscard]] bool TryRetire();

  void PollScan(qs_session_scan_status& status) QS_EXCLUDES(rows_mutex_);
  void PollClean(qs_session_clean_status& status) const;
  qs_status CopyCurrentPath(const SessionTextTarget& target) QS_EXCLUDES(path_mutex_);
  std::uint64_t RowCount() QS_EXCLUDES(rows_mutex_);
  qs_status CopyRow(std::uint64_t index, const SessionTextTarget& path,
                    const SessionTextTarget& name, qs_session_row& row) QS_EXCLUDES(rows_mutex_);

 private:
  struct WorkItem {
    std::size_t index;
    Text path;
    bool leads_to_file;
    std::uint64_t size;
    std::uint64_t modified;
  };

  bool IsRunning() const;
  void BeginScan(SessionMode mode) QS_EXCLUDES(rows_mutex_, path_mutex_);
  qs_status RunScan(const Char* root);
  qs_status FinishScan(qs_status status);
  void FailScan() noexcept;
  static void OnFile(void* session, const Char* path, std::uint64_t size, std::uint64_t last_write,
                     const Char* name);
  void AddFile(const Char* path, std::uint64_t size, std::uint64_t last_write, const Char* name)
      QS_EXCLUDES(rows_mutex_, path_mutex_);

  qs_status ListItems(const std::uint64_t* indexes, std::uint64_t count,
                      std::vector<WorkItem>& items) QS_EXCLUDES(rows_mutex_);
  void BeginClean(std::uint64_t requested);
  qs_status CleanItems(const std::vector<WorkItem>& items) QS_EXCLUDES(rows_mutex_);
  qs_status FinishClean(qs_status status);
  void FailClean() noexcept;

  BusyFlag busy_;
  SessionMode mode_ = SessionMode::kAllFiles;  // whoever holds the busy flag

  Mutex rows_mutex_;
  // A deque: a growing vector would move every row while the readers wait.
  std::deque<SessionRow> rows_ QS_GUARDED_BY(rows_mutex_);

  Mutex path_mutex_;
  Text current_path_ QS_GUARDED_BY(path_mutex_);

  CancelControl scan_control_;
  std::atomic<SessionState> scan_state_{SessionState::kIdle};
  std::atomic<qs_status> scan_status_{QS_OK};
  std::atomic<std::uint64_t> files_visited_{0};
  std::atomic<std::uint64_t> bytes_visited_{0};

  CancelControl clean_control_;
  std::atomic<SessionState> clean_state_{SessionState::kIdle};
  std::atomic<std::uint64_t> clean_requested_{0};
  std::atomic<std::uint64_t> clean_processed_{0};
  std::atomic<qs_status> clean_status_{QS_OK};
};

}  // namespace quastel

#endif  // QUASTEL_SESSION_SESSION_H_
