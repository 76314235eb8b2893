// The large-file scan.

#ifndef QUASTEL_SCAN_LARGE_FILE_SCAN_H_
#define QUASTEL_SCAN_LARGE_FILE_SCAN_H_

#include "quastel_core.h"
#include "scan/owned_request.h"

namespace quastel {

class ProductScan;

// Appends a row for every large file below the request's roots.
qs_status RunLargeFileScan(ProductScan& scan, const OwnedRequest& request);

}  // namespace quastel

#endif  // QUASTEL_SCAN_LARGE_FILE_SCAN_H_
