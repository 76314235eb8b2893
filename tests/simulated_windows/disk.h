// The volumes of the simulated machine and the trees on them.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_DISK_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_DISK_H_

#include <cstdint>
#include <map>
#include <vector>

#include "platform/error.h"
#include "simulated_windows/node.h"
#include "simulated_windows/paths.h"

namespace quastel::simulated {

struct Volume {
  NodePtr root;  // its name is "C:" or "\\server\share"
  DriveOptions options;
};

// A node, or the error that the system answers in its place.
struct Found {
  platform::Error error = platform::Error::kNone;
  NodePtr node;
};

// The folder in which a name stands, the name itself, and the node when there is one.
struct Place {
  platform::Error error = platform::Error::kNone;
  NodePtr folder;
  Text name;
  NodePtr node;
};

enum class LastLink { kFollow, kItself };

class Disk {
 public:
  Disk();

  void AddVolume(TextView name, DriveOptions options);
  Volume* FindVolume(TextView name);

  PathParts Parse(TextView path, std::size_t limit = kPathLimit) const {
    return ParsePath(path, current_folder_, limit);
  }
  const Text& current_folder() const { return current_folder_; }
  void set_current_folder(TextView path) { current_folder_ = path; }

  // What stands at the path; links on the way are followed.
  Found Walk(const PathParts& parts, LastLink last) const { return Walk(parts, last, 0); }
  Found Open(TextView path, LastLink last) const { return Walk(Parse(path), last); }
  // Where the last name of the path stands or would stand.
  Place Locate(const PathParts& parts) const;
  // Where a link leads.
  Found Target(const Node& link) const { return Target(link, 0); }

  NodePtr Add(const NodePtr& folder, TextView name, NodeKind kind);
  // Takes the node out of the tree; it lives on while a handle has it.
  void Unlink(Node& node);
  void Move(const NodePtr& node, const NodePtr& folder, TextView name);
  // Why the node cannot be deleted, or kNone.
  static platform::Error ObstacleToDeleting(const Node& node);
  static NodePtr ChildOf(const Node& folder, TextView name);

  // The full path, with the names as they were spelled when they were made.
  Text PathOf(const Node& node) const;
  std::vector<const Volume*> volumes() const;
  std::size_t node_count() const { return node_count_; }
  // Grows with every change to which names are where.
  std::uint64_t generation() const { return generation_; }

 private:
  Found Walk(const PathParts& parts, LastLink last, int depth) const;
  Found Target(const Node& link, int depth) const;

  std::map<Text, Volume> volumes_;  // by folded name
  Text current_folder_;
  std::size_t node_count_ = 0;
  std::uint64_t generation_ = 0;
};

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_DISK_H_
