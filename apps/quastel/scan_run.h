#ifndef QUASTEL_APPS_QUASTEL_SCAN_RUN_H_
#define QUASTEL_APPS_QUASTEL_SCAN_RUN_H_

#include <quastel_core.h>

#include "console.h"
#include "scan_request.h"

namespace quastel::client {

class InterruptGuard;
class ProductScan;

// What a running scan is doing, in a word for the progress line.
using StageWord = const char* (*)(const qs_product_scan_status&,
                                  const qs_product_scan_performance&);

// Runs a scan from start to end: draws the progress line, and cancels when the user interrupts.
// Answers the status of the scan.
qs_status RunScan(ProductScan& scan, const ScanRequest& request, StageWord stage,
                  const InterruptGuard& interrupt, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_RUN_H_
