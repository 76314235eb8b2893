#include "scan/product_scan.h"

#include <algorithm>
#include <utility>

#include "frame/boundary.h"
#include "frame/scan_hold.h"
#include "frame/text_output.h"
#include "platform/clock.h"
#include "platform/thread.h"

namespace quastel {
namespace {

constexpr std::uint64_t kPathUpdateMs = 20;
constexpr std::uint64_t kYieldEvery = 256;

static_assert(sizeof(qs_product_scan_performance) == 192);

constexpr std::uint64_t Microseconds(std::int64_t nanoseconds) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(nanoseconds / 1000, 0));
}

qs_product_scan_performance EmptyPerformance() {
  qs_product_scan_performance performance = {};
  performance.size = sizeof(performance);
  return performance;
}

qs_status Deliver(TextView text, const TextTarget& target) {
  return DeliverText(text, target.buffer, target.capacity, target.needed);
}

}  // namespace

ProductScan::ProductScan(const ScanRunners& runners, EmptyFolderTest is_empty_folder)
    : runners_(runners), is_empty_folder_(is_empty_folder), performance_(EmptyPerformance()) {}

qs_status ProductScan::Start(const qs_product_scan_request* request) {
  if (!busy_.TryEnter()) {
    return QS_BUSY;
  }
  const BusyScope busy(busy_);
  OwnedRequest copy;
  const qs_status refusal = CopyRequest(request, copy);
  if (refusal != QS_OK) {
    return refusal;
  }
  {
    ReportRows old_rows;  // a large report is freed while the readers go on
    const MutexLock lock(mutex_);
    if (IsRunning() || IsCleaning()) {
      return QS_BUSY;
    }
    std::swap(rows_, old_rows);
    Reset(std::move(copy));
  }
  // From here on a scan is running, and whatever happens has to finish it.
  return FinishSurely(StatusBoundary([this] { return RunKind(); }),
                      [this](qs_status status) { return FinishScan(status); });
}

bool ProductScan::IsRunning() const {
  return status_.state == static_cast<std::uint32_t>(ScanState::kRunning);
}

void ProductScan::Reset(OwnedRequest request) {
  request_ = std::move(request);
  next_item_id_ = 0;
  current_path_.clear();
  current_group_.clear();
  group_count_ = 0;
  files_visited_ = 0;
  bytes_visited_ = 0;
  next_path_update_ms_ = 0;
  status_ = {};
  status_.state = static_cast<std::uint32_t>(ScanState::kRunning);
  performance_ = EmptyPerformance();
  performance_.kind = static_cast<std::uint32_t>(request_.kind);
  started_at_ns_ = platform::MonotonicNanoseconds();
  clean_ = {};
  cancel_.Clear();
  clean_cancel_.Clear();
  scan_active_ = true;
}

qs_status ProductScan::RunKind() {
  HoldScan(cancel_);
  if (IsCancelled()) {
    return QS_CANCELLED;
  }
  const auto kind = static_cast<std::size_t>(request_.kind);
  const ScanRunner runner = kind < runners_.size() ? runners_[kind] : nullptr;
  return runner == nullptr ? QS_UNSUPPORTED : runner(*this, request_);
}

qs_status ProductScan::FinishScan(qs_status status) {
  const MutexLock lock(mutex_);
  // A cancel that came in before the end counts, whatever the end was.
  if (scan_active_ && cancel_.IsSet()) {
    status = QS_CANCELLED;
  }
  scan_active_ = false;
  cancel_.Clear();

  status_.files_visited = performance_.files_visited = files_visited_;
  status_.bytes_visited = performance_.bytes_visited = bytes_visited_;
  status_.status = performance_.status = status;
  status_.item_count = performance_.item_count = next_item_id_;
  performance_.row_count = rows_.size();
  performance_.elapsed_us = Microseconds(platform::MonotonicNanoseconds() - started_at_ns_);
  const ScanState state = status == QS_OK          ? ScanState::kDone
                          : status == QS_CANCELLED ? ScanState::kCancelled
                                                   : ScanState::kFailed;
  status_.state = static_cast<std::uint32_t>(state);
  return status;
}

void ProductScan::Cancel() {
  const MutexLock lock(mutex_);
  if (scan_active_ && IsRunning()) {
    cancel_.Set();
  }
}

bool ProductScan::TryRetire() {
  if (!busy_.TryEnter()) {
    return false;
  }
  BusyScope busy(busy_);
  const MutexLock lock(mutex_);
  if (IsRunning() || IsCleaning()) {
    return false;
  }
  busy.Keep();
  return true;
}

void ProductScan::Poll(qs_product_scan_status& status) {
  const MutexLock lock(mutex_);
  status = status_;
  status.files_visited = files_visited_;
  status.bytes_visited = bytes_visited_;
}

void ProductScan::CopyPerformance(qs_product_scan_performance& performance) {
  const MutexLock lock(mutex_);
  performance = performance_;
  if (IsRunning()) {
    performance.elapsed_us = Microseconds(platform::MonotonicNanoseconds() - started_at_ns_);
    performance.files_visited = files_visited_;
    performance.bytes_visited = bytes_visited_;
    performance.row_count = rows_.size();
    performance.item_count = next_item_id_;
  }
}

qs_status ProductScan::CopyCurrentPath(const TextTarget& target) {
  const MutexLock lock(mutex_);
  return Deliver(current_path_, target);
}

qs_status ProductScan::CopyCurrentGroup(const TextTarget& target) {
  const MutexLock lock(mutex_);
  return Deliver(current_group_, target);
}

std::uint64_t ProductScan::RowCount() {
  const MutexLock lock(mutex_);
  return rows_.size();
}

qs_status ProductScan::CopyRow(std::uint64_t index, const RowTextTargets& texts,
                               qs_product_scan_row& row) {
  const MutexLock lock(mutex_);
  if (index >= rows_.size()) {
    return QS_NOT_FOUND;
  }
  const StoredRow& source = rows_[index];
  row = {
      .item_id = source.item_id,
      .group_id = source.group_id,
      .kind = static_cast<std::uint32_t>(source.kind),
      .reserved = 0,
      .size = source.size,
      .modified = source.modified,
      .deletable = source.deletable ? 1u : 0u,
      .preselect = source.preselect ? 1u : 0u,
      .deleted = source.deleted ? 1u : 0u,
      .large_class = static_cast<std::uint32_t>(source.large_class),
  };
  // Each text is copied or refused by itself; one refusal is the answer.
  return std::max({Deliver(source.path, texts.path), Deliver(source.name, texts.name),
                   Deliver(source.title, texts.title), Deliver(source.location, texts.location)});
}

qs_status ProductScan::CopyParentGroupId(std::uint64_t index, std::uint64_t& id) {
  const MutexLock lock(mutex_);
  if (index >= rows_.size()) {
    return QS_NOT_FOUND;
  }
  id = rows_[index].parent_group_id;
  return QS_OK;
}

void ProductScan::AppendRow(const ReportRow& row) {
  const MutexLock lock(mutex_);
  const bool is_item = row.kind != RowKind::kGroup;
  // Nothing is counted before the row is in: an append that fails leaves the report as it was.
  rows_.Append(row, is_item ? next_item_id_ : kNoItemId);
  if (is_item) {
    ++next_item_id_;
    if (row.size > 0) {
      status_.total_bytes += static_cast<std::uint64_t>(row.size);
    }
  }
  status_.item_count = next_item_id_;
}

void ProductScan::ReportProgress(const Char* path, std::int64_t size) {
  const std::uint64_t visited = files_visited_.fetch_add(1) + 1;
  if (size > 0) {
    bytes_visited_.fetch_add(static_cast<std::uint64_t>(size));
  }
  const std::uint64_t now = platform::TickMilliseconds();
  std::uint64_t next = next_path_update_ms_;
  // One thread wins the exchange and pays for the lock.
  if (now >= next && next_path_update_ms_.compare_exchange_strong(next, now + kPathUpdateMs)) {
    const MutexLock lock(mutex_);
    current_path_ = ViewOf(path);
  }
  if (visited % kYieldEvery == 0) {
    platform::SleepMilliseconds(0);
  }
}

void ProductScan::SetCurrentPath(TextView path) {
  const MutexLock lock(mutex_);
  current_path_ = path;
  status_.path_published = 1;
}

void ProductScan::SetCurrentGroup(TextView group) {
  const MutexLock lock(mutex_);
  current_group_ = group;
}

void ProductScan::SetGroupCount(std::uint64_t count) {
  const MutexLock lock(mutex_);
  group_count_ = count;
}

std::uint64_t ProductScan::group_count() {
  const MutexLock lock(mutex_);
  return group_count_;
}

void ProductScan::SetPerformanceField(PerformanceField field, std::uint64_t value) {
  const MutexLock lock(mutex_);
  performance_.*field = value;
}

void ProductScan::AddPerformanceTime(PerformanceField field, std::int64_t nanoseconds) {
  const MutexLock lock(mutex_);
  performance_.*field += Microseconds(nanoseconds);
}

PerfTimer::PerfTimer(ProductScan& scan, ProductScan::PerformanceField field)
    : scan_(scan), field_(field), began_at_ns_(platform::MonotonicNanoseconds()) {}

PerfTimer::~PerfTimer() {
  // A time that cannot be stored is no reason to end the process, as leaving a destructor would be.
  (void)StatusBoundary([this]() -> qs_status {
    scan_.AddPerformanceTime(field_, platform::MonotonicNanoseconds() - began_at_ns_);
    return QS_OK;
  });
}

}  // namespace quastel
