// How the cost of a scan grows with the tree, on the simulated Windows: scan_growth [FILES].
//
// Prints one line of JSON for each work and number of files, up to FILES (1,000,000 when not said):
// processor time of this process for each file, the simulated system included, the most memory that
// operator new had handed out above the disk itself, and how many files a duplicate scan compared.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <set>

#include "allocation_meter.h"
#include "one_scan.h"
#include "simulated_corpus.h"

namespace {

using quastel::bench::Corpus;
using quastel::bench::ScanOptions;
using quastel::simulated::SimulatedWindows;

// A second scan of more files reads the others again, so its cost jumps there.
constexpr std::uint32_t kFilesInCache = 200'000;

const qs_char* const kRoot = quastel::bench::kCorpusRoot.data();

struct Measured {
  double nanoseconds = 0;
  std::uint64_t bytes = 0;
  std::uint64_t compared = 0;  // files that share their size: only these cost more than the walk
};

template <typename Work>
Measured Measure(Work work) {
  const std::uint64_t before = quastel::bench::BytesInUse();
  quastel::bench::ResetPeak();
  const std::clock_t begin = std::clock();
  const std::uint64_t compared = work();
  const auto ticks = static_cast<double>(std::clock() - begin);
  return {ticks * 1e9 / CLOCKS_PER_SEC, quastel::bench::PeakBytes() - before, compared};
}

void Print(const char* work, std::uint32_t files, const Measured& measured) {
  std::printf(
      "{\"work\": \"%s\", \"files\": %u, \"ns_per_file\": %.1f, \"peak_bytes\": %llu, "
      "\"compared\": %llu}\n",
      work, files, measured.nanoseconds / files, static_cast<unsigned long long>(measured.bytes),
      static_cast<unsigned long long>(measured.compared));
  std::fflush(stdout);
}

void CountFile(void* user, const qs_char*, uint64_t, uint64_t, const qs_char*) {
  ++*static_cast<std::uint32_t*>(user);
}

std::uint64_t Walk(std::uint32_t files) {
  std::uint32_t seen = 0;
  (void)qs_enumerate_files(kRoot, nullptr, 1, CountFile, &seen, nullptr);
  if (seen != files) {
    std::fprintf(stderr, "%u of %u files were seen\n", seen, files);
    std::exit(1);
  }
  return 0;
}

std::uint64_t Scan(std::uint32_t kind) {
  quastel::bench::OneScan scan;
  scan.Run({.kind = kind,
            .root = kRoot,
            .user_home = QS_TEXT("C:\\Users\\someone"),
            .system_root = QS_TEXT("C:\\")});
  return scan.Figures().sampled_items;
}

void MeasureSmallFiles(std::uint32_t files) {
  SimulatedWindows windows;
  AddCorpus(windows, Corpus::kSmallFiles, files);
  Print("walk", files, Measure([files] { return Walk(files); }));
  Print("large-file scan without findings", files,
        Measure([] { return Scan(QS_SCAN_KIND_LARGE_FILES); }));
  Print("first duplicate scan", files, Measure([] { return Scan(QS_SCAN_KIND_DUPLICATES); }));
  Print("second duplicate scan", files, Measure([] { return Scan(QS_SCAN_KIND_DUPLICATES); }));
}

void MeasureShape(const char* name, Corpus corpus, std::uint32_t files) {
  for (const std::uint32_t some : {files / 10, files}) {
    SimulatedWindows windows;
    AddCorpus(windows, corpus, some);
    Print(name, some, Measure([] { return Scan(QS_SCAN_KIND_DUPLICATES); }));
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint32_t most = argc > 1 ? static_cast<std::uint32_t>(std::atoi(argv[1])) : 1'000'000;
  std::set<std::uint32_t> sizes = {most / 100, most / 10, most};
  if (most > kFilesInCache) {
    sizes.insert(kFilesInCache);
  }
  for (const std::uint32_t files : sizes) {
    MeasureSmallFiles(files);
  }
  MeasureShape("files of one size", Corpus::kOneSize, 20'000);
  MeasureShape("one folder", Corpus::kOneFolder, 100'000);
  MeasureShape("equal files", Corpus::kEqualFiles, 50'000);
  return 0;
}
