// The Recycle Bin: removal that a person can take back.

#ifndef QUASTEL_FS_RECYCLE_BIN_H_
#define QUASTEL_FS_RECYCLE_BIN_H_

#include "base/text.h"
#include "fs/deletion.h"

namespace quastel {

// Moves a file to the Recycle Bin. A folder with nothing in it is removed outright.
bool MoveToRecycleBin(const Char* path);

// The same for a file that is as the snapshot has it; in two steps, as DeleteSnapshotPermanently.
bool MoveSnapshotToRecycleBin(const Char* path, const FileSnapshot& snapshot);

}  // namespace quastel

#endif  // QUASTEL_FS_RECYCLE_BIN_H_
