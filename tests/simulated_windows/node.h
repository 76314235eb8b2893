// One file, folder or link of the simulated disks.
//
// Trees of a million files are built from these, so whatever most files do not have stands apart.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_NODE_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_NODE_H_

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/text.h"
#include "platform/attributes.h"
#include "platform/file.h"
#include "simulated_windows/names.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {

struct Node;
using NodePtr = std::shared_ptr<Node>;

struct ByName {
  using is_transparent = void;
  bool operator()(const NodePtr& a, const NodePtr& b) const;
  bool operator()(const NodePtr& a, TextView b) const;
  bool operator()(TextView a, const NodePtr& b) const;
};

using Children = std::set<NodePtr, ByName>;

// One way in which a file is open at the moment.
struct OpenMode {
  platform::RawHandle owner;  // kOtherProcess for a Lock
  std::uint32_t access;       // 0 when only facts are asked: such a handle is in nobody's way
  std::uint32_t share;
};
inline constexpr platform::RawHandle kOtherProcess = 0;

enum class NodeKind : std::uint8_t { kFile, kPatternFile, kFolder, kLink };

struct NodeExtras {
  std::string content;  // of a plain file
  Text target;          // of a link
  Denial denial;
  std::vector<OpenMode> open_modes;
};

struct Node {
  Node() = default;
  ~Node();
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  Text name;
  Node* parent = nullptr;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;
  platform::Attributes attributes = 0;
  std::uint32_t seed = 0;         // of a pattern file
  std::uint32_t reparse_tag = 0;  // 0 without reparse point
  NodeKind kind = NodeKind::kFile;
  std::unique_ptr<NodeExtras> extras;
  std::unique_ptr<Children> children;  // of a folder

  bool is_folder() const { return kind == NodeKind::kFolder; }
  // What the system shows: there is no file without any attribute.
  platform::Attributes shown_attributes() const {
    return attributes == 0 ? platform::kAttributeNormal : attributes;
  }
  NodeExtras& Extras();
  const Denial& denial() const;
  const std::vector<OpenMode>& open_modes() const;
  // Bytes of the content; answers how many there were.
  std::uint32_t Read(std::uint64_t offset, void* buffer, std::uint32_t count) const;
  void Write(std::uint64_t offset, const void* data, std::uint32_t count);
  void Truncate();
  // Would an open with this access and sharing get along with those that exist?
  bool Admits(std::uint32_t access, std::uint32_t share) const;
};

inline constexpr std::uint32_t kAccessDelete = 0x00010000;

inline constexpr std::uint32_t kTagJunction = 0xA0000003;
inline constexpr std::uint32_t kTagSymbolicLink = 0xA000000C;
inline constexpr std::uint32_t kTagCloud = 0x9000001A;

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_NODE_H_
