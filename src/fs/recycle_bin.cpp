#include "fs/recycle_bin.h"

#include <cstdint>
#include <optional>

#include "base/ascii.h"
#include "fs/path_rules.h"
#include "platform/error.h"
#include "platform/file_system.h"
#include "platform/shell.h"

namespace quastel {
namespace {

// FOF_SILENT | FOF_NOCONFIRMATION | FOF_ALLOWUNDO | FOF_NOERRORUI | FOF_NORECURSION |
// FOF_NO_CONNECTED_ELEMENTS: no window of any kind, and nothing but the one file.
constexpr std::uint16_t kFallbackFlags = 0x3454;
// And FOF_NOCONFIRMMKDIR, which the older call does not get.
constexpr std::uint32_t kOperationFlags = 0x3654;

// COM for the length of one operation, on a thread that may have it already or not.
class ComScope {
 public:
  ComScope() : result_(platform::InitializeCom()) {}
  ~ComScope() {
    if (platform::ComSucceeded(result_)) {
      platform::UninitializeCom();
    }
  }
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;

  // A thread in the multithreaded apartment keeps it, and can use the shell all the same.
  bool IsUsable() const {
    return platform::ComSucceeded(result_) || result_ == platform::kComChangedMode;
  }

 private:
  const platform::ComResult result_;
};

// The path as the shell's parser takes it, when it does not take extended-length prefixes. Nothing
// when it would lead to another file.
std::optional<Text> WithoutExtendedPrefix(TextView path) {
  std::optional<Text> plain;
  if (StartsWithFolded(path, kExtendedUncPrefix)) {
    plain = Text(kUncPrefix).append(path.substr(kExtendedUncPrefix.size()));
  } else if (IsExtendedPath(path)) {
    plain = Text(path.substr(kExtendedPrefix.size()));
  }
  return plain && HasDroppedEnding(*plain) ? std::nullopt : plain;
}

bool ParseShellItem(const Char* path, platform::ShellItem& item) {
  if (platform::ComSucceeded(platform::CreateShellItem(path, item))) {
    return true;
  }
  const std::optional<Text> plain = WithoutExtendedPrefix(path);
  return plain && platform::ComSucceeded(platform::CreateShellItem(plain->c_str(), item));
}

bool PerformFileOperation(const Char* path) {
  const ComScope com;
  if (!com.IsUsable()) {
    return false;
  }
  platform::FileOperation operation;
  platform::ShellItem item;
  bool aborted = false;
  return platform::ComSucceeded(platform::CreateFileOperation(operation)) &&
         platform::ComSucceeded(platform::SetOperationFlags(operation, kOperationFlags)) &&
         ParseShellItem(path, item) &&
         platform::ComSucceeded(platform::MarkForDeletion(operation, item)) &&
         platform::ComSucceeded(platform::PerformOperations(operation)) &&
         platform::ComSucceeded(platform::QueryOperationsAborted(operation, aborted)) && !aborted;
}

// The object's word is not enough: what counts is that the file is gone from its place.
bool RecycleWithFileOperation(const Char* path) {
  return PerformFileOperation(path) && !platform::QueryAttributes(path).ok();
}

// The older shell call, for a shell without the object. It has no form for extended-length paths.
bool RecycleWithShellDelete(const Char* path) {
  if (IsExtendedPath(path)) {
    return false;
  }
  std::optional<Text> paths = ResolveAtOnce(path);
  if (!paths) {
    return false;
  }
  *paths += Char{};  // a list of paths ends in a second NUL
  const platform::ShellOperationResult result =
      platform::ShellDelete(paths->c_str(), kFallbackFlags);
  return result.code == 0 && !result.aborted;
}

}  // namespace

bool MoveToRecycleBin(const Char* path) {
  if (path == nullptr || *path == Char{}) {
    return false;
  }
  const LongPath long_path(path);
  switch (FindRemovable(long_path.c_str())) {
    case Removable::kFolder:
      return platform::RemoveFolder(long_path.c_str()) == platform::Error::kNone;
    case Removable::kFile:
      return RecycleWithFileOperation(long_path.c_str()) ||
             RecycleWithShellDelete(long_path.c_str());
    case Removable::kNothing:
      break;
  }
  return false;
}

bool MoveSnapshotToRecycleBin(const Char* path, const FileSnapshot& snapshot) {
  return MatchesSnapshot(path, snapshot) && MoveToRecycleBin(path);
}

}  // namespace quastel
