#ifndef QUASTEL_APPS_QUASTEL_LIST_REPORT_H_
#define QUASTEL_APPS_QUASTEL_LIST_REPORT_H_

#include <quastel_core.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "console.h"
#include "file_session.h"

namespace quastel::client {

struct ListOptions {
  std::vector<std::wstring> roots;  // as typed
  bool json = false;
  std::wstring html;  // the page to make, absolute; empty for none
  std::optional<std::uint64_t> top;
  std::uint32_t mode = QS_SESSION_ALL_FILES;
  std::vector<std::uint64_t> clean;  // indexes of rows; empty for no clean
  bool yes = false;
};

// What quastel list found and removed, ready to be written.
struct ListReport {
  ListOptions options;
  std::vector<std::wstring> roots;  // absolute
  std::string start_time;
  qs_status status = QS_OK;  // of the scans
  std::uint64_t elapsed_us = 0;
  std::uint64_t files_visited = 0;
  std::uint64_t bytes_visited = 0;
  std::vector<SessionFile> rows;  // of all roots; a row's index is its place

  bool cleaned = false;
  qs_status clean_status = QS_OK;
  std::uint64_t clean_processed = 0;  // files deleted
};

void WriteListTable(const ListReport& report, OutputStream& out);
void WriteListJson(const ListReport& report, OutputStream& out);
// The page that report.options.html names.
void WriteListHtml(const ListReport& report);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_LIST_REPORT_H_
