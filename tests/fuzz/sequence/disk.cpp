#include "fuzz/sequence/disk.h"

#include <algorithm>

#include "base/ticks.h"
#include "fuzz/path_model.h"
#include "platform/file.h"

namespace quastel::fuzz::sequence {

bool Node::LooksLike(const Node& other) const {
  return name == other.name && is_folder == other.is_folder && is_link == other.is_link &&
         is_read_only == other.is_read_only && size == other.size && last_write == other.last_write;
}

// Without the system: what is asked of it may be counted, or made to fail.
Text KeyOf(const Text& path) {
  Text rest = model::Lowered(path);
  std::replace(rest.begin(), rest.end(), u'/', u'\\');
  if (rest.starts_with(u"\\\\?\\")) {
    rest.erase(0, 4);
  }
  if (rest.size() < 2 || rest[1] != u':') {
    rest.insert(0, u"c:\\");
  }
  Text key;
  for (std::size_t at = 0; at <= rest.size();) {
    const std::size_t end = std::min(rest.find(u'\\', at), rest.size());
    const Text name = rest.substr(at, end - at);
    at = end + 1;
    if (name == u"..") {
      key.resize(std::min(key.rfind(u'\\'), key.size()));
    } else if (!name.empty() && name != u".") {
      key += (key.empty() ? u"" : u"\\") + name;
    }
  }
  return key;
}

Text ParentKeyOf(const Text& key) {
  const std::size_t last = key.rfind(u'\\');
  return last == Text::npos ? Text() : key.substr(0, last);
}

Disk::Disk(const simulated::SimulatedWindows& machine, const std::map<Text, Hindrance>& hindrances,
           std::int64_t zone_minutes)
    : zone_minutes_(zone_minutes) {
  for (const char16_t* drive : {u"C:", u"D:"}) {
    Add(machine, drive, hindrances);
  }
}

void Disk::Add(const simulated::SimulatedWindows& machine, const Text& path,
               const std::map<Text, Hindrance>& hindrances) {
  // The root of a drive has its separator.
  const auto facts = machine.Find(path.size() == 2 ? path + u"\\" : path);
  if (!facts) {
    return;
  }
  const Text key = model::Lowered(path);
  Node node;
  node.path = path;
  node.name = facts->name;
  node.is_folder = facts->is_folder;
  node.is_link = platform::IsReparsePoint(facts->attributes);
  node.is_read_only = (facts->attributes & platform::kAttributeReadOnly) != 0;
  node.size = facts->size;
  node.last_write = facts->last_write;
  if (const auto found = hindrances.find(key); found != hindrances.end()) {
    node.hindrance = found->second;
  }
  std::vector<Text> names;
  if (node.IsRealFolder()) {
    names = machine.NamesIn(path.size() == 2 ? path + u"\\" : path);
  }
  for (const Text& name : names) {
    node.children.push_back(key + u"\\" + model::Lowered(name));
  }
  nodes_[key] = std::move(node);
  for (const Text& name : names) {
    Add(machine, path + u"\\" + name, hindrances);
  }
}

const Node* Disk::Find(const Text& key) const {
  const auto found = nodes_.find(key);
  return found == nodes_.end() ? nullptr : &found->second;
}

const Node* Disk::Reach(const Text& key) const {
  for (Text above = ParentKeyOf(key); !above.empty(); above = ParentKeyOf(above)) {
    const Node* const folder = Find(above);
    if (folder == nullptr || !folder->IsRealFolder()) {
      return nullptr;
    }
  }
  return Find(key);
}

// The node of a path whose folders may be links.
const Node* Disk::Follow(const Text& key, int depth) const {
  const Text parent = ParentKeyOf(key);
  if (parent.empty()) {
    return Find(key);
  }
  const Node* folder = Follow(parent, depth);
  while (folder != nullptr && folder->is_link && depth > 0) {
    const Text& target = folder->hindrance.link_target;
    folder = target.empty() ? nullptr : Follow(target, --depth);
  }
  if (folder == nullptr || !folder->IsRealFolder()) {
    return nullptr;
  }
  return Find(KeyOf(folder->path) + u"\\" + key.substr(parent.size() + 1));
}

const Node* Disk::WalkRoot(const Text& key) const {
  constexpr int kMostLinks = 8;  // the tree has no longer way that leads anywhere
  const Node* const node = Follow(key, kMostLinks);
  return node != nullptr && node->IsRealFolder() ? node : nullptr;
}

std::uint64_t Disk::TicksOf(const Node& node) const {
  return node.last_write + static_cast<std::uint64_t>(zone_minutes_ * 600'000'000) + kTicksAt1601;
}

bool Disk::MatchesSnapshot(const Text& key, std::int64_t size, std::uint64_t ticks) const {
  const Node* const node = Reach(key);
  return node != nullptr && node->IsPlainFile() && size >= 0 &&
         node->size == static_cast<std::uint64_t>(size) && TicksOf(*node) == ticks;
}

bool Disk::CanRecycle(const Text& key) const {
  const Node* const node = Reach(key);
  if (node == nullptr || node->is_link || ParentKeyOf(key).empty()) {
    return false;
  }
  if (node->is_folder) {
    return CanDelete(key);
  }
  const Hindrance& hindrance = node->hindrance;
  return !hindrance.denial.deleting &&
         (!hindrance.lock_share || (*hindrance.lock_share & platform::kShareDelete) != 0);
}

bool Disk::CanDelete(const Text& key) const {
  const Node* const node = Reach(key);
  if (node == nullptr || node->is_link || node->is_read_only || ParentKeyOf(key).empty() ||
      !node->children.empty()) {
    return false;
  }
  const Hindrance& hindrance = node->hindrance;
  return !hindrance.denial.deleting &&
         (!hindrance.lock_share || (*hindrance.lock_share & platform::kShareDelete) != 0);
}

bool Disk::HasFilesBelow(const Node& folder) const {
  if (folder.hindrance.denial.listing) {
    return false;
  }
  return std::any_of(folder.children.begin(), folder.children.end(), [this](const Text& key) {
    const Node& child = *Find(key);
    return !child.is_folder || (!child.is_link && HasFilesBelow(child));
  });
}

bool Disk::IsOfferedAsEmpty(const Text& path) const {
  Text trimmed = path;
  while (!trimmed.empty() && model::IsSlash(trimmed.back())) {
    trimmed.pop_back();
  }
  if (path.empty() || model::Lowered(model::Leaf(trimmed)) == u"downloads") {
    return false;
  }
  const Node* const folder = WalkRoot(KeyOf(path));
  return folder != nullptr && !HasFilesBelow(*folder);
}

bool Disk::CanRead(const Text& key) const {
  const Node* const node = Reach(key);
  return node != nullptr && node->IsPlainFile() && !node->hindrance.denial.opening &&
         (!node->hindrance.lock_share || (*node->hindrance.lock_share & platform::kShareRead) != 0);
}

void Disk::Remove(const Text& key) {
  const auto parent = nodes_.find(ParentKeyOf(key));
  std::erase(parent->second.children, key);
  nodes_.erase(key);
}

}  // namespace quastel::fuzz::sequence
