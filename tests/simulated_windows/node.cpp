#include "simulated_windows/node.h"

#include <algorithm>
#include <cstring>

namespace quastel::simulated {
namespace {

// One side's access against the other side's sharing.
bool Shares(std::uint32_t access, std::uint32_t share) {
  const auto allowed = [&](std::uint32_t right, std::uint32_t bit) {
    return (access & right) == 0 || (share & bit) != 0;
  };
  return allowed(platform::kAccessRead, platform::kShareRead) &&
         allowed(platform::kAccessWrite, platform::kShareWrite) &&
         allowed(kAccessDelete, platform::kShareDelete);
}

}  // namespace

bool ByName::operator()(const NodePtr& a, const NodePtr& b) const {
  return CompareNames(a->name, b->name) < 0;
}
bool ByName::operator()(const NodePtr& a, TextView b) const {
  return CompareNames(a->name, b) < 0;
}
bool ByName::operator()(TextView a, const NodePtr& b) const {
  return CompareNames(a, b->name) < 0;
}

// Takes a tree apart level by level: paths of 32767 code units are deeper than a stack.
Node::~Node() {
  std::vector<std::unique_ptr<Children>> pending;
  pending.push_back(std::move(children));
  while (!pending.empty()) {
    const std::unique_ptr<Children> level = std::move(pending.back());
    pending.pop_back();
    if (level == nullptr) {
      continue;
    }
    for (const NodePtr& child : *level) {
      if (child.use_count() == 1 && child->is_folder()) {
        pending.push_back(std::move(child->children));
      }
    }
  }
}

NodeExtras& Node::Extras() {
  if (extras == nullptr) {
    extras = std::make_unique<NodeExtras>();
  }
  return *extras;
}

const Denial& Node::denial() const {
  static constexpr Denial kNothing;
  return extras == nullptr ? kNothing : extras->denial;
}

const std::vector<OpenMode>& Node::open_modes() const {
  static const std::vector<OpenMode> nobody;
  return extras == nullptr ? nobody : extras->open_modes;
}

std::uint32_t Node::Read(std::uint64_t offset, void* buffer, std::uint32_t count) const {
  if (offset >= size) {
    return 0;
  }
  const auto available = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, size - offset));
  if (kind == NodeKind::kPatternFile) {
    auto* bytes = static_cast<unsigned char*>(buffer);
    for (std::uint32_t i = 0; i < available; ++i) {
      bytes[i] = SimulatedWindows::PatternByte(seed, offset + i);
    }
  } else if (available > 0) {
    std::memcpy(buffer, extras->content.data() + offset, available);
  }
  return available;
}

void Node::Write(std::uint64_t offset, const void* data, std::uint32_t count) {
  if (count == 0) {
    return;
  }
  std::string& content = Extras().content;
  if (kind == NodeKind::kPatternFile) {
    std::string bytes(size, '\0');
    for (std::uint64_t i = 0; i < size; ++i) {
      bytes[i] = static_cast<char>(SimulatedWindows::PatternByte(seed, i));
    }
    content = std::move(bytes);
    kind = NodeKind::kFile;
  }
  if (content.size() < offset + count) {
    content.resize(offset + count);
  }
  std::memcpy(content.data() + offset, data, count);
  size = content.size();
}

void Node::Truncate() {
  kind = NodeKind::kFile;
  size = 0;
  if (extras != nullptr) {
    extras->content.clear();
  }
}

bool Node::Admits(std::uint32_t access, std::uint32_t share) const {
  const std::vector<OpenMode>& modes = open_modes();
  return access == 0 || std::all_of(modes.begin(), modes.end(), [&](const OpenMode& mode) {
           return mode.access == 0 || (Shares(access, mode.share) && Shares(mode.access, share));
         });
}

}  // namespace quastel::simulated
