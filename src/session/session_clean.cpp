// The clean of a session.

#include <vector>

#include "frame/boundary.h"
#include "fs/deletion.h"
#include "fs/path_rules.h"
#include "session/session.h"

namespace quastel {

static_assert(sizeof(qs_session_clean_status) == 28);

qs_status Session::StartClean(const std::uint64_t* indexes, std::uint64_t count) {
  if (!busy_.TryEnter()) {
    return QS_BUSY;
  }
  const BusyScope busy(busy_);
  if (scan_state_ != SessionState::kDone || mode_ == SessionMode::kInspect) {
    return QS_UNSUPPORTED;
  }
  if (clean_state_ == SessionState::kRunning) {
    return QS_BUSY;
  }
  const qs_status status = StatusBoundary([&]() -> qs_status {
    std::vector<WorkItem> items;
    const qs_status refusal = ListItems(indexes, count, items);
    if (refusal != QS_OK) {
      return refusal;
    }
    BeginClean(items.size());
    return FinishClean(CleanItems(items));
  });
  // No refusal has this status.
  if (status == QS_FAILED) {
    FailClean();
  }
  return status;
}

qs_status Session::ListItems(const std::uint64_t* indexes, std::uint64_t count,
                             std::vector<WorkItem>& items) {
  const MutexLock lock(rows_mutex_);
  std::vector<bool> taken(rows_.size());
  for (std::uint64_t i = 0; i < count; ++i) {
    if (indexes[i] >= rows_.size()) {
      return QS_NOT_FOUND;
    }
    const auto index = static_cast<std::size_t>(indexes[i]);
    if (taken[index]) {
      return QS_INVALID_ARGUMENT;
    }
    taken[index] = true;
    const SessionRow& row = rows_[index];
    items.push_back({index, row.path, LeadsToFile(row.path, row.name), row.size, row.modified});
  }
  return QS_OK;
}

void Session::BeginClean(std::uint64_t requested) {
  clean_control_.Begin();
  clean_requested_ = requested;
  clean_processed_ = 0;
  clean_status_ = QS_OK;
  clean_state_ = SessionState::kRunning;
}

qs_status Session::CleanItems(const std::vector<WorkItem>& items) {
  for (const WorkItem& item : items) {
    if (clean_control_.flag().IsSet()) {
      return QS_CANCELLED;
    }
    const FileSnapshot snapshot = {static_cast<std::int64_t>(item.size),
                                   static_cast<std::int64_t>(item.modified)};
    // A failure inside fails this file, like every other reason why it could not be deleted.
    const auto remove = [&] { return DeleteSnapshotPermanently(item.path.c_str(), snapshot); };
    if (!item.leads_to_file || PredicateBoundary(remove) == 0) {
      return QS_FAILED;
    }
    const MutexLock lock(rows_mutex_);
    rows_[item.index].deleted = true;
    ++clean_processed_;
  }
  return QS_OK;
}

qs_status Session::FinishClean(qs_status status) {
  const bool was_cancelled = clean_control_.End();
  // A failure is told even if a cancel came as well: the file is still there.
  if (was_cancelled && status != QS_FAILED) {
    status = QS_CANCELLED;
  }
  if (status != QS_FAILED) {
    clean_status_ = status;
    clean_state_ = status == QS_OK ? SessionState::kDone : SessionState::kCancelled;
  }
  return status;
}

// Takes no lock, as FailScan.
void Session::FailClean() noexcept {
  clean_control_.Abandon();
  clean_status_ = QS_FAILED;
  clean_state_ = SessionState::kFailed;
}

void Session::PollClean(qs_session_clean_status& status) const {
  status = {};
  status.state = static_cast<std::uint32_t>(clean_state_.load());
  status.requested = clean_requested_;
  status.processed = clean_processed_;
  status.status = clean_status_;
}

}  // namespace quastel
