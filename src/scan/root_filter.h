// The roots that a large-file or duplicate scan walks.

#ifndef QUASTEL_SCAN_ROOT_FILTER_H_
#define QUASTEL_SCAN_ROOT_FILTER_H_

#include <vector>

#include "base/text.h"

namespace quastel {

// The request's roots without those that lie in another one, in the order in which they are to be
// walked: no file is met twice, however the roots overlap.
std::vector<Text> FilterScanRoots(const std::vector<Text>& roots);

}  // namespace quastel

#endif  // QUASTEL_SCAN_ROOT_FILTER_H_
