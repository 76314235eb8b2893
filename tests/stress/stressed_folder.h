// The files of one stressed handle on the simulated Windows, and what they have to be.
//
// A file's size never changes and stands in its name, so that any thread can check a row by itself.
// One thread at a time changes the folder; the others only look at the rows of its scans.

#ifndef QUASTEL_TESTS_STRESS_STRESSED_FOLDER_H_
#define QUASTEL_TESTS_STRESS_STRESSED_FOLDER_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include "base/text.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::stress {

struct StressedFile {
  std::uint64_t size = 0;
  std::uint32_t seed = 0;  // equal sizes with equal seeds are equal contents
  std::uint64_t last_write = 0;
  bool present = false;
};

class StressedFolder {
 public:
  using Random = std::mt19937;

  // `sizes` are taken in turn.
  StressedFolder(simulated::SimulatedWindows& machine, Text root,
                 const std::vector<std::uint64_t>& sizes);

  const Text& root() const { return root_; }
  const std::map<Text, StressedFile>& files() const { return files_; }
  std::size_t size() const { return files_.size(); }

  // Makes what is missing, and changes a few of the others.
  void Refresh(Random& random);
  // Changes what a scan has seen: the file has to survive every clean of that scan.
  void Change(const Text& path, Random& random);
  void NoteDeleted(const Text& path);

  // Is the machine's folder what it has to be, file by file?
  void DemandUnharmed() const;

  // What any thread knows of a row: it names a file of this folder by path and name, with its size.
  void DemandRowOfOurs(TextView path, TextView name, std::uint64_t size) const;

  // The size that a name was given.
  static std::uint64_t SizeInName(TextView name);

 private:
  void Put(const Text& path, StressedFile& file, Random& random);

  simulated::SimulatedWindows& machine_;
  const Text root_;
  std::map<Text, StressedFile> files_;
  std::uint64_t next_time_ = 133'000'000'000'000'000;
};

}  // namespace quastel::stress

#endif  // QUASTEL_TESTS_STRESS_STRESSED_FOLDER_H_
