#ifndef QUASTEL_APPS_QUASTEL_CLEAN_REPORT_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_REPORT_H_

#include <quastel_core.h>

#include <cstdint>
#include <string>
#include <vector>

#include "clean_options.h"
#include "clean_plan.h"
#include "clean_run.h"
#include "console.h"

namespace quastel::client {

// What a clean did, ready to be written.
struct CleanReport {
  std::string source;     // the scan's command
  std::wstring saved_as;  // the saved report; empty for a scan of the same call
  CleanOptions options;
  CleanPlan plan;
  std::string start_time;
  qs_status status = QS_OK;
  std::vector<CleanResult> results;
  std::vector<std::wstring> removed_folders;

  bool Cancelled() const { return status == QS_CANCELLED; }
};

struct CleanTotals {
  std::uint64_t selected = 0;
  std::uint64_t removed = 0;  // in a dry run: what would be
  std::uint64_t refused = 0;
  std::uint64_t not_tried = 0;
  std::uint64_t kept = 0;
  std::uint64_t bytes_freed = 0;  // in a dry run: what would be
};

CleanTotals TotalsOf(const CleanReport& report);

// For programs: one object, described in docs/client.md.
void WriteCleanJson(const CleanReport& report, OutputStream& out);

// For people: a line for each file with what became of it, and a summary.
void WriteCleanTable(const CleanReport& report, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_REPORT_H_
