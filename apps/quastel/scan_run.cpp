#include "scan_run.h"

#include <chrono>
#include <utility>

#include "progress_line.h"

namespace quastel::client {
namespace {

// How often the line is drawn, and how long an interrupt may wait for an answer.
constexpr std::chrono::milliseconds kPollInterval(100);

void ReadProgress(const ProductScan& scan, Progress& progress) {
  const qs_product_scan_status status = scan.Poll();
  progress.files = status.files_visited;
  progress.bytes = status.bytes_visited;
  progress.elapsed_us = scan.Performance().elapsed_us;
  scan.ReadCurrentPath(progress.path);
}

}  // namespace

qs_status RunScan(ProductScan& scan, ScanRequest request, const std::string& stage,
                  const InterruptGuard& interrupt, Console& console) {
  ProgressLine line(console.err);
  Progress progress;
  scan.Start(std::move(request));
  while (!scan.WaitFor(kPollInterval)) {
    const bool cancelling = interrupt.Requested();
    if (cancelling) {
      scan.Cancel();
    }
    if (line.IsShown()) {
      progress.stage = cancelling ? "Cancelling" : stage;
      ReadProgress(scan, progress);
      line.Draw(progress);
    }
  }
  line.Erase();
  return scan.Finish();
}

}  // namespace quastel::client
