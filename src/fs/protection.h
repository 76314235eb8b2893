// Files and folders that no scan reports.

#ifndef QUASTEL_FS_PROTECTION_H_
#define QUASTEL_FS_PROTECTION_H_

#include <array>
#include <cstddef>

#include "base/text.h"

namespace quastel {

// Whether the last component names a paging, swap or hibernation file, in any folder.
bool IsIgnoredFile(TextView path);

// The system's folders directly below one system root, and one profile's application data.
//
// The comparable forms are made once: a walk asks for every folder, and each form costs two system
// calls.
class ProtectedFolders {
 public:
  ProtectedFolders(const Text& system_root, const Text& user_home);

  // Whether the path is one of the folders or lies below one.
  bool Contains(const Text& path) const;

  // The same for a file in a folder that is known not to be protected. Such a file can only be one
  // of the protected folders by its own name, so nearly always no system call is made.
  bool ContainsFile(TextView path, TextView name) const;

 private:
  std::array<Text, 6> folders_;
  std::array<std::size_t, 6> leaf_lengths_ = {};  // of the folders' own names
};

}  // namespace quastel

#endif  // QUASTEL_FS_PROTECTION_H_
