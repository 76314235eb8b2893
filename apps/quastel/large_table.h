#ifndef QUASTEL_APPS_QUASTEL_LARGE_TABLE_H_
#define QUASTEL_APPS_QUASTEL_LARGE_TABLE_H_

#include "console.h"
#include "report.h"

namespace quastel::client {

// The listed files, and all of them summed up by category.
void WriteLargeFiles(const Report& report, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_LARGE_TABLE_H_
