// Listing one folder: the pieces that every walk is made of.

#ifndef QUASTEL_FS_FOLDER_LISTING_H_
#define QUASTEL_FS_FOLDER_LISTING_H_

#include <cstddef>
#include <cstdint>

#include "base/text.h"
#include "frame/cancel.h"
#include "platform/search.h"

namespace quastel {

// folder\pattern for a search; the folder is in its long-path form.
Text SearchText(const Text& folder, TextView pattern);

// "." or "..".
bool IsDotEntry(const platform::FindData& entry);

// A folder that a walk may enter.
inline bool IsRealFolder(const platform::FindData& entry) {
  return platform::IsDirectory(entry.attributes) && !platform::IsReparsePoint(entry.attributes);
}

// One path after the other below one folder, in a buffer that is kept between them.
class EntryPath {
 public:
  void EnterFolder(const Text& folder);

  // The full path of an entry, in the form that callers and system calls get.
  const Text& Of(TextView name);

  // The path that leads to the entry also when the system would take the ending off its name.
  Text ExactlyOf(TextView name) const;

 private:
  Text path_;
  Text long_path_;
  std::size_t folder_length_ = 0;
};

// Hands every entry but "." and ".." to `visit`, with the cancel flag tested before each entry.
// A search that could not be opened has no entries.
template <typename Visitor>
qs_status ForEachEntry(platform::Result<platform::SearchHandle> search, platform::FindData& entry,
                       std::uint32_t* cancel, Visitor visit) {
  if (!search.ok()) {
    return QS_OK;
  }
  do {
    if (IsCancelRequested(cancel)) {
      return QS_CANCELLED;
    }
    if (!IsDotEntry(entry)) {
      visit(entry);
    }
  } while (platform::FindNext(search.value(), entry) == platform::Error::kNone);
  return QS_OK;
}

}  // namespace quastel

#endif  // QUASTEL_FS_FOLDER_LISTING_H_
