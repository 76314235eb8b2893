// What the sweeps over cleans start from: a machine for each round, its scan, and six of its files.

#ifndef QUASTEL_TESTS_CLEAN_FAULT_WORLD_H_
#define QUASTEL_TESTS_CLEAN_FAULT_WORLD_H_

#include <cstdint>
#include <set>
#include <string>

#include "clean/clean_fixture.h"

namespace quastel::clean_tests {

// One for each round: a clean cannot be repeated.
class FaultWorld {
 public:
  explicit FaultWorld(std::uint32_t kind);

  std::uint32_t kind() const { return kind_; }
  std::uint64_t file_size() const { return kind_ == QS_SCAN_KIND_LARGE_FILES ? kLarge : 9; }

  // The findings whose files are not there any more, all of which must have been named.
  Ids IdsOfGone();
  // Only named files have gone, each of them whole and, where a clean takes them along, the folders
  // that they were in; everything else is as it was.
  void CheckDisk(bool with_folders) const;

  static constexpr TextView kReadOnlyFile = u"C:\\t\\s\\read only";

  SimulatedWindows machine;
  ScanHandle scan;
  Ids ids;  // of the six files, in the order of the report

 private:
  std::set<std::string> LinesOfDisk() const;

  const std::uint32_t kind_;
  Paths named_;
  std::set<std::string> before_;
};

}  // namespace quastel::clean_tests

#endif  // QUASTEL_TESTS_CLEAN_FAULT_WORLD_H_
