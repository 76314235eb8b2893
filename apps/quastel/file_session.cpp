#include "file_session.h"

#include <utility>

#include "library_call.h"

namespace quastel::client {
namespace {

constexpr std::size_t kFirstCapacity = 512;

}  // namespace

FileSession::FileSession() {
  RequireOk(qs_session_create(&handle_), "qs_session_create");
}

FileSession::~FileSession() {
  while (work_ && !work_->WaitFor(std::chrono::milliseconds(10))) {
    Cancel();
  }
  work_.reset();
  qs_session_destroy(handle_);
}

void FileSession::StartScan(std::wstring root, std::uint32_t mode) {
  root_ = std::move(root);
  work_ = std::make_unique<WorkThread>();
  work_->Start([this, mode] { return qs_session_start_scan(handle_, root_.c_str(), mode); });
}

void FileSession::StartClean(std::vector<std::uint64_t> indexes) {
  indexes_ = std::move(indexes);
  work_ = std::make_unique<WorkThread>();
  work_->Start(
      [this] { return qs_session_start_clean(handle_, indexes_.data(), indexes_.size()); });
}

void FileSession::Cancel() {
  // Each does nothing unless its own kind of work runs.
  qs_session_cancel_scan(handle_);
  qs_session_cancel_clean(handle_);
}

qs_status FileSession::Finish() {
  const qs_status status = work_->Finish();
  work_.reset();
  return status;
}

qs_session_scan_status FileSession::PollScan() const {
  qs_session_scan_status status = {};
  RequireOk(qs_session_poll_scan(handle_, &status), "qs_session_poll_scan");
  return status;
}

qs_session_clean_status FileSession::PollClean() const {
  qs_session_clean_status status = {};
  RequireOk(qs_session_poll_clean(handle_, &status), "qs_session_poll_clean");
  return status;
}

std::wstring FileSession::CurrentPath() const {
  std::wstring text(kFirstCapacity, L'\0');
  for (;;) {
    std::uint64_t needed = 0;
    const qs_status status =
        qs_session_scan_current_path(handle_, text.data(), text.size(), &needed);
    if (status == QS_OK) {
      text.resize(static_cast<std::size_t>(needed - 1));
      return text;
    }
    if (status != QS_BUFFER_TOO_SMALL) {
      RequireOk(status, "qs_session_scan_current_path");
    }
    // The path changes while the scan runs, so a longer one may have come by the next call.
    text.resize(static_cast<std::size_t>(needed));
  }
}

std::uint64_t FileSession::RowCount() const {
  std::uint64_t count = 0;
  RequireOk(qs_session_report_count(handle_, &count), "qs_session_report_count");
  return count;
}

SessionFile FileSession::Row(std::uint64_t index) const {
  SessionFile file;
  file.path.resize(kFirstCapacity);
  file.name.resize(kFirstCapacity);
  std::uint64_t path_needed = 0;
  std::uint64_t name_needed = 0;
  const auto read = [&] {
    return qs_session_report_row(handle_, index, file.path.data(), file.path.size(), &path_needed,
                                 file.name.data(), file.name.size(), &name_needed, &file.numbers);
  };
  qs_status status = read();
  if (status == QS_BUFFER_TOO_SMALL) {
    // A row never changes its texts, so that the sizes just learned are right for the second call.
    file.path.resize(static_cast<std::size_t>(path_needed));
    file.name.resize(static_cast<std::size_t>(name_needed));
    status = read();
  }
  RequireOk(status, "qs_session_report_row");
  file.path.resize(static_cast<std::size_t>(path_needed - 1));
  file.name.resize(static_cast<std::size_t>(name_needed - 1));
  return file;
}

}  // namespace quastel::client
