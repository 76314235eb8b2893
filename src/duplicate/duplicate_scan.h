// The duplicate scan.

#ifndef QUASTEL_DUPLICATE_DUPLICATE_SCAN_H_
#define QUASTEL_DUPLICATE_DUPLICATE_SCAN_H_

#include "scan/owned_request.h"

namespace quastel {
class ProductScan;
}

namespace quastel::duplicate {

// Appends a row for every file that has a copy of equal content below the request's roots. Narrows
// all files down by what costs least first: size, head, tail, full hash.
qs_status RunDuplicateScan(ProductScan& scan, const OwnedRequest& request);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_DUPLICATE_SCAN_H_
