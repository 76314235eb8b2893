#include "scan_run.h"

#include "interrupt.h"
#include "product_scan.h"
#include "progress_line.h"

namespace quastel::client {
namespace {

void ReadProgress(const ProductScan& scan, StageWord stage, Progress& progress) {
  const qs_product_scan_status status = scan.Poll();
  const qs_product_scan_performance performance = scan.Performance();
  progress.stage = stage(status, performance);
  progress.files = status.files_visited;
  progress.bytes = status.bytes_visited;
  progress.elapsed_us = performance.elapsed_us;
  scan.ReadCurrentPath(progress.path);
}

}  // namespace

qs_status RunScan(ProductScan& scan, const ScanRequest& request, StageWord stage,
                  const InterruptGuard& interrupt, Console& console) {
  ProgressLine line(console.err);
  Progress progress;
  scan.Start(request);
  while (!scan.WaitFor(kPollInterval)) {
    const bool cancelling = interrupt.Requested();
    if (cancelling) {
      scan.Cancel();
    }
    if (line.IsShown()) {
      ReadProgress(scan, stage, progress);
      if (cancelling) {
        progress.stage = kCancellingStage;
      }
      line.Draw(progress);
    }
  }
  line.Erase();
  return scan.Finish();
}

}  // namespace quastel::client
