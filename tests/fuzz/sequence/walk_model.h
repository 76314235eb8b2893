// The walks and the scans that are walks, as nested loops over the disks.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_WALK_MODEL_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_WALK_MODEL_H_

#include <cstdint>
#include <vector>

#include "base/text.h"
#include "fuzz/sequence/disk.h"

namespace quastel::fuzz::sequence {

struct FoundFile {
  Text path;  // as it is reported
  Text name;
  Text key;
  std::uint64_t size = 0;
  std::uint64_t modified = 0;
};

struct WalkRequest {
  Text root;
  Text pattern = u"*";  // "*", "*.log" or a name
  bool recursive = true;
  bool protect = false;
};

std::vector<FoundFile> FilesOf(const Disk& disk, const WalkRequest& request);

// The paths of the direct subfolders that a walk would enter.
std::vector<Text> FoldersOf(const Disk& disk, const Text& root);

// The roots that lie in no other one, the shortest first.
std::vector<Text> OutermostRoots(const std::vector<Text>& roots);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_WALK_MODEL_H_
