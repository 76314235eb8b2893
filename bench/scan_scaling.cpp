// How the walk and the large-file scan grow with the tree: 10,000 to 1,000,000 simulated files.
//
// The yardstick is the bare listing loop over the same seam in the same run. Times are the medians
// of several rounds; memory is what operator new handed out above the simulated disk itself.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "allocation_meter.h"
#include "base/text.h"
#include "platform/search.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace {

using quastel::Text;
using quastel::bench::BytesInUse;
using quastel::bench::PeakBytes;
using quastel::bench::ResetPeak;

constexpr int kFilesInFolder = 100;
constexpr int kFoldersInFolder = 100;
constexpr int kEveryLarge = 100;
constexpr std::uint64_t kLargeSize = 10'485'761;

Text Widen(const std::string& text) {
  return Text(text.begin(), text.end());
}

void BuildTree(quastel::simulated::SimulatedWindows& windows, int files) {
  for (int i = 0; i < files; ++i) {
    const int folder = i / kFilesInFolder;
    const std::string path = "C:\\tree\\d" + std::to_string(folder / kFoldersInFolder) + "\\f" +
                             std::to_string(folder) + "\\file" + std::to_string(i) + ".bin";
    windows.AddSizedFile(Widen(path), i % kEveryLarge == 0 ? kLargeSize : 1000);
  }
}

// What a walk cannot do without: one search for each folder, and a place to remember the others.
std::uint64_t BareWalk(const Text& root) {
  std::vector<Text> pending = {root};
  std::uint64_t files = 0;
  while (!pending.empty()) {
    const Text folder = std::move(pending.back());
    pending.pop_back();
    quastel::platform::FindData entry = {};
    const auto search = quastel::platform::FindFirstBasic(
        (folder + QS_TEXT("\\*")).c_str(), quastel::platform::SearchOperation::kNameMatch, entry);
    if (!search.ok()) {
      continue;
    }
    do {
      const quastel::TextView name(entry.name);
      if (!quastel::platform::IsDirectory(entry.attributes)) {
        ++files;
      } else if (name != QS_TEXT(".") && name != QS_TEXT("..")) {
        pending.push_back(folder + QS_TEXT("\\") + Text(name));
      }
    } while (quastel::platform::FindNext(search.value(), entry) == quastel::platform::Error::kNone);
  }
  return files;
}

void CountFile(void* user, const qs_char*, uint64_t, uint64_t, const qs_char*) {
  ++*static_cast<std::uint64_t*>(user);
}

std::uint64_t WalkByLibrary(const Text& root) {
  std::uint64_t files = 0;
  (void)qs_enumerate_files(root.c_str(), nullptr, 1, CountFile, &files, nullptr);
  return files;
}

std::uint64_t ScanByLibrary(const Text& root, std::uint64_t& rows, std::uint64_t& bytes) {
  const std::uint64_t before = BytesInUse();
  ResetPeak();
  qs_product_scan* scan = nullptr;
  (void)qs_product_scan_create(&scan);
  const qs_char* roots[] = {root.c_str()};
  qs_product_scan_request request = {};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = roots;
  request.root_count = 1;
  request.system_root = QS_TEXT("C:\\");
  request.user_home = QS_TEXT("C:\\Users\\someone");
  request.protect_system = 1;
  (void)qs_product_scan_start(scan, &request);
  qs_product_scan_status status = {};
  (void)qs_product_scan_poll(scan, &status);
  (void)qs_product_scan_report_count(scan, &rows);
  bytes = PeakBytes() - before;
  (void)qs_product_scan_destroy(scan);
  return status.files_visited;
}

template <typename Work>
double MedianSeconds(int rounds, Work work) {
  std::vector<double> seconds;
  for (int i = 0; i < rounds; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    seconds.push_back(
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
  }
  std::sort(seconds.begin(), seconds.end());
  return seconds[seconds.size() / 2];
}

void Measure(int files) {
  quastel::simulated::SimulatedWindows windows;
  const std::uint64_t before = BytesInUse();
  BuildTree(windows, files);
  const double disk_bytes = static_cast<double>(BytesInUse() - before) / files;

  const Text root = QS_TEXT("C:\\tree");
  constexpr int kRounds = 5;
  std::uint64_t seen[3] = {};
  std::uint64_t rows = 0;
  std::uint64_t scan_bytes = 0;
  const double bare = MedianSeconds(kRounds, [&] { seen[0] = BareWalk(root); });
  const double walk = MedianSeconds(kRounds, [&] { seen[1] = WalkByLibrary(root); });
  const double scan =
      MedianSeconds(kRounds, [&] { seen[2] = ScanByLibrary(root, rows, scan_bytes); });
  if (seen[0] != seen[1] || seen[1] != seen[2]) {
    std::fprintf(stderr, "the walks disagree: %llu, %llu, %llu files\n",
                 static_cast<unsigned long long>(seen[0]), static_cast<unsigned long long>(seen[1]),
                 static_cast<unsigned long long>(seen[2]));
    std::exit(1);
  }
  const double per_file = 1e9 / files;
  std::printf("%9d | %8.0f | %8.0f | %5.2f | %8.0f | %5.2f | %8llu | %9.1f | %11.0f\n", files,
              bare * per_file, walk * per_file, walk / bare, scan * per_file, scan / bare,
              static_cast<unsigned long long>(rows),
              static_cast<double>(scan_bytes) / static_cast<double>(rows), disk_bytes);
  std::fflush(stdout);
}

}  // namespace

int main() {
  std::printf(
      "    files |  bare ns |  walk ns | ratio |  scan ns | ratio |     rows | bytes/row | "
      "disk B/file\n");
  for (const int files : {10'000, 100'000, 1'000'000}) {
    Measure(files);
  }
  return 0;
}
