#ifndef QUASTEL_APPS_QUASTEL_REPORT_TABLE_H_
#define QUASTEL_APPS_QUASTEL_REPORT_TABLE_H_

#include <string>

#include "console.h"
#include "report.h"

namespace quastel::client {

// How a command speaks of what it found.
struct ReportWords {
  std::string nothing_found;  // a sentence
};

// The report for people. Scripts read the JSON: the table may change from version to version.
void WriteTable(const Report& report, const ReportWords& words, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_REPORT_TABLE_H_
