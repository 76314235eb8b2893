#ifndef QUASTEL_APPS_QUASTEL_SCAN_RUN_H_
#define QUASTEL_APPS_QUASTEL_SCAN_RUN_H_

#include <string>

#include "console.h"
#include "interrupt.h"
#include "product_scan.h"

namespace quastel::client {

// Runs a scan from start to end: draws the progress line, and cancels when the user interrupts.
// `stage` is what the line says first. Answers the status of the scan.
qs_status RunScan(ProductScan& scan, ScanRequest request, const std::string& stage,
                  const InterruptGuard& interrupt, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_RUN_H_
