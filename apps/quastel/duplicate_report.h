#ifndef QUASTEL_APPS_QUASTEL_DUPLICATE_REPORT_H_
#define QUASTEL_APPS_QUASTEL_DUPLICATE_REPORT_H_

#include <cstdint>

#include "report.h"

namespace quastel::client {

// Sorts the groups of a duplicate scan, and the rows in their order, by path within a group. --top
// counts groups, and --min-size hides groups of smaller files; hidden ones stand behind the others.
void ArrangeDuplicates(Report& report);

// What removing all but one file of each group would free, hidden groups included.
std::uint64_t TotalReclaimable(const Report& report);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_DUPLICATE_REPORT_H_
