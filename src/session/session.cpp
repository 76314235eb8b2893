#include "session/session.h"

#include <algorithm>

#include "frame/text_output.h"

namespace quastel {
namespace {

static_assert(sizeof(qs_session_scan_status) == 36);
static_assert(sizeof(qs_session_row) == 20);

qs_status Deliver(TextView text, const SessionTextTarget& target) {
  return DeliverText(text, target.buffer, target.capacity, target.needed);
}

}  // namespace

void CancelControl::Begin() {
  const MutexLock lock(mutex_);
  flag_.Clear();
  active_ = true;
}

bool CancelControl::End() {
  const MutexLock lock(mutex_);
  const bool was_cancelled = active_ && flag_.IsSet();
  active_ = false;
  flag_.Clear();
  return was_cancelled;
}

void CancelControl::Abandon() noexcept {
  active_ = false;
  flag_.Clear();
}

void CancelControl::Cancel() {
  const MutexLock lock(mutex_);
  if (active_) {
    flag_.Set();
  }
}

bool Session::IsRunning() const {
  return scan_state_ == SessionState::kRunning || clean_state_ == SessionState::kRunning;
}

bool Session::TryRetire() {
  if (!busy_.TryEnter()) {
    return false;
  }
  BusyScope busy(busy_);
  if (IsRunning()) {
    return false;
  }
  busy.Keep();
  return true;
}

void Session::PollScan(qs_session_scan_status& status) {
  status = {};
  status.state = static_cast<std::uint32_t>(scan_state_.load());
  status.files_visited = files_visited_;
  status.bytes_visited = bytes_visited_;
  const MutexLock lock(rows_mutex_);
  status.row_count = rows_.size();
  status.status = scan_status_;
}

qs_status Session::CopyCurrentPath(const SessionTextTarget& target) {
  const MutexLock lock(path_mutex_);
  return Deliver(current_path_, target);
}

std::uint64_t Session::RowCount() {
  const MutexLock lock(rows_mutex_);
  return rows_.size();
}

qs_status Session::CopyRow(std::uint64_t index, const SessionTextTarget& path,
                           const SessionTextTarget& name, qs_session_row& row) {
  const MutexLock lock(rows_mutex_);
  if (index >= rows_.size()) {
    return QS_NOT_FOUND;
  }
  const SessionRow& source = rows_[static_cast<std::size_t>(index)];
  row = {.size = source.size, .modified = source.modified, .deleted = source.deleted ? 1u : 0u};
  // Each text is copied or refused by itself; one refusal is the answer.
  return std::max({Deliver(source.path, path), Deliver(source.name, name)});
}

}  // namespace quastel
