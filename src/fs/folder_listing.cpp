#include "fs/folder_listing.h"

#include "fs/path_rules.h"

namespace quastel {

// When the two together are long the prefix goes onto the folder alone: resolving would take a
// trailing dot off the pattern.
Text SearchText(const Text& folder, TextView pattern) {
  const bool is_long = folder.size() + 1 + pattern.size() >= kLongPathThreshold;
  if (is_long && !IsExtendedPath(folder)) {
    return JoinPath(ToExtendedPath(folder), pattern);
  }
  return Text(folder).append(1, Char{'\\'}).append(pattern);
}

bool IsDotEntry(const platform::FindData& entry) {
  // Nearly every entry is told apart by its first unit, without a look for the end of its name.
  const Char* const name = entry.name;
  return name[0] == Char{'.'} && (name[1] == Char{} || (name[1] == Char{'.'} && name[2] == Char{}));
}

void EntryPath::EnterFolder(const Text& folder) {
  path_.assign(folder).append(1, Char{'\\'});
  folder_length_ = path_.size();
}

const Text& EntryPath::Of(TextView name) {
  path_.resize(folder_length_);
  path_.append(name);
  if (path_.size() < kLongPathThreshold || IsExtendedPath(path_)) {
    return path_;
  }
  long_path_ = ToExtendedPath(path_);
  return long_path_;
}

}  // namespace quastel
