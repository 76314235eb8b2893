#ifndef QUASTEL_APPS_QUASTEL_REPORT_JSON_H_
#define QUASTEL_APPS_QUASTEL_REPORT_JSON_H_

#include "console.h"
#include "json.h"
#include "report.h"

namespace quastel::client {

// The report for programs: one object, described in docs/client.md. It is written row by row, so
// that a report of any size costs the memory of its rows alone.
void WriteJson(const Report& report, OutputStream& out);

// Its members that the page for browsers has too.
Json OptionsJson(const Report& report);
Json TotalsJson(const Report& report);
Json PerformanceJson(const Report& report);
Json GroupJson(const ReportGroup& group, std::uint32_t kind);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_REPORT_JSON_H_
