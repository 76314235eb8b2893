// Path text: what GetFullPathNameW makes of it, and what the file calls read from it.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_PATHS_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_PATHS_H_

#include "base/text.h"
#include "platform/error.h"

namespace quastel::simulated {

// MAX_PATH counts the terminator.
inline constexpr std::size_t kPathLimit = 260;
inline constexpr std::size_t kFolderCreateLimit = 248;
inline constexpr std::size_t kLongPathLimit = 32767;

// The text of GetFullPathNameW, empty where it fails. Of segments before the last one trailing dot
// is removed, of the whole text all trailing dots and spaces; names of devices such as NUL are
// names like any other here.
Text FullPathOf(TextView path, TextView current_folder);

bool HasVerbatimPrefix(TextView path);  // \\?\ with these very separators

// A path as the file calls see it.
struct PathParts {
  platform::Error error = platform::Error::kNone;
  Text root;                        // "C:" or "\\server\share", spelled as given
  Text rest;                        // the segments after the root, joined by single separators
  bool trailing_separator = false;  // after the last segment
  bool is_device = false;           // the volume's device rather than a file on it
};

// `limit`: code units that a path without the long-path prefix may have, terminator included.
PathParts ParsePath(TextView path, TextView current_folder, std::size_t limit = kPathLimit);

// Cuts the first segment off `rest`.
TextView TakeSegment(TextView& rest);

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_PATHS_H_
