#ifndef QUASTEL_APPS_QUASTEL_PRODUCT_SCAN_H_
#define QUASTEL_APPS_QUASTEL_PRODUCT_SCAN_H_

#include <quastel_core.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "scan_request.h"
#include "scan_row.h"
#include "work_thread.h"

namespace quastel::client {

// Owns a qs_product_scan handle and the thread that is inside its start call: the call blocks until
// the scan ends, so it has a thread to itself, and all the rest may be called meanwhile.
class ProductScan {
 public:
  ProductScan();
  // Cancels what still runs and waits for it: the library refuses to destroy a busy handle.
  ~ProductScan();
  ProductScan(const ProductScan&) = delete;
  ProductScan& operator=(const ProductScan&) = delete;

  // Once for each object.
  void Start(ScanRequest request);

  // True when the scan has ended, which wakes the caller at once; false after `time`.
  bool WaitFor(std::chrono::milliseconds time) { return work_.WaitFor(time); }

  // Does nothing while no scan runs, also in the moment before the new thread has started one. So a
  // caller who wants it to end asks again until WaitFor() answers true.
  void Cancel();

  // Waits for the end and answers the status of the start call.
  qs_status Finish() { return work_.Finish(); }

  qs_product_scan_status Poll() const;
  qs_product_scan_performance Performance() const;

  // `text` keeps its memory from call to call.
  void ReadCurrentPath(std::wstring& text) const;

  std::uint64_t RowCount() const;
  std::uint64_t ParentGroupId(std::uint64_t index) const;

 private:
  friend class RowReader;

  qs_product_scan* handle_ = nullptr;
  ScanRequest request_;
  WorkThread work_;
};

// Reads the rows one after the other with four buffers that only grow: most rows cost one call.
class RowReader {
 public:
  explicit RowReader(const ProductScan& scan);

  void Read(std::uint64_t index, ScanRow& row);

 private:
  const ProductScan& scan_;
  std::vector<qs_char> path_;
  std::vector<qs_char> name_;
  std::vector<qs_char> title_;
  std::vector<qs_char> location_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_PRODUCT_SCAN_H_
