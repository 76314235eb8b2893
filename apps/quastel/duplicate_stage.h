#ifndef QUASTEL_APPS_QUASTEL_DUPLICATE_STAGE_H_
#define QUASTEL_APPS_QUASTEL_DUPLICATE_STAGE_H_

#include <quastel_core.h>

namespace quastel::client {

// The stage of a running duplicate scan in a word, for the progress line. The library does not name
// it; but each timer stays 0 until its stage has ended.
const char* DuplicateStage(const qs_product_scan_status& status,
                           const qs_product_scan_performance& performance);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_DUPLICATE_STAGE_H_
