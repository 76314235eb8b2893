// Removal from the disk, and the tests that come before it.
//
// Nothing is removed through a junction or link: neither one that stands in the item's own place
// nor one on the way to it. A refusal and a failure of the system are the same answer, no.

#ifndef QUASTEL_FS_DELETION_H_
#define QUASTEL_FS_DELETION_H_

#include <cstdint>

#include "base/text.h"

namespace quastel {

// What a scan saw of a file and its caller kept.
struct FileSnapshot {
  std::int64_t size = 0;
  std::int64_t last_write = 0;  // local ticks
};

// What stands at the place of an item that may be removed.
enum class Removable { kNothing, kFile, kFolder };

// Whether anything but a real folder stands between the item and its root; the item itself is not
// looked at. True for a path that cannot be resolved or has no root.
bool HasUnsafeAncestor(const Char* path);

// What a removal would act on. `path` is in its long-path form.
Removable FindRemovable(const Char* path);

// Whether the path is a plain file of exactly this size and time.
bool MatchesSnapshot(const Char* path, const FileSnapshot& snapshot);

// Deletes a file, or a folder with nothing in it.
bool DeletePermanently(const Char* path);

// The same for a file that is as the snapshot has it. Test and removal are two steps: what another
// process does between them is not noticed.
bool DeleteSnapshotPermanently(const Char* path, const FileSnapshot& snapshot);

}  // namespace quastel

#endif  // QUASTEL_FS_DELETION_H_
