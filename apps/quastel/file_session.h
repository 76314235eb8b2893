#ifndef QUASTEL_APPS_QUASTEL_FILE_SESSION_H_
#define QUASTEL_APPS_QUASTEL_FILE_SESSION_H_

#include <quastel_core.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "work_thread.h"

namespace quastel::client {

struct SessionFile {
  std::wstring path;
  std::wstring name;
  qs_session_row numbers = {};
};

// Owns a qs_session handle and the thread that is inside its scan or clean, both of which block.
class FileSession {
 public:
  FileSession();
  // Cancels what still runs and waits for it: the library refuses to destroy a busy handle.
  ~FileSession();
  FileSession(const FileSession&) = delete;
  FileSession& operator=(const FileSession&) = delete;

  // One after the other, each followed by Finish().
  void StartScan(std::wstring root, std::uint32_t mode);
  void StartClean(std::vector<std::uint64_t> indexes);

  // True when the scan or clean has ended, which wakes the caller at once; false after `time`.
  bool WaitFor(std::chrono::milliseconds time) { return work_->WaitFor(time); }

  // Does nothing in the moment before the new thread has begun: a caller who wants it to end asks
  // again until WaitFor() answers true.
  void Cancel();

  // Waits for the end and answers the status of the call.
  qs_status Finish();

  qs_session_scan_status PollScan() const;
  qs_session_clean_status PollClean() const;
  std::wstring CurrentPath() const;

  std::uint64_t RowCount() const;
  SessionFile Row(std::uint64_t index) const;

 private:
  qs_session* handle_ = nullptr;
  std::wstring root_;
  std::vector<std::uint64_t> indexes_;
  std::unique_ptr<WorkThread> work_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_FILE_SESSION_H_
