#ifndef QUASTEL_APPS_QUASTEL_EMPTY_REPORT_H_
#define QUASTEL_APPS_QUASTEL_EMPTY_REPORT_H_

#include <quastel_core.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "console.h"
#include "empty_folders.h"
#include "protected_folders.h"
#include "scan_options.h"

namespace quastel::client {

// What quastel empty found, ready to be written.
struct EmptyReport {
  ScanOptions options;
  std::vector<std::wstring> roots;  // absolute
  std::optional<ProtectedFolders> protection;
  std::string start_time;
  qs_status status = QS_OK;
  std::vector<EmptyFolder> rows;  // by path
  std::uint64_t folders_visited = 0;
  std::uint64_t elapsed_us = 0;
};

void WriteEmptyTable(const EmptyReport& report, OutputStream& out);
void WriteEmptyJson(const EmptyReport& report, OutputStream& out);
// The page that report.options.html names.
void WriteEmptyHtml(const EmptyReport& report);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_EMPTY_REPORT_H_
