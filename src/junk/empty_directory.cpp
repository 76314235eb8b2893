#include "junk/empty_directory.h"

#include <utility>
#include <vector>

#include "base/ascii.h"
#include "fs/folder_listing.h"
#include "fs/path_rules.h"
#include "platform/search.h"

namespace quastel {
namespace {

TextView WithoutTrailingSeparators(TextView path) {
  while (!path.empty() && IsSeparator(path.back())) {
    path.remove_suffix(1);
  }
  return path;
}

// Whether one folder holds a file; its own real subfolders are added to `pending`.
bool HasFilesOfItsOwn(const Text& folder, std::vector<Text>& pending) {
  EntryPath entry_path;
  entry_path.EnterFolder(folder);
  platform::FindData entry = {};
  const auto search = platform::FindFirstBasic(SearchText(folder, QS_TEXT("*")).c_str(),
                                               platform::SearchOperation::kNameMatch, entry);
  if (!search.ok()) {
    return false;
  }
  do {
    if (!platform::IsDirectory(entry.attributes)) {
      return true;
    }
    if (!IsDotEntry(entry) && IsRealFolder(entry)) {
      if (EndsInDotOrBlank(entry.name)) {
        pending.push_back(entry_path.ExactlyOf(entry.name));
      } else {
        pending.push_back(entry_path.Of(entry.name));
      }
    }
  } while (platform::FindNext(search.value(), entry) == platform::Error::kNone);
  return false;
}

// Links are neither entered nor counted: what they lead to is not in the folder. A folder that
// cannot be listed counts as empty; removing it would fail all the same if it is not.
bool DirectoryHasFiles(Text directory) {
  std::vector<Text> pending = {std::move(directory)};
  while (!pending.empty()) {
    const Text folder = std::move(pending.back());
    pending.pop_back();
    if (HasFilesOfItsOwn(folder, pending)) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool IsEligibleEmptyDirectory(const Text& path) {
  const TextView folder = WithoutTrailingSeparators(path);
  if (path.empty() || EqualsFolded(LeafOf(folder), QS_TEXT("Downloads")) ||
      !IsRealDirectory(path)) {
    return false;
  }
  // The folder that is asked for would not be the one that is listed.
  if (folder.ends_with(Char{' '}) && !IsExtendedPath(folder)) {
    return false;
  }
  // The search adds its own separator; two in a row are no path behind an extended-length prefix.
  return !DirectoryHasFiles(Text(WithoutTrailingSeparators(ToLongPath(path))));
}

}  // namespace quastel
