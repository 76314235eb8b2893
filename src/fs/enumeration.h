// Walking the file system.
//
// No walk enters or reports a junction, a link or any other reparse point; folders that cannot be
// listed are passed over. The callbacks run on the calling thread. Whatever a callback throws
// passes through, with the search closed.

#ifndef QUASTEL_FS_ENUMERATION_H_
#define QUASTEL_FS_ENUMERATION_H_

#include <cstdint>

#include "base/text.h"
#include "fs/protection.h"

namespace quastel {

struct FileWalkOptions {
  Text pattern;  // empty means "*"
  bool recursive = true;
  const ProtectedFolders* protection = nullptr;  // folders to keep out of, if any
  std::uint32_t* cancel = nullptr;
};

// A file as the walk meets it. The texts hold for the call only; a NUL stands behind each.
struct WalkedFile {
  TextView path;
  TextView name;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;  // local ticks
};
using WalkedFileVisitor = void (*)(void* user, const WalkedFile& file);

// Reports the files of `root`: a folder's own files first, then its subfolders, last found first.
// QS_CANCELLED or QS_OK; a root that is missing, a file or a link is an empty walk.
qs_status VisitFiles(const Text& root, const FileWalkOptions& options, WalkedFileVisitor visitor,
                     void* user);

// The same for a callback of the exported kind.
qs_status EnumerateFiles(const Text& root, const FileWalkOptions& options,
                         qs_file_callback callback, void* user);

// Reports the immediate subfolders of `root`.
qs_status EnumerateDirectories(const Text& root, qs_directory_callback callback, void* user,
                               std::uint32_t* cancel);

}  // namespace quastel

#endif  // QUASTEL_FS_ENUMERATION_H_
