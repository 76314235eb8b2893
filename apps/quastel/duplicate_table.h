#ifndef QUASTEL_APPS_QUASTEL_DUPLICATE_TABLE_H_
#define QUASTEL_APPS_QUASTEL_DUPLICATE_TABLE_H_

#include "console.h"
#include "report.h"

namespace quastel::client {

// The listed groups with their paths, and the totals of all groups.
void WriteDuplicates(const Report& report, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_DUPLICATE_TABLE_H_
