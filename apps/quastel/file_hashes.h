#ifndef QUASTEL_APPS_QUASTEL_FILE_HASHES_H_
#define QUASTEL_APPS_QUASTEL_FILE_HASHES_H_

#include <quastel_core.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "path_complaint.h"
#include "work_thread.h"

namespace quastel::client {

struct FileHash {
  std::wstring path;        // as typed
  std::uint64_t size = 0;   // when its turn came
  std::string digits;       // as the library writes them; empty when the file could not be hashed
  PathComplaint complaint;  // why not
};

// Hashes files one after the other on a thread of its own.
class FileHashes {
 public:
  explicit FileHashes(std::vector<std::wstring> files) : files_(std::move(files)) {}
  // Cancels what still runs and waits for it.
  ~FileHashes();
  FileHashes(const FileHashes&) = delete;
  FileHashes& operator=(const FileHashes&) = delete;

  // Once for each object.
  void Start();

  // True when all is done or was cancelled; false after `time`.
  bool WaitFor(std::chrono::milliseconds time) { return work_.WaitFor(time); }

  // The library sees it within one read of 1 MiB; no further file is begun.
  void Cancel();

  // Waits for the end: QS_OK, whatever became of single files, or QS_CANCELLED.
  qs_status Finish() { return work_.Finish(); }

  // What was finished since the last call, in the order of the files.
  std::vector<FileHash> TakeFinished();

  // The one being hashed; empty before the first.
  std::wstring CurrentPath();

 private:
  qs_status HashAll();

  const std::vector<std::wstring> files_;
  std::uint32_t cancel_ = 0;  // atomic accesses only: the library reads it meanwhile
  std::mutex mutex_;
  std::vector<FileHash> finished_;  // guarded by mutex_
  std::wstring current_path_;       // guarded by mutex_
  WorkThread work_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_FILE_HASHES_H_
