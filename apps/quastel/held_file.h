#ifndef QUASTEL_APPS_QUASTEL_HELD_FILE_H_
#define QUASTEL_APPS_QUASTEL_HELD_FILE_H_

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quastel::client {

// Which file a path leads to, whatever it is called: hard links of a file and other spellings of
// its name share it.
struct FileIdentity {
  std::uint64_t volume = 0;
  std::uint64_t file = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// An open file that nobody can change while it is held.
class HeldFile {
 public:
  enum class Sharing {
    kNobodyRemoves,  // nobody can remove it either
    kMayBeRemoved,
  };

  HeldFile() = default;
  ~HeldFile();
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

  // Answers the system's error, 0 for success. A link is opened itself, not what it leads to.
  unsigned long Open(const std::wstring& path, Sharing sharing);

  // Nothing for what is no plain file, and when the system does not tell.
  std::optional<FileIdentity> Identity() const;

  // The next bytes, fewer at the end of the file; nothing when they cannot be read.
  std::optional<std::uint32_t> Read(std::vector<unsigned char>& buffer) const;

 private:
  void* handle_ = nullptr;
};

enum class Comparison { kEqual, kDifferent, kUnreadable, kCancelled };

// Compares two files from where they stand, byte for byte to the end of both.
Comparison CompareContents(const HeldFile& a, const HeldFile& b, const std::atomic<bool>& cancel);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HELD_FILE_H_
