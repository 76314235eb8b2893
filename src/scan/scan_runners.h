// What the scan object is handed from outside: one function for each of the three kinds of scan, and
// one for the clean.

#ifndef QUASTEL_SCAN_SCAN_RUNNERS_H_
#define QUASTEL_SCAN_SCAN_RUNNERS_H_

#include <array>

#include "base/text.h"

namespace quastel {

class ProductScan;
struct OwnedRequest;

using ScanRunner = qs_status (*)(ProductScan& scan, const OwnedRequest& request);

// Indexed by ScanKind. A kind without a runner ends its scan with QS_UNSUPPORTED.
using ScanRunners = std::array<ScanRunner, 3>;

// Whether a folder that a clean took a file from is to go as well.
using EmptyFolderTest = bool (*)(const Text& folder);

}  // namespace quastel

#endif  // QUASTEL_SCAN_SCAN_RUNNERS_H_
