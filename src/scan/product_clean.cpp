// The clean of a product scan: the only part of the object that removes anything.

#include <algorithm>
#include <functional>
#include <limits>
#include <unordered_map>
#include <utility>

#include "base/ascii.h"
#include "frame/boundary.h"
#include "fs/deletion.h"
#include "fs/path_rules.h"
#include "scan/product_scan.h"

namespace quastel {
namespace {

static_assert(sizeof(qs_product_clean_status) == 32);
static_assert(sizeof(qs_product_clean_detail) == 56);

constexpr auto kNoRow = std::numeric_limits<std::size_t>::max();

// A file that can stand for its set: present as far as the report knows, and meant by its path. A
// walk meets "name." on some disks, and everything that then reads that path reads "name": such a
// row does not say which file it is about, and removes none.
bool IsCopy(const StoredRow& row) {
  return row.deletable && !row.deleted && LeadsToFile(row.path, row.name);
}

constexpr std::uint32_t Number(ScanState state) {
  return static_cast<std::uint32_t>(state);
}

}  // namespace

qs_status ProductScan::StartClean(const std::uint64_t* ids, std::uint64_t count) {
  if (count > 0 && ids == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  if (!busy_.TryEnter()) {
    return QS_BUSY;
  }
  const BusyScope busy(busy_);
  CleanList list;
  const qs_status refusal = AdmitClean(ids, count, list);
  if (refusal != QS_OK) {
    return refusal;
  }
  // From here on a clean is running, and whatever happens has to finish it.
  return FinishSurely(StatusBoundary([&] { return RunClean(list); }),
                      [this](qs_status status) { return FinishClean(status); });
}

bool ProductScan::IsCleaning() const {
  return clean_.state == Number(ScanState::kRunning);
}

// All of a request is looked at before anything is touched; what it may not name refuses it whole.
qs_status ProductScan::AdmitClean(const std::uint64_t* ids, std::uint64_t count, CleanList& list) {
  const MutexLock lock(mutex_);
  if (IsRunning() || IsCleaning()) {
    return QS_BUSY;
  }
  if (status_.state == Number(ScanState::kIdle) || status_.state == Number(ScanState::kFailed)) {
    return QS_UNSUPPORTED;
  }
  const qs_status refusal = ListRows(ids, count, list);
  if (refusal != QS_OK) {
    return refusal;
  }
  if (request_.kind == ScanKind::kDuplicates && LeavesNoCopy(list)) {
    return QS_INVALID_ARGUMENT;
  }
  if (request_.kind == ScanKind::kJunkRules) {
    PutDeepestFirst(list);
  }
  clean_ = {};
  clean_.state = Number(ScanState::kRunning);
  clean_.requested = count;
  clean_cancel_.Clear();
  clean_active_ = true;
  return QS_OK;
}

qs_status ProductScan::ListRows(const std::uint64_t* ids, std::uint64_t count,
                                CleanList& list) const {
  std::vector<std::size_t> row_of(static_cast<std::size_t>(next_item_id_), kNoRow);
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    // The id of a header is beyond every item's.
    if (rows_[i].item_id < next_item_id_) {
      row_of[static_cast<std::size_t>(rows_[i].item_id)] = i;
    }
  }
  for (std::uint64_t i = 0; i < count; ++i) {
    if (ids[i] >= next_item_id_) {
      return QS_INVALID_ARGUMENT;
    }
    // A row that was named is out of the table, so that a second time finds none.
    const std::size_t index = std::exchange(row_of[static_cast<std::size_t>(ids[i])], kNoRow);
    if (index == kNoRow || !rows_[index].deletable || rows_[index].deleted) {
      return QS_INVALID_ARGUMENT;
    }
    list.push_back(index);
  }
  return QS_OK;
}

// What lies deep in a folder goes before what lies nearer to the root, so that folders are empty
// when their turn comes.
void ProductScan::PutDeepestFirst(CleanList& list) const {
  using LengthAndRow = std::pair<std::size_t, std::size_t>;
  std::vector<LengthAndRow> lengths;
  lengths.reserve(list.size());
  for (const std::size_t index : list) {
    lengths.emplace_back(rows_[index].path.size(), index);
  }
  std::ranges::stable_sort(lengths, std::greater(), &LengthAndRow::first);
  std::ranges::transform(lengths, list.begin(), &LengthAndRow::second);
}

// Whether some set of duplicates would lose every file that it still has.
bool ProductScan::LeavesNoCopy(const CleanList& list) const {
  std::unordered_map<std::uint64_t, std::uint64_t> left;  // of each group that is touched
  for (const std::size_t index : list) {
    left.emplace(rows_[index].group_id, 0);
  }
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const StoredRow& row = rows_[i];
    if (row.kind == RowKind::kDuplicate && IsCopy(row)) {
      if (const auto group = left.find(row.group_id); group != left.end()) {
        ++group->second;
      }
    }
  }
  for (const std::size_t index : list) {
    if (IsCopy(rows_[index]) && --left[rows_[index].group_id] == 0) {
      return true;
    }
  }
  return false;
}

qs_status ProductScan::RunClean(const CleanList& list) {
  std::uint64_t deleted = 0;
  Text path;
  for (const std::size_t index : list) {
    if (clean_cancel_.IsSet()) {
      return QS_CANCELLED;
    }
    if (CleanRow(index, path)) {
      ++deleted;
      if (request_.kind == ScanKind::kJunkRules) {
        RemoveEmptyFolderOf(path);
      }
    }
  }
  return deleted == 0 && !list.empty() ? QS_FAILED : QS_OK;
}

bool ProductScan::CleanRow(std::size_t index, Text& path) {
  FileSnapshot snapshot;
  bool leads_to_file = false;
  {
    const MutexLock lock(mutex_);
    const StoredRow& row = rows_[index];
    path = row.path;
    leads_to_file = LeadsToFile(row.path, row.name);
    snapshot = {row.size, static_cast<std::int64_t>(row.modified)};
  }
  // A failure inside fails this file, like every other reason why it could not be deleted.
  const auto remove = [&] { return DeleteSnapshotPermanently(path.c_str(), snapshot); };
  const bool deleted = leads_to_file && PredicateBoundary(remove) != 0;
  const MutexLock lock(mutex_);
  ++clean_.processed;
  if (!deleted) {
    ++clean_.failed;
    return false;
  }
  rows_.MarkDeleted(index);
  ++clean_.deleted;
  clean_.bytes_freed += static_cast<std::uint64_t>(std::max<std::int64_t>(snapshot.size, 0));
  return true;
}

// One level up and no further. A drive's or share's root is nobody's folder, and without its
// separator a drive's name would mean the folder that is current there.
void ProductScan::RemoveEmptyFolderOf(const Text& path) const {
  const std::size_t last = LastSeparator(path);
  if (last == TextView::npos || last < RootLength(path)) {
    return;
  }
  PredicateBoundary([&] {
    const Text folder(path, 0, last);
    if (EndsInDotOrBlank(folder) && !IsExtendedPath(folder)) {
      return false;  // by itself this path means another folder
    }
    return is_empty_folder_ != nullptr && is_empty_folder_(folder) &&
           DeletePermanently(folder.c_str());
  });
}

qs_status ProductScan::FinishClean(qs_status status) {
  const MutexLock lock(mutex_);
  // A cancel that came in before the end counts, whatever the end was.
  if (clean_active_ && clean_cancel_.IsSet()) {
    status = QS_CANCELLED;
  }
  clean_active_ = false;
  clean_cancel_.Clear();
  clean_.status = status;
  clean_.state = Number(status == QS_OK          ? ScanState::kDone
                        : status == QS_CANCELLED ? ScanState::kCancelled
                                                 : ScanState::kFailed);
  return status;
}

void ProductScan::CancelClean() {
  const MutexLock lock(mutex_);
  if (clean_active_ && IsCleaning()) {
    clean_cancel_.Set();
  }
}

void ProductScan::PollClean(qs_product_clean_status& status) {
  const MutexLock lock(mutex_);
  status = {};
  status.state = clean_.state;
  status.requested = clean_.requested;
  status.processed = clean_.processed;
  status.status = clean_.status;
}

void ProductScan::PollClean(qs_product_clean_detail& detail) {
  const MutexLock lock(mutex_);
  detail = clean_;
  detail.size = sizeof(detail);
}

}  // namespace quastel
