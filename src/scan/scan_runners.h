// The three kinds of product scan, as the scan object sees them: one function each.

#ifndef QUASTEL_SCAN_SCAN_RUNNERS_H_
#define QUASTEL_SCAN_SCAN_RUNNERS_H_

#include <array>

#include "quastel_core.h"

namespace quastel {

class ProductScan;
struct OwnedRequest;

using ScanRunner = qs_status (*)(ProductScan& scan, const OwnedRequest& request);

// Indexed by ScanKind. A kind without a runner ends its scan with QS_UNSUPPORTED.
using ScanRunners = std::array<ScanRunner, 3>;

}  // namespace quastel

#endif  // QUASTEL_SCAN_SCAN_RUNNERS_H_
