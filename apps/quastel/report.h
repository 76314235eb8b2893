#ifndef QUASTEL_APPS_QUASTEL_REPORT_H_
#define QUASTEL_APPS_QUASTEL_REPORT_H_

#include <quastel_core.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "product_scan.h"
#include "protected_folders.h"
#include "scan_options.h"

namespace quastel::client {

struct ReportGroup {
  std::uint64_t id = 0;
  std::wstring title;
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
};

// What a finished scan found, ready to be written. Paths are tidy but keep their extended-length
// prefix, so that they can be used as they are.
struct Report {
  std::string command;
  ScanOptions options;
  std::vector<std::wstring> roots;  // absolute
  std::optional<ProtectedFolders> protection;
  std::string start_time;
  qs_status status = QS_OK;

  std::vector<ScanRow> rows;        // all of them, in the order of options.sort
  std::size_t listed = 0;           // how many of them options.top lets through
  std::vector<ReportGroup> groups;  // by id; counts and sizes of all rows
  qs_product_scan_status counters = {};
  qs_product_scan_performance performance = {};

  bool Cancelled() const { return status == QS_CANCELLED; }
};

// Reads the rows and numbers of `scan` into `report`, whose options must be set, sorts and groups.
void CollectRows(const ProductScan& scan, Report& report);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_REPORT_H_
