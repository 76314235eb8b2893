// The disks of the machine as they were at one moment, and what the library can and cannot do to
// them. Written for clarity alone: it is what the library's own answers are compared with.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_DISK_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_DISK_H_

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "base/text.h"
#include "platform/attributes.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz::sequence {

// What the machine cannot be asked about: the world remembers it.
struct Hindrance {
  std::optional<std::uint32_t> lock_share;  // another process has it open
  simulated::Denial denial;
  Text link_target;  // of a link to a folder, as a key
};

struct Node {
  Text path;  // as it was spelled when it was made
  Text name;
  bool is_folder = false;  // a link to a folder is one as well
  bool is_link = false;    // a reparse point of any kind
  bool is_read_only = false;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;  // FILETIME
  Hindrance hindrance;
  std::vector<Text> children;  // keys, in the order of a listing

  bool IsRealFolder() const { return is_folder && !is_link; }
  bool IsPlainFile() const { return !is_folder && !is_link; }
  bool LooksLike(const Node& other) const;
};

// The key of a path: absolute, lower case, "c:" for the root of a drive.
Text KeyOf(const Text& path);
Text ParentKeyOf(const Text& key);

class Disk {
 public:
  Disk() = default;
  Disk(const simulated::SimulatedWindows& machine, const std::map<Text, Hindrance>& hindrances,
       std::int64_t zone_minutes);

  const std::map<Text, Node>& nodes() const { return nodes_; }
  const Node* Find(const Text& key) const;

  // As a deletion sees it: the node itself, and no link anywhere above it.
  const Node* Reach(const Text& key) const;
  // As a walk sees the folder where it begins: no link itself, but links above it are followed.
  const Node* WalkRoot(const Text& key) const;

  // The last-write time as it is reported.
  std::uint64_t TicksOf(const Node& node) const;

  bool MatchesSnapshot(const Text& key, std::int64_t size, std::uint64_t ticks) const;
  bool CanDelete(const Text& key) const;   // a file, or an empty folder
  bool CanRecycle(const Text& key) const;  // the shell takes what is read-only as well
  bool IsOfferedAsEmpty(const Text& path) const;

  // Of what can be read from the file: nothing if it cannot be opened.
  bool CanRead(const Text& key) const;

  void Remove(const Text& key);

 private:
  void Add(const simulated::SimulatedWindows& machine, const Text& path,
           const std::map<Text, Hindrance>& hindrances);
  bool HasFilesBelow(const Node& folder) const;
  const Node* Follow(const Text& key, int depth) const;

  std::map<Text, Node> nodes_;
  std::int64_t zone_minutes_ = 0;
};

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_DISK_H_
