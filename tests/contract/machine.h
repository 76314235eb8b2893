// The machine under the seam, as the contract tests prepare it.
//
// The tests themselves use the seam functions alone. Whatever the seam cannot do (making folders
// and links, setting times and attributes) they ask of this class, which exists once for the
// simulated Windows and once for the real one.

#ifndef QUASTEL_TESTS_CONTRACT_MACHINE_H_
#define QUASTEL_TESTS_CONTRACT_MACHINE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/text.h"
#include "platform/attributes.h"

namespace quastel::contract {

class Machine {
 public:
  // Comes with a fresh, empty folder; it goes away with everything in it.
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  // The folder: drive-absolute, shorter than 100 code units, no separator at the end.
  const Text& folder() const;
  Text Path(TextView relative) const { return folder() + QS_TEXT("\\") + Text(relative); }

  // Each answers the full path. Parent folders must be there.
  Text MakeFolder(TextView relative);
  Text MakeFile(TextView relative, std::string_view content);
  Text MakeSparseFile(TextView relative, std::uint64_t size);  // reads as zeros
  // A directory reparse point of whatever kind the system can make.
  Text MakeFolderLink(TextView relative, const Text& target);

  void SetAttributes(const Text& path, platform::Attributes attributes);
  void SetLastWrite(const Text& path, std::uint64_t file_time);

  bool Exists(const Text& path) const;
  std::string ContentOf(const Text& path) const;

  // Somebody else has the file open for reading, with this sharing, until Unlock.
  void Lock(const Text& path, std::uint32_t share);
  void Unlock(const Text& path);

  // Of the process; set back at the end.
  void SetCurrentFolder(const Text& path);
  void SetEnvironment(const Text& name, const std::optional<Text>& value);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quastel::contract

#endif  // QUASTEL_TESTS_CONTRACT_MACHINE_H_
