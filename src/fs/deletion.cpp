#include "fs/deletion.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "base/ascii.h"
#include "fs/local_ticks.h"
#include "fs/path_rules.h"
#include "platform/attributes.h"
#include "platform/error.h"
#include "platform/file_system.h"

namespace quastel {
namespace {

bool IsMissing(const Char* path) {
  return path == nullptr || *path == Char{};
}

TextView FolderPart(TextView path) {
  const std::size_t last = LastSeparator(path);
  return last == TextView::npos ? TextView() : path.substr(0, last);
}

// Resolving drops the dots and blanks at the end of a name even behind an extended-length prefix,
// where they count. Then the folders that were looked at are not those that the path goes through.
bool HasOtherFolders(TextView path, TextView resolved) {
  return IsExtendedPath(path) && !HaveSameNames(FolderPart(path), FolderPart(resolved));
}

bool IsSafeFolder(const Text& folder) {
  const auto attributes = platform::QueryAttributes(folder.c_str());
  return attributes.ok() && platform::IsDirectory(attributes.value()) &&
         !platform::IsReparsePoint(attributes.value());
}

}  // namespace

bool HasUnsafeAncestor(const Char* path) {
  if (IsMissing(path)) {
    return true;
  }
  std::optional<Text> resolved = ResolveAtOnce(path);
  if (!resolved || HasOtherFolders(path, *resolved)) {
    return true;
  }
  // A folder "name " is on the way, but asked for by itself it would be "name".
  Text folder = *std::move(resolved);
  folder = HasDroppedEnding(FolderPart(folder)) ? WithExtendedPrefix(folder)
                                                : ToLongPath(std::move(folder));
  const std::size_t root = RootLength(folder);
  if (root == 0) {
    return true;
  }
  for (std::size_t last = LastSeparator(folder); last != TextView::npos;
       last = LastSeparator(folder)) {
    // The root keeps its separator: without it the text would mean the drive's current folder.
    folder.resize(std::max(last, root));
    if (!IsSafeFolder(folder)) {
      return true;
    }
    if (folder.size() <= root) {
      break;
    }
  }
  return false;
}

Removable FindRemovable(const Char* path) {
  if (HasUnsafeAncestor(path)) {
    return Removable::kNothing;
  }
  const auto attributes = platform::QueryAttributes(path);
  if (!attributes.ok() || platform::IsReparsePoint(attributes.value())) {
    return Removable::kNothing;
  }
  return platform::IsDirectory(attributes.value()) ? Removable::kFolder : Removable::kFile;
}

bool MatchesSnapshot(const Char* path, const FileSnapshot& snapshot) {
  if (IsMissing(path) || snapshot.size < 0 || HasUnsafeAncestor(path)) {
    return false;
  }
  const auto facts = platform::QueryFileFacts(LongPath(path).c_str());
  if (!facts.ok() || platform::IsDirectory(facts.value().attributes) ||
      platform::IsReparsePoint(facts.value().attributes)) {
    return false;
  }
  return facts.value().size == static_cast<std::uint64_t>(snapshot.size) &&
         LocalTicks(facts.value().last_write) == static_cast<std::uint64_t>(snapshot.last_write);
}

bool DeletePermanently(const Char* path) {
  if (IsMissing(path)) {
    return false;
  }
  const LongPath long_path(path);
  switch (FindRemovable(long_path.c_str())) {
    case Removable::kFolder:
      return platform::RemoveFolder(long_path.c_str()) == platform::Error::kNone;
    case Removable::kFile:
      return platform::RemoveFile(long_path.c_str()) == platform::Error::kNone;
    case Removable::kNothing:
      break;
  }
  return false;
}

bool DeleteSnapshotPermanently(const Char* path, const FileSnapshot& snapshot) {
  return MatchesSnapshot(path, snapshot) && DeletePermanently(path);
}

}  // namespace quastel
