// The exported protection filters and matchers.

#include <vector>

#include "base/text.h"
#include "frame/boundary.h"
#include "frame/text_output.h"
#include "fs/folder_filter.h"
#include "fs/matchers.h"
#include "fs/protection.h"

using quastel::Text;

int32_t qs_is_ignored(const qs_char* path) {
  return path != nullptr && quastel::IsIgnoredFile(path) ? 1 : 0;
}

int32_t qs_is_in_whitelist(const qs_char* path, const qs_char* system_root,
                           const qs_char* user_home) {
  if (path == nullptr || system_root == nullptr || user_home == nullptr) {
    return 0;
  }
  return quastel::PredicateBoundary(
      [&] { return quastel::ProtectedFolders(system_root, user_home).Contains(path); });
}

qs_status qs_filter_dir(const qs_char* const* paths, uint64_t count, qs_char* out,
                        uint64_t capacity, uint64_t* kept_count, uint64_t* needed) {
  if (kept_count != nullptr) {
    *kept_count = 0;
  }
  if (needed != nullptr) {
    *needed = 0;
  }
  if (count > 0 && paths == nullptr) {
    return QS_INVALID_ARGUMENT;
  }
  return quastel::StatusBoundary([&]() -> qs_status {
    std::vector<Text> folders;
    for (uint64_t i = 0; i < count; ++i) {
      if (paths[i] == nullptr) {
        return QS_INVALID_ARGUMENT;
      }
      folders.emplace_back(paths[i]);
    }
    const std::vector<Text> kept = quastel::OutermostFolders(folders);
    // The list ends in one more NUL, which the delivery adds.
    Text list;
    for (const Text& folder : kept) {
      list.append(folder).append(1, qs_char{});
    }
    if (kept_count != nullptr) {
      *kept_count = kept.size();
    }
    return quastel::DeliverText(list, out, capacity, needed);
  });
}

int32_t qs_matches_size(int64_t size, uint32_t mode) {
  return quastel::MatchesSize(size, mode) ? 1 : 0;
}

int32_t qs_matches_date(int64_t file_time, int64_t now, int32_t mode) {
  return quastel::MatchesDate(file_time, now, mode) ? 1 : 0;
}
