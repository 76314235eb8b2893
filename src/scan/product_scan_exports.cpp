// The exported product scan. This file alone knows which runner belongs to which kind, and what a
// clean takes for an empty folder.

#include <new>

#include "duplicate/duplicate_scan.h"
#include "frame/boundary.h"
#include "junk/empty_directory.h"
#include "junk/junk_scan.h"
#include "scan/large_file_scan.h"
#include "scan/product_scan.h"

using quastel::StatusBoundary;

// What stands behind the opaque handle.
struct qs_product_scan final : quastel::ProductScan {
  using ProductScan::ProductScan;
};

namespace {

constexpr quastel::ScanRunners kRunners = {
    quastel::junk::RunJunkScan,
    quastel::RunLargeFileScan,
    quastel::duplicate::RunDuplicateScan,
};

}  // namespace

qs_status qs_product_scan_create(qs_product_scan** scan_out) {
  if (scan_out == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    *scan_out = new qs_product_scan(kRunners, quastel::IsEligibleEmptyDirectory);
    return QS_OK;
  });
}

qs_status qs_product_scan_destroy(qs_product_scan* scan) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&]() -> qs_status {
    if (!scan->TryRetire()) {
      return QS_BUSY;
    }
    delete scan;
    return QS_OK;
  });
}

qs_status qs_product_scan_start(qs_product_scan* scan, const qs_product_scan_request* request) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return scan->Start(request); });
}

qs_status qs_product_scan_cancel(qs_product_scan* scan) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    scan->Cancel();
    return QS_OK;
  });
}

qs_status qs_product_scan_poll(qs_product_scan* scan, qs_product_scan_status* status) {
  if (scan == nullptr || status == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    scan->Poll(*status);
    return QS_OK;
  });
}

qs_status qs_product_scan_current_path(qs_product_scan* scan, qs_char* out, uint64_t capacity,
                                       uint64_t* needed) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return scan->CopyCurrentPath({out, capacity, needed}); });
}

qs_status qs_product_scan_current_group(qs_product_scan* scan, qs_char* out, uint64_t capacity,
                                        uint64_t* needed) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return scan->CopyCurrentGroup({out, capacity, needed}); });
}

qs_status qs_product_scan_get_performance(qs_product_scan* scan,
                                          qs_product_scan_performance* performance) {
  if (scan == nullptr || performance == nullptr || performance->size < sizeof(*performance)) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    scan->CopyPerformance(*performance);
    return QS_OK;
  });
}

qs_status qs_product_scan_report_count(qs_product_scan* scan, uint64_t* count) {
  if (scan == nullptr || count == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    *count = scan->RowCount();
    return QS_OK;
  });
}

qs_status qs_product_scan_report_row(qs_product_scan* scan, uint64_t index, qs_char* path,
                                     uint64_t path_capacity, uint64_t* path_needed, qs_char* name,
                                     uint64_t name_capacity, uint64_t* name_needed, qs_char* title,
                                     uint64_t title_capacity, uint64_t* title_needed,
                                     qs_char* location, uint64_t location_capacity,
                                     uint64_t* location_needed, qs_product_scan_row* row) {
  if (scan == nullptr || row == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  const quastel::RowTextTargets texts = {
      .path = {path, path_capacity, path_needed},
      .name = {name, name_capacity, name_needed},
      .title = {title, title_capacity, title_needed},
      .location = {location, location_capacity, location_needed},
  };
  return StatusBoundary([&] { return scan->CopyRow(index, texts, *row); });
}

qs_status qs_product_scan_report_row_parent_group_id(qs_product_scan* scan, uint64_t index,
                                                     uint64_t* parent_group_id) {
  if (scan == nullptr || parent_group_id == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return scan->CopyParentGroupId(index, *parent_group_id); });
}

qs_status qs_product_scan_start_clean(qs_product_scan* scan, const uint64_t* item_ids,
                                      uint64_t count) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] { return scan->StartClean(item_ids, count); });
}

qs_status qs_product_scan_cancel_clean(qs_product_scan* scan) {
  if (scan == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    scan->CancelClean();
    return QS_OK;
  });
}

qs_status qs_product_scan_poll_clean(qs_product_scan* scan, qs_product_clean_status* status) {
  if (scan == nullptr || status == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    scan->PollClean(*status);
    return QS_OK;
  });
}

qs_status qs_product_scan_poll_clean_detailed(qs_product_scan* scan,
                                              qs_product_clean_detail* detail) {
  if (scan == nullptr || detail == nullptr || detail->size < sizeof(*detail)) {
    return QS_INVALID_ARGUMENT;
  }
  return StatusBoundary([&] {
    scan->PollClean(*detail);
    return QS_OK;
  });
}
