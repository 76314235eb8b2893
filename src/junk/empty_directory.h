// Folders that may be offered for removal because nothing is in them.

#ifndef QUASTEL_JUNK_EMPTY_DIRECTORY_H_
#define QUASTEL_JUNK_EMPTY_DIRECTORY_H_

#include "base/text.h"

namespace quastel {

// Whether the folder holds no file at any depth. Never true for a folder named "Downloads", which
// people expect to find even when it is empty, nor for a file, a junction or a link.
bool IsEligibleEmptyDirectory(const Text& path);

}  // namespace quastel

#endif  // QUASTEL_JUNK_EMPTY_DIRECTORY_H_
