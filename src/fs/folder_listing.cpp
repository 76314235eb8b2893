#include "fs/folder_listing.h"

#include <utility>

#include "fs/path_rules.h"

namespace quastel {
namespace {

// Behind a separator the last name of a folder keeps a blank at its end when it is resolved.
Text AsFolder(Text folder) {
  return EndsInDotOrBlank(folder) ? std::move(folder.append(1, Char{'\\'})) : std::move(folder);
}

}  // namespace

// When the two together are long the prefix goes onto the folder alone: resolving would take a
// trailing dot off the pattern.
Text SearchText(const Text& folder, TextView pattern) {
  const bool is_long = folder.size() + 1 + pattern.size() >= kLongPathThreshold;
  if (is_long && !IsExtendedPath(folder)) {
    return JoinPath(ToExtendedPath(AsFolder(folder)), pattern);
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

Text EntryPath::ExactlyOf(TextView name) const {
  return JoinPath(ToExtendedPath(path_.substr(0, folder_length_)), name);
}

}  // namespace quastel
