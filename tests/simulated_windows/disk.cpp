#include "simulated_windows/disk.h"

#include <algorithm>

namespace quastel::simulated {
namespace {

using platform::Error;

// The system gives up on chains of links that are longer.
constexpr int kMostLinks = 63;
constexpr Error kCannotResolveName{1921};
constexpr Error kBadNetworkName{67};

Text Folded(TextView name) {
  Text folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), FoldName);
  return folded;
}

std::size_t CountOf(const Node& top) {
  std::size_t count = 0;
  std::vector<const Node*> pending{&top};
  while (!pending.empty()) {
    const Node& node = *pending.back();
    pending.pop_back();
    ++count;
    if (node.is_folder()) {
      for (const NodePtr& child : *node.children) {
        pending.push_back(child.get());
      }
    }
  }
  return count;
}

}  // namespace

Disk::Disk() : current_folder_(QS_TEXT("C:\\")) {}

void Disk::AddVolume(TextView name, DriveOptions options) {
  Volume& volume = volumes_[Folded(name)];
  volume.options = options;
  if (volume.root == nullptr) {
    volume.root = std::make_shared<Node>();
    volume.root->name = name;
    volume.root->kind = NodeKind::kFolder;
    volume.root->attributes =
        platform::kAttributeDirectory | platform::kAttributeHidden | platform::kAttributeSystem;
    volume.root->children = std::make_unique<Children>();
  }
}

Volume* Disk::FindVolume(TextView name) {
  const auto found = volumes_.find(Folded(name));
  return found == volumes_.end() ? nullptr : &found->second;
}

NodePtr Disk::ChildOf(const Node& folder, TextView name) {
  const auto found = folder.children->find(name);
  return found == folder.children->end() ? nullptr : *found;
}

Found Disk::Walk(const PathParts& parts, LastLink last, int depth) const {
  if (parts.error != Error::kNone) {
    return {parts.error, nullptr};
  }
  const auto volume = volumes_.find(Folded(parts.root));
  if (volume == volumes_.end()) {
    const bool share = parts.root[0] == Char{'\\'};
    return {share ? kBadNetworkName : Error::kPathNotFound, nullptr};
  }
  NodePtr node = volume->second.root;
  TextView rest = parts.rest;
  while (!rest.empty()) {
    const TextView name = TakeSegment(rest);
    if (!IsPossibleName(name)) {
      return {Error::kInvalidName, nullptr};
    }
    if (node->kind == NodeKind::kLink) {
      Found target = Target(*node, depth);
      if (target.error != Error::kNone) {
        return {Error::kPathNotFound, nullptr};
      }
      node = std::move(target.node);
    }
    if (!node->is_folder()) {
      return {Error::kPathNotFound, nullptr};
    }
    node = ChildOf(*node, name);
    if (node == nullptr) {
      return {rest.empty() ? Error::kFileNotFound : Error::kPathNotFound, nullptr};
    }
  }
  if (parts.trailing_separator && !platform::IsDirectory(node->attributes)) {
    return {Error::kInvalidName, nullptr};
  }
  if (node->kind == NodeKind::kLink && last == LastLink::kFollow) {
    return Target(*node, depth);
  }
  return {Error::kNone, node};
}

Found Disk::Target(const Node& link, int depth) const {
  if (depth >= kMostLinks) {
    return {kCannotResolveName, nullptr};
  }
  // The file system reads a target itself; the limit for the paths of programs is not its own.
  return Walk(ParsePath(link.extras->target, current_folder_, kLongPathLimit), LastLink::kFollow,
              depth + 1);
}

Place Disk::Locate(const PathParts& parts) const {
  Place place;
  if (parts.error != Error::kNone || parts.is_device) {
    place.error = parts.error != Error::kNone ? parts.error : Error::kInvalidFunction;
    return place;
  }
  PathParts parent = parts;
  const std::size_t last = parts.rest.rfind(Char{'\\'});
  place.name = last == Text::npos ? parts.rest : parts.rest.substr(last + 1);
  parent.rest = last == Text::npos ? Text() : parts.rest.substr(0, last);
  parent.trailing_separator = false;
  Found folder = Walk(parent, LastLink::kFollow);
  if (folder.error == Error::kFileNotFound) {
    folder.error = Error::kPathNotFound;
  } else if (folder.error == Error::kNone && !folder.node->is_folder()) {
    folder.error = Error::kDirectory;
  }
  place.error = folder.error;
  place.folder = std::move(folder.node);
  if (place.error == Error::kNone && !place.name.empty()) {
    place.node = ChildOf(*place.folder, place.name);
  }
  return place;
}

NodePtr Disk::Add(const NodePtr& folder, TextView name, NodeKind kind) {
  NodePtr node = std::make_shared<Node>();
  node->name = name;
  node->name.shrink_to_fit();
  node->parent = folder.get();
  node->kind = kind;
  if (kind == NodeKind::kFolder) {
    node->children = std::make_unique<Children>();
  }
  // A tree is mostly built in the order of its names.
  folder->children->insert(folder->children->end(), node);
  ++node_count_;
  ++generation_;
  return node;
}

void Disk::Unlink(Node& node) {
  node_count_ -= CountOf(node);
  ++generation_;
  Children& siblings = *node.parent->children;
  node.parent = nullptr;
  siblings.erase(siblings.find(TextView(node.name)));
}

Error Disk::ObstacleToDeleting(const Node& node) {
  if (node.denial().deleting || node.parent == nullptr) {
    return Error::kAccessDenied;
  }
  if (!node.Admits(kAccessDelete, platform::kShareAll)) {
    return Error::kSharingViolation;
  }
  const bool read_only = (node.attributes & platform::kAttributeReadOnly) != 0;
  return read_only ? Error::kAccessDenied : Error::kNone;
}

void Disk::Move(const NodePtr& node, const NodePtr& folder, TextView name) {
  ++generation_;
  Children& siblings = *node->parent->children;
  siblings.erase(siblings.find(TextView(node->name)));
  node->name = name;
  node->parent = folder.get();
  folder->children->insert(node);
}

Text Disk::PathOf(const Node& node) const {
  if (node.parent == nullptr) {
    return node.name;
  }
  Text path = PathOf(*node.parent);
  path += Char{'\\'};
  path += node.name;
  return path;
}

std::vector<const Volume*> Disk::volumes() const {
  std::vector<const Volume*> all;
  for (const auto& entry : volumes_) {
    all.push_back(&entry.second);
  }
  return all;
}

}  // namespace quastel::simulated
