#ifndef QUASTEL_APPS_QUASTEL_EMPTY_FOLDERS_H_
#define QUASTEL_APPS_QUASTEL_EMPTY_FOLDERS_H_

#include <quastel_core.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "own_walk.h"
#include "protected_folders.h"

namespace quastel::client {

struct EmptyFolder {
  std::wstring path;
  std::uint64_t folders = 1;  // itself and all below it
};

// Finds the folders below `roots` that qs_empty_directory_eligible accepts and that lie in no other
// such folder. Roots, protected folders, and whatever holds one of them are never among them; links
// are not entered. Sorted by path.
//
// Each folder is listed once: the walk goes from the leaves up and asks the library only about the
// outermost of the folders in which it saw no file.
qs_status FindEmptyFolders(const std::vector<std::wstring>& roots,
                           const std::optional<ProtectedFolders>& protection, WalkState& state,
                           std::vector<EmptyFolder>& found);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_EMPTY_FOLDERS_H_
