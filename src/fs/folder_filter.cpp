#include "fs/folder_filter.h"

#include <algorithm>
#include <utility>

#include "fs/path_rules.h"

namespace quastel {

std::vector<Text> OutermostFolders(const std::vector<Text>& folders) {
  struct Entry {
    const Text* given;
    Text comparable;
  };
  std::vector<Entry> entries;
  entries.reserve(folders.size());
  for (const Text& folder : folders) {
    entries.push_back({&folder, ToComparablePath(folder)});
  }
  std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.comparable.size() < b.comparable.size();
  });

  // Shortest first: a folder can only lie in one that was kept before it.
  std::vector<const Entry*> kept;
  for (const Entry& entry : entries) {
    const bool contained = std::any_of(kept.begin(), kept.end(), [&entry](const Entry* outer) {
      return !outer->comparable.empty() && IsPathUnder(entry.comparable, outer->comparable);
    });
    if (!contained) {
      kept.push_back(&entry);
    }
  }

  std::vector<Text> result;
  result.reserve(kept.size());
  for (const Entry* entry : kept) {
    result.push_back(*entry->given);
  }
  return result;
}

}  // namespace quastel
