// One scenario on the simulated Windows, for callgrind to count: instruction_scenarios NAME.
//
// Only the work itself is counted, not the making of the tree: the program switches the counting on
// and off. One worker, one seed, and no clock that moves by itself, so that every run counts the
// same.

#include <valgrind/callgrind.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "one_scan.h"
#include "simulated_corpus.h"

namespace {

using quastel::bench::Corpus;
using quastel::bench::OneScan;
using quastel::simulated::SimulatedWindows;

const qs_char* const kRoot = quastel::bench::kCorpusRoot.data();
const qs_char* const kRules = QS_TEXT("C:\\rules.xml");

void CountFile(void* user, const qs_char*, uint64_t, uint64_t, const qs_char*) {
  ++*static_cast<std::uint64_t*>(user);
}

void Walk() {
  std::uint64_t files = 0;
  (void)qs_enumerate_files(kRoot, nullptr, 1, CountFile, &files, nullptr);
}

void Scan(std::uint32_t kind) {
  OneScan scan;
  scan.Run({.kind = kind,
            .root = kRoot,
            .user_home = QS_TEXT("C:\\Users\\someone"),
            .system_root = QS_TEXT("C:\\")});
}

void LargeFiles() {
  Scan(QS_SCAN_KIND_LARGE_FILES);
}

void Duplicates() {
  Scan(QS_SCAN_KIND_DUPLICATES);
}

// One rule for the folder of all files.
void Junk() {
  OneScan scan;
  scan.Run({.kind = QS_SCAN_KIND_JUNK_RULES,
            .user_home = QS_TEXT("C:\\Users\\someone"),
            .system_root = QS_TEXT("C:\\"),
            .rules_path = kRules});
}

// Every file is a finding.
void Clean() {
  OneScan scan;
  scan.Run({.kind = QS_SCAN_KIND_LARGE_FILES, .root = kRoot});
  std::uint64_t ids[1'000];
  for (std::uint64_t i = 0; i < 1'000; ++i) {
    ids[i] = i;
  }
  (void)qs_product_scan_start_clean(scan.get(), ids, 1'000);
}

void Hash() {
  static unsigned char bytes[1'000'000];
  char text[9];
  (void)qs_xxhash32_hex(bytes, sizeof(bytes), text, sizeof(text));
}

struct Scenario {
  const char* name;
  Corpus corpus;
  std::uint32_t files;
  void (*before)();  // not counted
  void (*work)();
};

constexpr Scenario kScenarios[] = {
    {"walk", Corpus::kSmallFiles, 20'000, nullptr, Walk},
    {"large-files-without-findings", Corpus::kSmallFiles, 20'000, nullptr, LargeFiles},
    {"large-files-with-rows", Corpus::kLargeFiles, 5'000, nullptr, LargeFiles},
    {"junk", Corpus::kSmallFiles, 5'000, nullptr, Junk},
    {"duplicates-first", Corpus::kSmallFiles, 5'000, nullptr, Duplicates},
    {"duplicates-second", Corpus::kSmallFiles, 5'000, Duplicates, Duplicates},
    {"duplicates-of-one-size", Corpus::kOneSize, 2'000, nullptr, Duplicates},
    {"duplicates-all-equal", Corpus::kEqualFiles, 2'000, nullptr, Duplicates},
    {"clean", Corpus::kLargeFiles, 1'000, nullptr, Clean},
    {"hash", Corpus::kLargeFiles, 0, nullptr, Hash},
};

}  // namespace

int main(int argc, char** argv) {
  for (const Scenario& scenario : kScenarios) {
    if (argc < 2) {
      std::puts(scenario.name);
    } else if (std::strcmp(argv[1], scenario.name) == 0) {
      SimulatedWindows windows;
      windows.SetProcessorCount(1);
      AddCorpus(windows, scenario.corpus, scenario.files);
      windows.AddFile(kRules,
                      "<Root><Category DisplayName=\"Caches\">"
                      "<Folder Path=\"C:\\corpus\" DisplayName=\"Corpus\"/></Category></Root>");
      if (scenario.before != nullptr) {
        scenario.before();
      }
      CALLGRIND_START_INSTRUMENTATION;
      scenario.work();
      CALLGRIND_STOP_INSTRUMENTATION;
      return 0;
    }
  }
  return argc < 2 ? 0 : 2;
}
