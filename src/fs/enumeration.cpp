#include "fs/enumeration.h"

#include <utility>
#include <vector>

#include "frame/cancel.h"
#include "fs/folder_listing.h"
#include "fs/local_ticks.h"
#include "fs/path_rules.h"
#include "platform/search.h"

namespace quastel {
namespace {

constexpr TextView kEverything = QS_TEXT("*");

// A blank at the end of the root's name is dropped when the root is asked for, but not when it is
// searched: these may be two folders.
bool LeadsIntoRealFolder(const Text& root) {
  return !EndsInDotOrBlank(root) || IsExtendedPath(root) || IsRealDirectory(root + Char{'\\'});
}

// One recursive walk: a stack of folders still to be listed.
class FileWalk {
 public:
  FileWalk(const FileWalkOptions& options, WalkedFileVisitor visitor, void* user)
      : options_(options),
        pattern_(options.pattern.empty() ? Text(kEverything) : options.pattern),
        visitor_(visitor),
        user_(user) {}

  qs_status Run(Text root) {
    if (!IsRealDirectory(root) || !LeadsIntoRealFolder(root) || IsProtected(root)) {
      return QS_OK;
    }
    pending_.push_back(std::move(root));
    while (!pending_.empty()) {
      if (IsCancelRequested(options_.cancel)) {
        return QS_CANCELLED;
      }
      const Text folder = std::move(pending_.back());
      pending_.pop_back();
      // Tested again: a relative root means another place once the current folder has changed.
      if (IsProtected(folder)) {
        continue;
      }
      const qs_status status = WalkFolder(folder);
      if (status != QS_OK) {
        return status;
      }
    }
    return QS_OK;
  }

 private:
  bool IsProtected(const Text& folder) const {
    return options_.protection != nullptr && options_.protection->Contains(folder);
  }

  qs_status WalkFolder(const Text& folder) {
    entry_path_.EnterFolder(folder);
    ticks_.Forget();
    if (pattern_ == kEverything) {
      return ListEverything(folder);
    }
    const qs_status status = ListMatches(folder);
    return status == QS_OK && options_.recursive ? CollectFolders(folder) : status;
  }

  // Files and folders in one listing.
  qs_status ListEverything(const Text& folder) {
    return ForEachEntry(Search(folder, kEverything, platform::SearchOperation::kNameMatch), entry_,
                        options_.cancel, [this](const platform::FindData& entry) {
                          if (platform::IsReparsePoint(entry.attributes)) {
                            return;
                          }
                          if (platform::IsDirectory(entry.attributes)) {
                            Push(entry);
                          } else {
                            Report(entry);
                          }
                        });
  }

  qs_status ListMatches(const Text& folder) {
    return ForEachEntry(Search(folder, pattern_, platform::SearchOperation::kNameMatch), entry_,
                        options_.cancel, [this](const platform::FindData& entry) {
                          if (!platform::IsDirectory(entry.attributes) &&
                              !platform::IsReparsePoint(entry.attributes)) {
                            Report(entry);
                          }
                        });
  }

  // The pattern is for files; folders are found by a listing of their own.
  qs_status CollectFolders(const Text& folder) {
    auto search = Search(folder, kEverything, platform::SearchOperation::kLimitToDirectories);
    if (!search.ok()) {
      search = platform::FindFirst(SearchText(folder, kEverything).c_str(), entry_);
    }
    return ForEachEntry(std::move(search), entry_, options_.cancel,
                        [this](const platform::FindData& entry) {
                          // File systems may ignore the limit, so the attribute decides.
                          if (IsRealFolder(entry)) {
                            Push(entry);
                          }
                        });
  }

  platform::Result<platform::SearchHandle> Search(const Text& folder, TextView pattern,
                                                  platform::SearchOperation operation) {
    return platform::FindFirstBasic(SearchText(folder, pattern).c_str(), operation, entry_);
  }

  void Report(const platform::FindData& entry) {
    const TextView name(entry.name);
    visitor_(user_, {.path = entry_path_.Of(name),
                     .name = name,
                     .size = entry.size(),
                     .last_write = ticks_.Of(entry.last_write())});
  }

  void Push(const platform::FindData& entry) {
    if (!options_.recursive) {
      return;
    }
    const Text& folder = entry_path_.Of(entry.name);
    if (LeadsIntoFolder(folder, entry.name) && !IsProtected(folder)) {
      pending_.push_back(folder);
    }
  }

  const FileWalkOptions& options_;
  const Text pattern_;
  const WalkedFileVisitor visitor_;
  void* const user_;
  std::vector<Text> pending_;
  EntryPath entry_path_;
  FolderTicks ticks_;
  platform::FindData entry_ = {};
};

}  // namespace

qs_status VisitFiles(const Text& root, const FileWalkOptions& options, WalkedFileVisitor visitor,
                     void* user) {
  return FileWalk(options, visitor, user).Run(ToLongPath(root));
}

qs_status EnumerateFiles(const Text& root, const FileWalkOptions& options,
                         qs_file_callback callback, void* user) {
  struct Receiver {
    qs_file_callback callback;
    void* user;
  };
  Receiver receiver = {callback, user};
  const auto hand_on = [](void* to, const WalkedFile& file) {
    const auto& given = *static_cast<const Receiver*>(to);
    given.callback(given.user, file.path.data(), file.size, file.last_write, file.name.data());
  };
  return VisitFiles(root, options, hand_on, &receiver);
}

qs_status EnumerateDirectories(const Text& root, qs_directory_callback callback, void* user,
                               std::uint32_t* cancel) {
  const Text folder = ToLongPath(root);
  if (!IsRealDirectory(folder)) {
    return QS_OK;
  }
  EntryPath entry_path;
  entry_path.EnterFolder(folder);
  platform::FindData entry = {};
  return ForEachEntry(platform::FindFirst(SearchText(folder, kEverything).c_str(), entry), entry,
                      cancel, [&](const platform::FindData& found) {
                        if (IsRealFolder(found)) {
                          callback(user, entry_path.Of(found.name).c_str());
                        }
                      });
}

}  // namespace quastel
