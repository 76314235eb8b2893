#include "empty_folders.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "name_order.h"
#include "path_complaint.h"
#include "path_text.h"

namespace quastel::client {
namespace {

// A folder in which no file was seen, at any depth. The ones below it stand before it in the list.
struct Candidate {
  EmptyFolder folder;
  std::size_t first_below;  // where they begin
};

// A folder that the walk is in.
struct Visit {
  std::wstring path;
  std::vector<std::wstring> subfolders;  // that are still to be visited
  std::size_t first_candidate = 0;       // the number of candidates when it began
  std::uint64_t folders = 1;
  bool has_files = false;
  bool kept = false;  // not to be offered, whatever is in it
};

bool IsDots(const wchar_t* name) {
  return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

// The library's own idea of content: a link that is a folder is none, every other entry is a file.
// What cannot be listed is empty.
void List(Visit& visit) {
  WIN32_FIND_DATAW entry = {};
  const std::wstring pattern = SystemForm(TidyPath(visit.path + L"\\*"));
  const HANDLE search = FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry,
                                         FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (search == INVALID_HANDLE_VALUE) {
    return;
  }
  do {
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      visit.has_files = true;
    } else if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 &&
               !IsDots(entry.cFileName)) {
      const std::wstring_view name(entry.cFileName);
      // The system takes "name." in a path for "name": what is in there cannot be seen.
      if (name.ends_with(L'.') || name.ends_with(L' ')) {
        visit.kept = true;
      } else {
        visit.subfolders.push_back(TidyPath(visit.path + L"\\" + entry.cFileName));
      }
    }
  } while (FindNextFileW(search, &entry) != 0);
  FindClose(search);
}

class Search {
 public:
  Search(const std::vector<std::wstring>& roots, const std::optional<ProtectedFolders>& protection,
         WalkState& state)
      : roots_(roots), protection_(protection), state_(state) {}

  qs_status Walk() {
    std::vector<std::wstring> outermost;
    qs_status status = OutermostRoots(outermost);
    for (std::size_t i = 0; i < outermost.size() && status == QS_OK; ++i) {
      status = IsProtected(outermost[i]) ? QS_OK : WalkRoot(outermost[i]);
    }
    return status;
  }

  // A candidate that the library refuses, such as one called Downloads, gives way to those below
  // it.
  void TakeAccepted(std::vector<EmptyFolder>& found) {
    for (std::size_t i = candidates_.size(); i > 0;) {
      Candidate& candidate = candidates_[i - 1];
      if (qs_empty_directory_eligible(candidate.folder.path.c_str()) != 0) {
        i = candidate.first_below;
        found.push_back(std::move(candidate.folder));
      } else {
        --i;
      }
    }
  }

 private:
  bool IsProtected(const std::wstring& path) const {
    return protection_ && qs_is_in_whitelist(path.c_str(), protection_->system_root.c_str(),
                                             protection_->user_home.c_str()) != 0;
  }

  // Those that lie in no other one.
  qs_status OutermostRoots(std::vector<std::wstring>& outermost) const {
    std::vector<const qs_char*> pointers;
    for (const std::wstring& root : roots_) {
      pointers.push_back(root.c_str());
    }
    std::uint64_t kept = 0;
    std::uint64_t needed = 0;
    qs_filter_dir(pointers.data(), pointers.size(), nullptr, 0, &kept, &needed);
    std::wstring list(static_cast<std::size_t>(needed), L'\0');
    const qs_status status =
        qs_filter_dir(pointers.data(), pointers.size(), list.data(), needed, &kept, &needed);
    if (status == QS_OK) {
      // A sequence of texts, each with its NUL.
      for (const wchar_t* root = list.c_str(); outermost.size() < kept;
           root += outermost.back().size() + 1) {
        outermost.emplace_back(root);
      }
    }
    return status;
  }

  bool IsRoot(const std::wstring& path) const {
    return std::any_of(roots_.begin(), roots_.end(), [&path](const std::wstring& root) {
      return CompareNames(WithoutExtendedPrefix(root), WithoutExtendedPrefix(path)) == 0;
    });
  }

  void Enter(std::wstring path) {
    Visit visit;
    visit.path = std::move(path);
    visit.first_candidate = candidates_.size();
    visit.kept = IsRoot(visit.path);
    state_.Count(visit.path, 0);
    List(visit);
    visits_.push_back(std::move(visit));
  }

  void Leave() {
    Visit visit = std::move(visits_.back());
    visits_.pop_back();
    if (!visit.has_files && !visit.kept) {
      // As the library's rows have it: usable as it is, also when it is long.
      candidates_.push_back({{SystemForm(visit.path), visit.folders}, visit.first_candidate});
    }
    if (!visits_.empty()) {
      Visit& parent = visits_.back();
      parent.has_files |= visit.has_files;
      parent.kept |= visit.kept;
      parent.folders += visit.folders;
    }
  }

  qs_status WalkRoot(const std::wstring& root) {
    for (Enter(root); !visits_.empty();) {
      if (state_.IsCancelled()) {
        visits_.clear();  // what is not finished may still hold files
        return QS_CANCELLED;
      }
      Visit& visit = visits_.back();
      if (visit.subfolders.empty()) {
        Leave();
        continue;
      }
      std::wstring next = std::move(visit.subfolders.back());
      visit.subfolders.pop_back();
      if (IsProtected(next)) {
        visit.kept = true;
      } else {
        Enter(std::move(next));
      }
    }
    return QS_OK;
  }

  const std::vector<std::wstring>& roots_;
  const std::optional<ProtectedFolders>& protection_;
  WalkState& state_;
  std::vector<Visit> visits_;
  std::vector<Candidate> candidates_;
};

}  // namespace

qs_status FindEmptyFolders(const std::vector<std::wstring>& roots,
                           const std::optional<ProtectedFolders>& protection, WalkState& state,
                           std::vector<EmptyFolder>& found) {
  Search search(roots, protection, state);
  const qs_status status = search.Walk();
  search.TakeAccepted(found);
  std::sort(found.begin(), found.end(), [](const EmptyFolder& a, const EmptyFolder& b) {
    return IsPathBefore(a.path, b.path);
  });
  return status;
}

}  // namespace quastel::client
