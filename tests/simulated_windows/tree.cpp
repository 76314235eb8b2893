// The part of SimulatedWindows that builds, changes and shows the disks.

#include <cstdio>

#include "simulated_windows/simulated_windows.h"
#include "simulated_windows/state.h"

namespace quastel::simulated {
namespace {

using platform::Attributes;
using platform::Error;

std::string Narrow(TextView text) {
  std::string narrow;
  for (const Char c : text) {
    if (c >= Char{' '} && c < Char{0x7F}) {
      narrow += static_cast<char>(c);
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "{%04x}", static_cast<unsigned>(c));
      narrow += escape;
    }
  }
  return narrow;
}

// The long-path form of a test's path: it stands for exactly these names.
Text Verbatim(TextView path) {
  Text text(path);
  for (Char& c : text) {
    c = c == Char{'/'} ? Char{'\\'} : c;
  }
  if (HasVerbatimPrefix(text)) {
    return text;
  }
  return text.substr(0, 2) == QS_TEXT("\\\\") ? QS_TEXT("\\\\?\\UNC") + text.substr(1)
                                              : QS_TEXT("\\\\?\\") + text;
}

PathParts PartsOf(const Disk& disk, TextView path) {
  PathParts parts = disk.Parse(Verbatim(path));
  if (parts.error != Error::kNone || parts.is_device) {
    Die("not a path for a test: " + Narrow(path));
  }
  parts.trailing_separator = false;
  return parts;
}

NodePtr Existing(const Disk& disk, TextView path) {
  const Found found = disk.Walk(PartsOf(disk, path), LastLink::kItself);
  if (found.error != Error::kNone) {
    Die("there is no " + Narrow(path));
  }
  return found.node;
}

NodePtr EnsureFolder(Disk& disk, const Text& root, TextView rest, TextView path) {
  Volume* volume = disk.FindVolume(root);
  if (volume == nullptr) {
    Die("no such volume: " + Narrow(path));
  }
  NodePtr folder = volume->root;
  while (!rest.empty()) {
    const TextView name = TakeSegment(rest);
    NodePtr next = Disk::ChildOf(*folder, name);
    if (next == nullptr) {
      if (!IsPossibleName(name)) {
        Die("a name that no file can have: " + Narrow(path));
      }
      next = disk.Add(folder, name, NodeKind::kFolder);
      next->attributes = platform::kAttributeDirectory;
      next->last_write = FileOptions{}.last_write;
    } else if (next->kind == NodeKind::kLink) {
      next = disk.Target(*next).node;
    }
    if (next == nullptr || !next->is_folder()) {
      Die("a file or a loose link stands in the way: " + Narrow(path));
    }
    folder = std::move(next);
  }
  return folder;
}

// The folder for a new name, which is answered in `name`.
NodePtr ParentFor(State& s, TextView path, Text& name) QS_REQUIRES(s.mutex) {
  const std::size_t last = path.find_last_of(QS_TEXT("\\/"));
  if (last != TextView::npos && s.last_parent != nullptr &&
      path.substr(0, last) == s.last_parent_path) {
    name = path.substr(last + 1);
  } else {
    const PathParts parts = PartsOf(s.disk, path);
    const std::size_t split = parts.rest.rfind(Char{'\\'});
    name = split == Text::npos ? parts.rest : parts.rest.substr(split + 1);
    const TextView above = split == Text::npos ? TextView() : TextView(parts.rest).substr(0, split);
    s.last_parent = EnsureFolder(s.disk, parts.root, above, path);
    s.last_parent_path = path.substr(0, last);
  }
  if (!IsPossibleName(name)) {
    Die("a name that no file can have: " + Narrow(path));
  }
  return s.last_parent;
}

NodePtr AddNode(State& s, TextView path, NodeKind kind) QS_REQUIRES(s.mutex) {
  Text name;
  const NodePtr folder = ParentFor(s, path, name);
  if (const NodePtr old = Disk::ChildOf(*folder, name); old != nullptr) {
    if (old->is_folder()) {
      Die("there is a folder already: " + Narrow(path));
    }
    s.disk.Unlink(*old);
  }
  return s.disk.Add(folder, name, kind);
}

void SetContentOf(Node& node, std::string_view content) {
  if (node.is_folder() || node.kind == NodeKind::kLink) {
    Die("only a file has content");
  }
  node.Truncate();
  node.size = content.size();
  if (!content.empty()) {
    node.Extras().content = content;
  }
}

std::uint64_t DigestOf(std::string_view bytes) {
  std::uint64_t digest = 0xCBF29CE484222325;  // FNV-1a
  for (const char byte : bytes) {
    digest = (digest ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  }
  return digest;
}

std::string ContentText(const Node& node) {
  char text[40] = "-";
  if (node.kind == NodeKind::kPatternFile) {
    std::snprintf(text, sizeof text, "pattern:%u", node.seed);
  } else if (node.kind == NodeKind::kFile) {
    const std::string_view content = node.extras ? node.extras->content : std::string_view();
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(DigestOf(content)));
  } else if (node.kind == NodeKind::kLink) {
    return "-> " + Narrow(node.extras->target);
  }
  return text;
}

void DescribeTree(const Node& root, std::string& out) {
  std::vector<std::pair<const Node*, std::string>> pending;
  pending.emplace_back(&root, Narrow(root.name));
  while (!pending.empty()) {
    const auto [node, path] = std::move(pending.back());
    pending.pop_back();
    char facts[96];
    std::snprintf(facts, sizeof facts, " %s size=%llu time=%llu attributes=%x ",
                  node->is_folder()               ? "folder"
                  : node->kind == NodeKind::kLink ? "link"
                                                  : "file",
                  static_cast<unsigned long long>(node->size),
                  static_cast<unsigned long long>(node->last_write), node->attributes);
    out += path + facts + ContentText(*node) + "\n";
    if (node->is_folder()) {
      for (auto child = node->children->rbegin(); child != node->children->rend(); ++child) {
        pending.emplace_back(child->get(), path + "\\" + Narrow((*child)->name));
      }
    }
  }
}

}  // namespace

void SimulatedWindows::AddDrive(char letter, DriveOptions options) {
  MutexLock lock(state_->mutex);
  state_->disk.AddVolume(Text{static_cast<Char>(letter), Char{':'}}, options);
}

void SimulatedWindows::AddShare(TextView server_and_share) {
  MutexLock lock(state_->mutex);
  DriveOptions remote;
  remote.type = 4;
  remote.seek_penalty = SeekPenaltyAnswer::kFails;
  state_->disk.AddVolume(server_and_share, remote);
}

void SimulatedWindows::AddFolder(TextView path, FileOptions options) {
  MutexLock lock(state_->mutex);
  const PathParts parts = PartsOf(state_->disk, path);
  const NodePtr folder = EnsureFolder(state_->disk, parts.root, parts.rest, path);
  if (folder->parent != nullptr) {
    folder->attributes = options.attributes | platform::kAttributeDirectory;
    folder->last_write = options.last_write;
  }
}

void SimulatedWindows::AddFile(TextView path, std::string_view content, FileOptions options) {
  MutexLock lock(state_->mutex);
  Node& node = *AddNode(*state_, path, NodeKind::kFile);
  SetContentOf(node, content);
  node.attributes = options.attributes & ~platform::kAttributeNormal;
  node.last_write = options.last_write;
}

void SimulatedWindows::AddSizedFile(TextView path, std::uint64_t size, std::uint32_t seed,
                                    FileOptions options) {
  MutexLock lock(state_->mutex);
  Node& node = *AddNode(*state_, path, NodeKind::kPatternFile);
  node.size = size;
  node.seed = seed;
  node.attributes = options.attributes & ~platform::kAttributeNormal;
  node.last_write = options.last_write;
}

void SimulatedWindows::AddLink(LinkKind kind, TextView path, TextView target) {
  MutexLock lock(state_->mutex);
  Node& node = *AddNode(*state_, path, NodeKind::kLink);
  node.Extras().target = Verbatim(target);
  node.attributes =
      platform::kAttributeReparsePoint |
      (kind == LinkKind::kFileLink ? platform::kAttributeArchive : platform::kAttributeDirectory);
  node.reparse_tag = kind == LinkKind::kJunction ? kTagJunction : kTagSymbolicLink;
  node.last_write = FileOptions{}.last_write;
}

void SimulatedWindows::AddPlaceholder(TextView path, std::uint64_t size) {
  MutexLock lock(state_->mutex);
  Node& node = *AddNode(*state_, path, NodeKind::kPatternFile);
  node.size = size;
  node.attributes =
      platform::kAttributeArchive | platform::kAttributeReparsePoint | platform::kAttributeOffline;
  node.reparse_tag = kTagCloud;
  node.last_write = FileOptions{}.last_write;
}

void SimulatedWindows::Remove(TextView path) {
  MutexLock lock(state_->mutex);
  const NodePtr node = Existing(state_->disk, path);
  if (node->parent == nullptr) {
    Die("a volume cannot be removed");
  }
  state_->disk.Unlink(*node);
  state_->ForgetParent();
}

void SimulatedWindows::SetContent(TextView path, std::string_view content) {
  MutexLock lock(state_->mutex);
  SetContentOf(*Existing(state_->disk, path), content);
}

void SimulatedWindows::SetLastWrite(TextView path, std::uint64_t file_time) {
  MutexLock lock(state_->mutex);
  Existing(state_->disk, path)->last_write = file_time;
}

void SimulatedWindows::SetAttributes(TextView path, Attributes attributes) {
  constexpr Attributes kFixed = platform::kAttributeDirectory | platform::kAttributeReparsePoint;
  MutexLock lock(state_->mutex);
  Node& node = *Existing(state_->disk, path);
  node.attributes =
      (node.attributes & kFixed) | (attributes & ~kFixed & ~platform::kAttributeNormal);
}

void SimulatedWindows::Deny(TextView path, Denial denial) {
  MutexLock lock(state_->mutex);
  Existing(state_->disk, path)->Extras().denial = denial;
}

void SimulatedWindows::Lock(TextView path, std::uint32_t share) {
  MutexLock lock(state_->mutex);
  Existing(state_->disk, path)
      ->Extras()
      .open_modes.push_back({kOtherProcess, platform::kAccessRead, share});
}

void SimulatedWindows::Unlock(TextView path) {
  MutexLock lock(state_->mutex);
  std::erase_if(Existing(state_->disk, path)->Extras().open_modes,
                [](const OpenMode& mode) { return mode.owner == kOtherProcess; });
}

bool SimulatedWindows::Exists(TextView path) const {
  return Find(path).has_value();
}

std::optional<NodeFacts> SimulatedWindows::Find(TextView path) const {
  MutexLock lock(state_->mutex);
  const Found found = state_->disk.Walk(PartsOf(state_->disk, path), LastLink::kItself);
  if (found.error != Error::kNone) {
    return std::nullopt;
  }
  const Node& node = *found.node;
  return NodeFacts{platform::IsDirectory(node.attributes), node.shown_attributes(), node.size,
                   node.last_write, node.name};
}

std::optional<std::string> SimulatedWindows::ContentOf(TextView path) const {
  MutexLock lock(state_->mutex);
  const Found found = state_->disk.Walk(PartsOf(state_->disk, path), LastLink::kFollow);
  if (found.error != Error::kNone || found.node->is_folder()) {
    return std::nullopt;
  }
  const Node& node = *found.node;
  std::string content(node.size, '\0');
  node.Read(0, content.data(), static_cast<std::uint32_t>(content.size()));
  return content;
}

std::vector<Text> SimulatedWindows::NamesIn(TextView folder) const {
  MutexLock lock(state_->mutex);
  const Found found = state_->disk.Walk(PartsOf(state_->disk, folder), LastLink::kFollow);
  std::vector<Text> names;
  if (found.error == Error::kNone && found.node->is_folder()) {
    for (const NodePtr& child : *found.node->children) {
      names.push_back(child->name);
    }
  }
  return names;
}

std::string SimulatedWindows::Describe() const {
  MutexLock lock(state_->mutex);
  std::string text;
  for (const Volume* volume : state_->disk.volumes()) {
    DescribeTree(*volume->root, text);
  }
  return text;
}

std::size_t SimulatedWindows::node_count() const {
  MutexLock lock(state_->mutex);
  return state_->disk.node_count();
}

void SimulatedWindows::SetCurrentFolder(TextView path) {
  MutexLock lock(state_->mutex);
  const NodePtr folder = Existing(state_->disk, path);
  Text text = state_->disk.PathOf(*folder);
  if (folder->parent == nullptr) {
    text += Char{'\\'};
  }
  state_->disk.set_current_folder(text);
}

unsigned char SimulatedWindows::PatternByte(std::uint32_t seed, std::uint64_t offset) {
  if (seed == kZeroSeed) {
    return 0;
  }
  std::uint64_t x = offset * 0x9E3779B97F4A7C15 + (seed + std::uint64_t{1}) * 0xBF58476D1CE4E5B9;
  x ^= x >> 32;
  return static_cast<unsigned char>((x * 0x94D049BB133111EB) >> 56);
}

}  // namespace quastel::simulated
