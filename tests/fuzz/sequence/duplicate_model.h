// The sets of duplicates that a scan must report: files of equal content.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_DUPLICATE_MODEL_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_DUPLICATE_MODEL_H_

#include <vector>

#include "fuzz/sequence/disk.h"
#include "fuzz/sequence/report.h"
#include "fuzz/sequence/walk_model.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz::sequence {

// `files` in the order of the walk. Those that cannot be read have no duplicate, unless a scan
// knows them already: `all_readable` says whether the answer depends on that. `all_different` is
// false when a file was reached in two ways.
std::vector<Row> DuplicatesAmong(const simulated::SimulatedWindows& machine, const Disk& disk,
                                 const std::vector<FoundFile>& files, bool& all_readable,
                                 bool& all_different);

// Whether the rows of each set have the same content, as far as it can be told.
void DemandEqualContents(const simulated::SimulatedWindows& machine, const std::vector<Row>& rows);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_DUPLICATE_MODEL_H_
