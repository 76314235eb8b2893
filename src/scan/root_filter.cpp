#include "scan/root_filter.h"

#include "fs/folder_filter.h"

namespace quastel {

std::vector<Text> FilterScanRoots(const std::vector<Text>& roots) {
  return OutermostFolders(roots);
}

}  // namespace quastel
