// How the duplicate scan grows with the tree: 10,000 to 1,000,000 simulated files, cold and warm.
//
// One file in five has a copy; the others differ in size from every other file. Memory is what
// operator new handed out above the simulated disk, for each candidate, at its peak.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "allocation_meter.h"
#include "base/text.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace {

using quastel::Text;
using quastel::bench::BytesInUse;
using quastel::bench::PeakBytes;
using quastel::bench::ResetPeak;
using quastel::simulated::Call;
using quastel::simulated::SimulatedWindows;

constexpr int kFilesInFolder = 100;

Text Widen(const std::string& text) {
  return Text(text.begin(), text.end());
}

void BuildTree(SimulatedWindows& windows, int files) {
  for (int i = 0; i < files; ++i) {
    const std::string path = "C:\\tree\\d" + std::to_string(i / kFilesInFolder / 100) + "\\f" +
                             std::to_string(i / kFilesInFolder) + "\\file" + std::to_string(i) +
                             ".bin";
    // The fifth of five neighbours is a copy of the fourth. Copies come in a thousand sizes, so
    // that their number grows and what there is to read for each stays.
    const bool is_copy = i % 5 >= 3;
    const int content = i % 5 == 4 ? i - 1 : i;
    const std::uint64_t size = is_copy ? 5'000 + static_cast<std::uint64_t>(content / 5 % 1'000)
                                       : 1'000'000 + static_cast<std::uint64_t>(i);
    windows.AddSizedFile(Widen(path), size, static_cast<std::uint32_t>(content));
  }
}

struct Outcome {
  double seconds = 0;
  double bytes_per_candidate = 0;
  std::uint64_t opens = 0;
  qs_product_scan_performance figures = {};
};

Outcome Scan(SimulatedWindows& windows) {
  Outcome outcome;
  const std::uint64_t before = BytesInUse();
  const std::uint64_t opens = windows.CallCount(Call::kOpenFile);
  ResetPeak();
  qs_product_scan* scan = nullptr;
  if (qs_product_scan_create(&scan) != QS_OK) {
    std::exit(1);
  }
  const qs_char* roots[] = {QS_TEXT("C:\\tree")};
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_DUPLICATES;
  request.roots = roots;
  request.root_count = 1;
  request.system_root = QS_TEXT("C:\\");
  request.user_home = QS_TEXT("C:\\Users\\someone");
  request.protect_system = 1;
  const auto begin = std::chrono::steady_clock::now();
  (void)qs_product_scan_start(scan, &request);
  outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  outcome.figures.size = sizeof(outcome.figures);
  (void)qs_product_scan_get_performance(scan, &outcome.figures);
  outcome.bytes_per_candidate =
      static_cast<double>(PeakBytes() - before) / static_cast<double>(outcome.figures.candidates);
  (void)qs_product_scan_destroy(scan);
  outcome.opens = windows.CallCount(Call::kOpenFile) - opens;
  return outcome;
}

void Print(int files, const char* name, const Outcome& outcome) {
  std::printf("%9d | %4s | %8.0f | %8llu | %8llu | %8llu | %15.0f\n", files, name,
              outcome.seconds * 1e9 / files,
              static_cast<unsigned long long>(outcome.figures.row_count),
              static_cast<unsigned long long>(outcome.figures.hashed_items),
              static_cast<unsigned long long>(outcome.opens), outcome.bytes_per_candidate);
  std::fflush(stdout);
}

}  // namespace

int main() {
  std::printf("    files | run  |  ns/file |     rows |   hashed |    opens | bytes/candidate\n");
  for (const int files : {10'000, 100'000, 1'000'000}) {
    SimulatedWindows windows;
    BuildTree(windows, files);
    Print(files, "cold", Scan(windows));
    Print(files, "warm", Scan(windows));
  }
  return 0;
}
