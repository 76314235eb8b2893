#ifndef QUASTEL_APPS_QUASTEL_JUNK_TABLE_H_
#define QUASTEL_APPS_QUASTEL_JUNK_TABLE_H_

#include "console.h"
#include "report.h"

namespace quastel::client {

// The categories with their folders, and the files too where they were asked for.
void WriteJunk(const Report& report, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_JUNK_TABLE_H_
