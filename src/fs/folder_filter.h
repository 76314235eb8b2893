// Reducing a list of folders to its outermost members.

#ifndef QUASTEL_FS_FOLDER_FILTER_H_
#define QUASTEL_FS_FOLDER_FILTER_H_

#include <vector>

#include "base/text.h"

namespace quastel {

// The folders that lie in no other folder of the list, in the caller's spellings, shortest
// comparable form first and in input order among equals. Of several spellings of one folder the
// first stays. A folder without a comparable form contains nothing and lies in nothing.
std::vector<Text> OutermostFolders(const std::vector<Text>& folders);

}  // namespace quastel

#endif  // QUASTEL_FS_FOLDER_FILTER_H_
