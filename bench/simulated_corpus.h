// Trees of files on the simulated Windows, the same for the same numbers.

#ifndef QUASTEL_BENCH_SIMULATED_CORPUS_H_
#define QUASTEL_BENCH_SIMULATED_CORPUS_H_

#include <cstdint>

#include "base/text.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::bench {

inline constexpr TextView kCorpusRoot = QS_TEXT("C:\\corpus");

// What the files are like; paths have 60 to 70 units, folders 100 files.
enum class Corpus {
  kSmallFiles,  // up to 64 KiB; a fifth has an equal, one in ten is a near copy, a fifth is larger
                // and alone with its size
  kLargeFiles,  // just above 10 MiB, without content of their own
  kOneSize,     // different contents of one size
  kOneFolder,   // small files, all in one folder
  kEqualFiles,  // copies of one another
};

void AddCorpus(simulated::SimulatedWindows& windows, Corpus corpus, std::uint32_t files);

}  // namespace quastel::bench

#endif  // QUASTEL_BENCH_SIMULATED_CORPUS_H_
