// The junk scan: a rule document, turned into rows.

#ifndef QUASTEL_JUNK_JUNK_SCAN_H_
#define QUASTEL_JUNK_JUNK_SCAN_H_

#include "scan/owned_request.h"

namespace quastel {
class ProductScan;
}

namespace quastel::junk {

// Loads the request's rule document and reports the files in the folders that it names, grouped by
// its categories.
qs_status RunJunkScan(ProductScan& scan, const OwnedRequest& request);

}  // namespace quastel::junk

#endif  // QUASTEL_JUNK_JUNK_SCAN_H_
