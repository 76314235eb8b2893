#include "clean_obstacle.h"

#include <quastel_core.h>
#include <windows.h>

#include <array>
#include <string>

#include "full_path.h"
#include "name_order.h"
#include "path_complaint.h"
#include "path_text.h"

namespace quastel::client {
namespace {

struct ObstacleText {
  Obstacle obstacle;
  const char* word;
  const char* sentence;
};

constexpr std::array<ObstacleText, 14> kTexts = {{
    {Obstacle::kGone, "gone", "it is not there any more"},
    {Obstacle::kChanged, "changed", "it has changed since the scan"},
    {Obstacle::kReadOnly, "read_only", "it is read-only"},
    {Obstacle::kInUse, "in_use", "another program has it open"},
    {Obstacle::kNotPermitted, "not_permitted", "this account may not remove it"},
    {Obstacle::kLink, "link", "it is a link, or is reached through one"},
    {Obstacle::kUnclearName, "unclear_name",
     "Windows takes its name for another one, such as a name without the dot at its end"},
    {Obstacle::kNotACopy, "not_a_copy", "its content is not that of the copy that stays"},
    {Obstacle::kSameFile, "same_file",
     "it is the very file that stays, under another name (a hard link, for example)"},
    {Obstacle::kSurvivorGone, "survivor_gone", "the copy that was to stay is not there any more"},
    {Obstacle::kSurvivorChanged, "survivor_changed",
     "the copy that was to stay has changed since the scan"},
    {Obstacle::kSurvivorInUse, "survivor_in_use",
     "the copy that was to stay cannot be read, or another program has it open"},
    {Obstacle::kUnreadable, "unreadable", "it cannot be read to compare it"},
    {Obstacle::kUnknown, "refused", "Windows refused to remove it"},
}};

const ObstacleText& TextOf(Obstacle obstacle) {
  for (const ObstacleText& text : kTexts) {
    if (text.obstacle == obstacle) {
      return text;
    }
  }
  return kTexts.back();
}

bool IsMissing(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
         error == ERROR_INVALID_NAME || error == ERROR_BAD_NETPATH;
}

// Whether a folder on the way to the file is a link; one that is missing is none.
bool IsBelowLink(const std::wstring& path) {
  for (std::wstring folder = FolderOf(path); folder.size() > 2 && folder.back() != L':';
       folder = FolderOf(folder)) {
    const DWORD attributes = GetFileAttributesW(SystemForm(folder).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
      return true;
    }
  }
  return false;
}

// Opens the file for a removal and lets go of it again.
std::optional<Obstacle> TryToOpenForRemoval(const std::wstring& path) {
  HANDLE handle = CreateFileW(
      path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
      OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle != INVALID_HANDLE_VALUE) {
    CloseHandle(handle);
    return std::nullopt;
  }
  const DWORD error = GetLastError();
  if (IsMissing(error)) {
    return Obstacle::kGone;
  }
  return error == ERROR_ACCESS_DENIED ? Obstacle::kNotPermitted : Obstacle::kInUse;
}

}  // namespace

const char* ObstacleWord(Obstacle obstacle) {
  return TextOf(obstacle).word;
}

const char* ObstacleSentence(Obstacle obstacle) {
  return TextOf(obstacle).sentence;
}

bool HasUnclearName(const std::wstring& path) {
  // With the extended-length prefix the system takes a path as it is.
  return WithoutExtendedPrefix(path) == path && FullPath(path) != path;
}

std::optional<Obstacle> FindObstacle(const CleanFile& file, CleanMode mode) {
  if (HasUnclearName(file.path)) {
    return Obstacle::kUnclearName;
  }
  if (IsBelowLink(file.path)) {
    return Obstacle::kLink;
  }
  const std::wstring path = SystemForm(file.path);
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return IsMissing(GetLastError()) ? Obstacle::kGone : Obstacle::kNotPermitted;
  }
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    return Obstacle::kLink;
  }
  if (qs_file_matches_snapshot(file.path.c_str(), file.size,
                               static_cast<std::int64_t>(file.modified)) == 0) {
    return Obstacle::kChanged;
  }
  // The Recycle Bin takes read-only files.
  if (mode == CleanMode::kPermanent && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
    return Obstacle::kReadOnly;
  }
  return TryToOpenForRemoval(path);
}

}  // namespace quastel::client
