#ifndef QUASTEL_APPS_QUASTEL_LARGE_REPORT_H_
#define QUASTEL_APPS_QUASTEL_LARGE_REPORT_H_

#include "report.h"

namespace quastel::client {

// Sorts the rows of a large-file scan, whose groups are the categories. --top counts rows.
void ArrangeLargeFiles(Report& report);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_LARGE_REPORT_H_
