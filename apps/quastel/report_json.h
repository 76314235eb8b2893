#ifndef QUASTEL_APPS_QUASTEL_REPORT_JSON_H_
#define QUASTEL_APPS_QUASTEL_REPORT_JSON_H_

#include "console.h"
#include "report.h"

namespace quastel::client {

// The report for programs: one object, described in docs/client.md. It is written row by row, so
// that a report of any size costs the memory of its rows alone.
void WriteJson(const Report& report, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_REPORT_JSON_H_
