// The open handles of the code under test. A wrong use of one ends the process: on Windows it
// would go unnoticed, or hit a stranger's handle.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_LEDGER_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_LEDGER_H_

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <variant>
#include <vector>

#include "platform/handle.h"
#include "platform/search.h"
#include "simulated_windows/node.h"

namespace quastel::simulated {

// Ends the process with a message.
[[noreturn]] void Die(const std::string& message);

struct FileObject {
  NodePtr node;  // null for a device
  std::uint32_t access = 0;
  std::uint64_t offset = 0;
  SeekPenaltyAnswer seek_penalty = SeekPenaltyAnswer::kFails;
};

// A search remembers the name it answered last, so that the folder may change under it. While
// nothing on the disks changes, `next` goes on in constant time.
struct SearchObject {
  NodePtr folder;
  NamePattern pattern;
  bool folders_only = false;
  int dots_due = 0;  // 2: "." comes next, 1: ".." comes next
  bool started = false;
  Text last;
  Children::const_iterator next;
  std::uint64_t generation = 0;
};

struct ThreadControl {
  std::mutex mutex;
  std::thread thread;
};
struct ThreadObject {
  std::shared_ptr<ThreadControl> control;
};

struct ShellItemObject {
  Text path;
};

struct FileOperationObject {
  std::uint32_t flags = 0;
  std::vector<Text> marked;
  bool aborted = false;
};

class Ledger {
 public:
  template <typename Object>
  platform::RawHandle Open(Object object) {
    const platform::RawHandle raw = ++last_raw_;
    handles_.emplace(raw, std::move(object));
    CountSearch(std::is_same_v<Object, SearchObject> ? 1 : 0);
    return raw;
  }

  template <typename Object>
  Object& Get(platform::RawHandle raw) {
    const auto found = handles_.find(raw);
    Object* object = found == handles_.end() ? nullptr : std::get_if<Object>(&found->second);
    if (object == nullptr) {
      DieOfWrongHandle(raw);
    }
    return *object;
  }

  template <typename Object>
  Object Close(platform::RawHandle raw) {
    Object object = std::move(Get<Object>(raw));
    handles_.erase(raw);
    CountSearch(std::is_same_v<Object, SearchObject> ? -1 : 0);
    return object;
  }

  // COM objects of either kind are released by the same call.
  void CloseCom(platform::RawHandle raw);

  std::size_t size() const { return handles_.size(); }
  std::size_t most_searches() const { return most_searches_; }
  std::string Describe() const;

 private:
  using Object =
      std::variant<FileObject, SearchObject, ThreadObject, ShellItemObject, FileOperationObject>;

  [[noreturn]] void DieOfWrongHandle(platform::RawHandle raw) const;
  void CountSearch(int change);

  std::unordered_map<platform::RawHandle, Object> handles_;
  platform::RawHandle last_raw_ = 0x100;
  std::size_t searches_ = 0;
  std::size_t most_searches_ = 0;
};

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_LEDGER_H_
