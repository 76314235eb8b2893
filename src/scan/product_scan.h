// The product scan object: one request, one scan at a time, the report that it leaves, and the
// cleans of that report.
//
// Start and StartClean run on the caller's thread; one of them at a time is inside, and the only
// writer. Queries and cancels come from any other thread; they take the mutex for the length of a
// copy. The object knows no scan kind: whoever makes it hands it the table of the runners.

#ifndef QUASTEL_SCAN_PRODUCT_SCAN_H_
#define QUASTEL_SCAN_PRODUCT_SCAN_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/mutex.h"
#include "base/text.h"
#include "frame/busy_flag.h"
#include "frame/cancel.h"
#include "scan/owned_request.h"
#include "scan/report_rows.h"
#include "scan/scan_runners.h"

namespace quastel {

enum class ScanState : std::uint32_t {
  kIdle = 0,
  kRunning = 1,
  kDone = 2,
  kCancelled = 3,
  kFailed = 4,
};

// Where an export wants a text of a row to go.
struct TextTarget {
  Char* buffer;
  std::uint64_t capacity;
  std::uint64_t* needed;
};

struct RowTextTargets {
  TextTarget path;
  TextTarget name;
  TextTarget title;
  TextTarget location;
};

class ProductScan {
 public:
  using PerformanceField = std::uint64_t qs_product_scan_performance::*;

  explicit ProductScan(const ScanRunners& runners, EmptyFolderTest is_empty_folder = nullptr);
  ProductScan(const ProductScan&) = delete;
  ProductScan& operator=(const ProductScan&) = delete;

  // ---- What the exports call.

  // Runs a whole scan and returns its status. A request that is refused changes nothing.
  qs_status Start(const qs_product_scan_request* request);

  // Asks the running scan to stop; does nothing when none runs.
  void Cancel() QS_EXCLUDES(mutex_);

  // True when nothing runs and nothing can start any more: the caller deletes the object.
  [[nodiscard]] bool TryRetire() QS_EXCLUDES(mutex_);

  void Poll(qs_product_scan_status& status) QS_EXCLUDES(mutex_);
  void CopyPerformance(qs_product_scan_performance& performance) QS_EXCLUDES(mutex_);
  qs_status CopyCurrentPath(const TextTarget& target) QS_EXCLUDES(mutex_);
  qs_status CopyCurrentGroup(const TextTarget& target) QS_EXCLUDES(mutex_);
  std::uint64_t RowCount() QS_EXCLUDES(mutex_);
  qs_status CopyRow(std::uint64_t index, const RowTextTargets& texts, qs_product_scan_row& row)
      QS_EXCLUDES(mutex_);
  qs_status CopyParentGroupId(std::uint64_t index, std::uint64_t& id) QS_EXCLUDES(mutex_);

  // ---- What the exports call for a clean.

  // Deletes the files of the rows that the ids name, and returns the clean's status. A request that
  // is refused deletes and changes nothing.
  qs_status StartClean(const std::uint64_t* ids, std::uint64_t count) QS_EXCLUDES(mutex_);

  // Asks the running clean to stop before its next file; does nothing when none runs.
  void CancelClean() QS_EXCLUDES(mutex_);

  void PollClean(qs_product_clean_status& status) QS_EXCLUDES(mutex_);
  void PollClean(qs_product_clean_detail& detail) QS_EXCLUDES(mutex_);

  // ---- What the scan kinds call, on the scan's threads.

  // Copies a finding into the report; items get the next id, group headers none.
  void AppendRow(const ReportRow& row) QS_EXCLUDES(mutex_);

  // Counts a file that the scan looks at. Takes the mutex at most every 20 ms.
  void ReportProgress(const Char* path, std::int64_t size) QS_EXCLUDES(mutex_);

  // Sets the path that is shown, and marks that a stage without counters is at work.
  void SetCurrentPath(TextView path) QS_EXCLUDES(mutex_);
  void SetCurrentGroup(TextView group) QS_EXCLUDES(mutex_);

  void SetPerformanceField(PerformanceField field, std::uint64_t value) QS_EXCLUDES(mutex_);
  void AddPerformanceTime(PerformanceField field, std::int64_t nanoseconds) QS_EXCLUDES(mutex_);

  // How many groups a duplicate scan found; no record shows it.
  void SetGroupCount(std::uint64_t count) QS_EXCLUDES(mutex_);
  std::uint64_t group_count() QS_EXCLUDES(mutex_);

  bool IsCancelled() { return cancel_.IsSet(); }

  // The flag that enumeration and hashing read.
  std::uint32_t* cancel_flag() { return cancel_.address(); }

 private:
  bool IsRunning() const QS_REQUIRES(mutex_);
  void Reset(OwnedRequest request) QS_REQUIRES(mutex_);
  qs_status RunKind();
  qs_status FinishScan(qs_status status) QS_EXCLUDES(mutex_);

  // What a clean works through: indexes of rows.
  using CleanList = std::vector<std::size_t>;

  bool IsCleaning() const QS_REQUIRES(mutex_);
  qs_status AdmitClean(const std::uint64_t* ids, std::uint64_t count, CleanList& list)
      QS_EXCLUDES(mutex_);
  qs_status ListRows(const std::uint64_t* ids, std::uint64_t count, CleanList& list) const
      QS_REQUIRES(mutex_);
  void PutDeepestFirst(CleanList& list) const QS_REQUIRES(mutex_);
  bool LeavesNoCopy(const CleanList& list) const QS_REQUIRES(mutex_);
  qs_status RunClean(const CleanList& list) QS_EXCLUDES(mutex_);
  bool CleanRow(std::size_t index, Text& path) QS_EXCLUDES(mutex_);
  void RemoveEmptyFolderOf(const Text& path) const;
  qs_status FinishClean(qs_status status) QS_EXCLUDES(mutex_);

  const ScanRunners runners_;
  const EmptyFolderTest is_empty_folder_;
  BusyFlag busy_;
  OwnedRequest request_;  // written and read by whoever holds the busy flag
  CancelFlag cancel_;
  CancelFlag clean_cancel_;
  std::atomic<std::uint64_t> files_visited_{0};
  std::atomic<std::uint64_t> bytes_visited_{0};
  std::atomic<std::uint64_t> next_path_update_ms_{0};

  Mutex mutex_;
  ReportRows rows_ QS_GUARDED_BY(mutex_);
  std::uint64_t next_item_id_ QS_GUARDED_BY(mutex_) = 0;
  Text current_path_ QS_GUARDED_BY(mutex_);
  Text current_group_ QS_GUARDED_BY(mutex_);
  qs_product_scan_status status_ QS_GUARDED_BY(mutex_) = {};
  qs_product_scan_performance performance_ QS_GUARDED_BY(mutex_) = {};
  std::uint64_t group_count_ QS_GUARDED_BY(mutex_) = 0;
  std::int64_t started_at_ns_ QS_GUARDED_BY(mutex_) = 0;
  bool scan_active_ QS_GUARDED_BY(mutex_) = false;
  qs_product_clean_detail clean_ QS_GUARDED_BY(mutex_) = {};
  bool clean_active_ QS_GUARDED_BY(mutex_) = false;
};

// Adds the time of its scope to one performance field.
class PerfTimer {
 public:
  PerfTimer(ProductScan& scan, ProductScan::PerformanceField field);
  ~PerfTimer();
  PerfTimer(const PerfTimer&) = delete;
  PerfTimer& operator=(const PerfTimer&) = delete;

 private:
  ProductScan& scan_;
  const ProductScan::PerformanceField field_;
  const std::int64_t began_at_ns_;
};

}  // namespace quastel

#endif  // QUASTEL_SCAN_PRODUCT_SCAN_H_
