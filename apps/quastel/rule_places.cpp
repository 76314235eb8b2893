#include "rule_places.h"

#include <cstddef>
#include <utility>

#include "path_text.h"
#include "rule_vocabulary.h"

namespace quastel::client {
namespace {

// A text of the library, in two calls.
template <typename Call>
std::wstring AskText(const Call& call) {
  std::uint64_t needed = 0;
  call(nullptr, std::uint64_t{0}, &needed);
  std::wstring text(static_cast<std::size_t>(needed), L'\0');
  if (needed == 0 || call(text.data(), needed, &needed) != QS_OK) {
    return {};
  }
  text.pop_back();
  return text;
}

std::wstring Combined(const std::wstring& folder, const std::wstring& relative) {
  return AskText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_path_combine(folder.c_str(), relative.c_str(), out, capacity, needed);
  });
}

// Whether the library would enter `place`: it is a folder, and so is everything between `folder`
// and it, rather than a link that leads elsewhere.
bool IsReached(const std::wstring& folder, const std::wstring& place) {
  if (place.starts_with(folder)) {
    for (std::size_t i = folder.size() + 1; i < place.size(); ++i) {
      if (IsSeparator(place[i]) && qs_directory_exists(place.substr(0, i).c_str()) == 0) {
        return false;
      }
    }
  }
  return qs_directory_exists(place.c_str()) != 0;
}

class PlaceFinder {
 public:
  PlaceFinder(const RuleElement& rule, const ProtectedFolders& folders, WalkState& state,
              RuleOutcome& outcome)
      : rule_(rule), folders_(folders), state_(state), outcome_(outcome) {}

  qs_status Find() {
    const bool is_folder = rule_.name == kFolderElement;
    outcome_.folder = Expanded(is_folder ? L"Path" : L"StartPath");
    outcome_.exists = qs_directory_exists(outcome_.folder.c_str()) != 0;
    if (!outcome_.exists) {
      return QS_OK;
    }
    if (is_folder) {
      return Measure(outcome_.folder, Value(L"Pattern"), true);
    }
    return rule_.name == kFolderListElement ? FindInEach() : FindChildren();
  }

 private:
  std::wstring Value(std::wstring_view attribute) const {
    return PlainValue(rule_.Find(attribute));
  }

  std::wstring Expanded(std::wstring_view attribute) const {
    const std::wstring written = Value(attribute);
    return AskText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
      return qs_expand_junk_path(written.c_str(), folders_.user_home.c_str(),
                                 folders_.system_root.c_str(), out, capacity, needed);
    });
  }

  qs_status ListSubfolders(std::vector<std::wstring>& subfolders) {
    return qs_enumerate_directories(
        outcome_.folder.c_str(),
        [](void* user, const qs_char* path) {
          static_cast<std::vector<std::wstring>*>(user)->emplace_back(path);
        },
        &subfolders, state_.cancel_flag());
  }

  qs_status FindInEach() {
    std::vector<std::wstring> subfolders;
    const qs_status listed = ListSubfolders(subfolders);
    if (listed != QS_OK) {
      return listed;
    }
    const std::wstring end_path = Value(L"EndPath");
    const std::wstring wanted = Value(L"ContainsPath");
    for (const std::wstring& subfolder : subfolders) {
      if (qs_path_contains(subfolder.c_str(), wanted.c_str()) == 0) {
        continue;
      }
      const std::wstring place = Combined(subfolder, end_path);
      if (!IsReached(subfolder, place)) {
        continue;
      }
      const qs_status measured = Measure(place, {}, true);
      if (measured != QS_OK) {
        return measured;
      }
    }
    return QS_OK;
  }

  qs_status FindChildren() {
    std::vector<std::wstring> subfolders;
    const qs_status listed = ListSubfolders(subfolders);
    if (listed != QS_OK) {
      return listed;
    }
    for (const std::wstring& subfolder : subfolders) {
      const qs_status measured = Measure(subfolder, {}, true);
      if (measured != QS_OK) {
        return measured;
      }
    }
    return Measure(outcome_.folder, {}, false);
  }

  qs_status Measure(const std::wstring& folder, const std::wstring& pattern, bool below) {
    struct Sum {
      WalkState& state;
      RulePlace& place;
    };
    RulePlace& place = outcome_.places.emplace_back();
    place.path = TidyPath(folder);
    place.below = below;
    Sum sum = {state_, place};
    const qs_status status = qs_enumerate_files(
        folder.c_str(), pattern.c_str(), below ? 1 : 0,
        [](void* user, const qs_char* path, std::uint64_t size, std::uint64_t /*last_write*/,
           const qs_char* /*name*/) {
          Sum& seen = *static_cast<Sum*>(user);
          seen.state.Count(path, size);
          ++seen.place.files;
          seen.place.bytes += size;
        },
        &sum, state_.cancel_flag());
    outcome_.files += place.files;
    outcome_.bytes += place.bytes;
    return status;
  }

  const RuleElement& rule_;
  const ProtectedFolders& folders_;
  WalkState& state_;
  RuleOutcome& outcome_;
};

}  // namespace

qs_status FindPlaces(const std::vector<RuleUse>& rules, const ProtectedFolders& folders,
                     WalkState& state, std::vector<RuleOutcome>& outcomes) {
  for (const RuleUse& rule : rules) {
    if (state.IsCancelled()) {
      return QS_CANCELLED;
    }
    RuleOutcome& outcome = outcomes.emplace_back();
    const qs_status status = PlaceFinder(*rule.element, folders, state, outcome).Find();
    outcome.folder = TidyPath(outcome.folder);
    if (status != QS_OK) {
      return status;
    }
  }
  return QS_OK;
}

}  // namespace quastel::client
