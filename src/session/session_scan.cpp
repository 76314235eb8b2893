// The scan of a session.

#include <utility>

#include "frame/boundary.h"
#include "frame/scan_hold.h"
#include "fs/enumeration.h"
#include "session/session.h"

namespace quastel {
namespace {

// Files of up to 10 MiB are left out by the mode that keeps the large ones.
constexpr std::uint64_t kLargestSmallFile = 10'485'760;

}  // namespace

qs_status Session::StartScan(const Char* root, SessionMode mode) {
  if (!busy_.TryEnter()) {
    return QS_BUSY;
  }
  const BusyScope busy(busy_);
  if (IsRunning()) {
    return QS_BUSY;
  }
  const qs_status status = StatusBoundary([&] {
    BeginScan(mode);
    return FinishScan(RunScan(root));
  });
  if (status == QS_FAILED) {
    FailScan();
  }
  return status;
}

void Session::BeginScan(SessionMode mode) {
  mode_ = mode;
  std::deque<SessionRow> old_rows;  // a large report is freed while the readers go on
  {
    const MutexLock lock(rows_mutex_);
    rows_.swap(old_rows);
  }
  {
    const MutexLock lock(path_mutex_);
    current_path_.clear();
  }
  scan_status_ = QS_OK;
  files_visited_ = 0;
  bytes_visited_ = 0;
  // In this order: who sees a running scan can cancel it.
  scan_control_.Begin();
  scan_state_ = SessionState::kRunning;
}

qs_status Session::RunScan(const Char* root) {
  HoldScan(scan_control_.flag());
  if (scan_control_.flag().IsSet()) {
    return QS_CANCELLED;
  }
  const FileWalkOptions options = {
      .pattern = Text(), .recursive = true, .cancel = scan_control_.flag().address()};
  return EnumerateFiles(root, options, &Session::OnFile, this);
}

qs_status Session::FinishScan(qs_status status) {
  if (scan_control_.End()) {
    status = QS_CANCELLED;
  }
  scan_status_ = status;
  scan_state_ = status == QS_OK ? SessionState::kDone : SessionState::kCancelled;
  return status;
}

// Takes no lock: one that failed may be why the scan did. Without an end the session could never be
// used or freed again.
void Session::FailScan() noexcept {
  scan_control_.Abandon();
  scan_status_ = QS_FAILED;
  scan_state_ = SessionState::kFailed;
}

// What it throws passes through the walk and fails the scan.
void Session::OnFile(void* session, const Char* path, std::uint64_t size, std::uint64_t last_write,
                     const Char* name) {
  static_cast<Session*>(session)->AddFile(path, size, last_write, name);
}

void Session::AddFile(const Char* path, std::uint64_t size, std::uint64_t last_write,
                      const Char* name) {
  {
    const MutexLock lock(path_mutex_);
    current_path_ = ViewOf(path);
  }
  ++files_visited_;
  bytes_visited_ += size;
  if (scan_control_.flag().IsSet() ||
      (mode_ == SessionMode::kLargeFiles && size <= kLargestSmallFile)) {
    return;
  }
  SessionRow row = {.path = Text(ViewOf(path)),
                    .name = Text(ViewOf(name)),
                    .size = size,
                    .modified = last_write,
                    .deleted = false};
  const MutexLock lock(rows_mutex_);
  rows_.push_back(std::move(row));
}

}  // namespace quastel
