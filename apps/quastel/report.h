#ifndef QUASTEL_APPS_QUASTEL_REPORT_H_
#define QUASTEL_APPS_QUASTEL_REPORT_H_

#include <quastel_core.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "scan_options.h"
#include "scan_request.h"
#include "scan_row.h"

namespace quastel::client {

struct ReportGroup {
  std::uint64_t id = 0;
  std::wstring title;
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
  std::uint64_t file_size = 0;  // of the last file; duplicates all have the same

  // Junk only, where groups lie in groups and count what is in those below them too.
  std::uint64_t parent_id = 0;
  std::size_t depth = 0;        // 0 for a category in no other one
  std::wstring path;            // of a folder's group
  std::uint64_t own_count = 0;  // of the files that are in no group below
  std::uint64_t own_bytes = 0;
  std::wstring own_location;  // their folder; empty when there are several
  std::uint64_t selected_count = 0;
  std::uint64_t selected_bytes = 0;
  bool IsCategory() const { return path.empty(); }

  // What removing all but one of the files would free, when they are copies of each other.
  std::uint64_t Reclaimable() const { return bytes - file_size; }
};

// What a finished scan found, ready to be written. Paths are tidy but keep their extended-length
// prefix, so that they can be used as they are.
struct Report {
  std::string command;
  ScanOptions options;
  ScanRequest request;
  std::string start_time;
  qs_status status = QS_OK;

  // All of them, in the order of options.sort; the first `listed` ones are shown.
  std::vector<ScanRow> rows;
  std::size_t listed = 0;
  std::vector<ReportGroup> groups;
  std::size_t listed_groups = 0;

  qs_product_scan_status counters = {};
  qs_product_scan_performance performance = {};

  bool Cancelled() const { return status == QS_CANCELLED; }
};

class ProductScan;

// Reads the rows and numbers of `scan` into `report`, in the order of the library.
void ReadRows(const ProductScan& scan, Report& report);

// The groups of the rows, by id.
std::vector<ReportGroup> GroupRows(const std::vector<ScanRow>& rows);

// How many of `count` entries --top lets through.
std::size_t WithinTop(std::size_t count, const ScanOptions& options);

// The library reports sizes as signed numbers; totals count a negative one as nothing.
std::uint64_t PositiveSize(const ScanRow& row);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_REPORT_H_
