// What the library does to the text of a path.
//
// "\" and "/" are separators wherever one is looked for; what is inserted is "\". Comparisons fold
// the ASCII letters only.

#ifndef QUASTEL_FS_PATH_RULES_H_
#define QUASTEL_FS_PATH_RULES_H_

#include <cstddef>
#include <optional>

#include "base/text.h"

namespace quastel {

// Shorter paths keep the spelling that the caller used; Windows limits folders to 248 units.
inline constexpr std::size_t kLongPathThreshold = 248;

// What the extended-length paths of files and of shares begin with, and a share without it.
inline constexpr TextView kExtendedPrefix = QS_TEXT("\\\\?\\");
inline constexpr TextView kExtendedUncPrefix = QS_TEXT("\\\\?\\UNC\\");
inline constexpr TextView kUncPrefix = QS_TEXT("\\\\");

// The form in which every system call gets its path: unchanged below the threshold, otherwise
// absolute and with the "\\?\" or "\\?\UNC\" prefix. A path that cannot be resolved is prefixed as
// it is.
Text ToLongPath(Text path);

// Whether a path has one of the extended-length prefixes.
bool IsExtendedPath(TextView path);

// ToLongPath without the threshold.
Text ToExtendedPath(Text path);

// The extended-length form of an absolute path without the prefix, with all of its names unchanged.
Text WithExtendedPrefix(TextView absolute);

// The long-path form of a path for one call, without a copy of a path that has it already.
class LongPath {
 public:
  explicit LongPath(const Char* path);
  LongPath(const LongPath&) = delete;
  LongPath& operator=(const LongPath&) = delete;

  // Valid as long as this and the path that was given.
  const Char* c_str() const { return made_.empty() ? given_ : made_.c_str(); }

 private:
  const Char* given_;
  Text made_;
};

// The absolute form of a path, by the system's rules; nothing when it has none.
std::optional<Text> ResolveFully(const Text& path);

// The same by one call, for paths that are resolved often; nothing for a result of 32,768 units and
// more, which no call takes.
std::optional<Text> ResolveAtOnce(const Char* path);

// The form in which paths are compared: absolute, without an extended-length prefix and, from a
// length of 4 on, without trailing separators. A path that cannot be resolved is taken as given.
Text ToComparablePath(const Text& path);

// The folder of a path, after it was made absolute: a drive's root is its own parent. Nothing when
// the path cannot be resolved.
std::optional<Text> ParentDirectoryOf(const Text& path);

// Names that end in a dot or a blank can be on a disk, but the system drops these units when it
// resolves a path: dots within a path, both at its end. So "name." leads to "name", which may be
// another file, or a link. Extended-length paths are exact.

bool EndsInDotOrBlank(TextView name);

// Whether a name in the path has such an ending.
bool HasDroppedEnding(TextView path);

// Whether a path that a walk made for a file of this name leads to that file.
bool LeadsToFile(TextView path, TextView name);

// The same for a folder, and for what is looked up below the path.
bool LeadsIntoFolder(const Text& path, TextView name);

// Whether two paths consist of the same names, letter by letter; a doubled separator is one.
bool HaveSameNames(TextView a, TextView b);

// The length of the part of an absolute path that is no folder of its own: a drive with its
// separator, or a server and share with the separator behind them, each with its extended-length
// prefix. 0 for a path that has no such part.
std::size_t RootLength(TextView path);

// Whether `path` is `prefix` or lies below it, on whole names.
bool IsPathUnder(TextView path, TextView prefix);

// base, one separator, name; the separator is left out when base is empty or ends in one.
Text JoinPath(TextView base, TextView name);

// `relative` if it is absolute in any way (drive letter, "\\", leading separator), otherwise the
// two with exactly one separator between them.
Text CombinePaths(TextView base, TextView relative);

// Whether the path is a folder that a walk may enter: neither a file nor a junction or link.
bool IsRealDirectory(const Text& path);

// Whether both paths have the same parent folder.
bool AreInSameDirectory(const Text& a, const Text& b);

}  // namespace quastel

#endif  // QUASTEL_FS_PATH_RULES_H_
