// platform/search.h on the simulated disks.

#include "platform/search.h"

#include <algorithm>

#include "simulated_windows/state.h"

namespace quastel::platform {
namespace {

using simulated::Call;
using simulated::Children;
using simulated::Disk;
using simulated::FaultOf;
using simulated::Found;
using simulated::LastLink;
using simulated::Living;
using simulated::Node;
using simulated::SeamCall;
using simulated::SearchObject;
using simulated::State;

void SetTime(std::uint32_t (&halves)[2], std::uint64_t time) {
  halves[0] = static_cast<std::uint32_t>(time);
  halves[1] = static_cast<std::uint32_t>(time >> 32);
}

void Fill(const Node& node, TextView name, FindData& entry) {
  entry = FindData{};
  entry.attributes = node.shown_attributes();
  SetTime(entry.creation_time, node.last_write);
  SetTime(entry.last_access_time, node.last_write);
  SetTime(entry.last_write_time, node.last_write);
  entry.size_high = static_cast<std::uint32_t>(node.size >> 32);
  entry.size_low = static_cast<std::uint32_t>(node.size);
  entry.reparse_tag = node.reparse_tag;
  std::copy(name.begin(), name.end(), entry.name);
}

bool Fits(const SearchObject& search, const Node& node) {
  return (!search.folders_only || IsDirectory(node.attributes)) &&
         search.pattern.Matches(node.name);
}

// Where the search goes on in a folder that may have changed since.
Children::const_iterator Resume(const Disk& disk, const SearchObject& search) {
  const Children& children = *search.folder->children;
  if (!search.started) {
    return children.begin();
  }
  return disk.generation() == search.generation ? search.next
                                                : children.upper_bound(TextView(search.last));
}

bool Advance(const Disk& disk, SearchObject& search, FindData& entry) {
  while (search.dots_due > 0) {
    const TextView name = search.dots_due-- == 2 ? QS_TEXT(".") : QS_TEXT("..");
    if (search.pattern.Matches(name)) {
      Fill(*search.folder, name, entry);
      return true;
    }
  }
  const Children& children = *search.folder->children;
  if (const TextView exact = search.pattern.exact_name(); !exact.empty()) {
    const auto found = search.started ? children.end() : children.find(exact);
    search.started = true;
    search.next = children.end();
    search.generation = disk.generation();
    if (found == children.end() || !Fits(search, **found)) {
      search.last = exact;
      return false;
    }
    search.last = (*found)->name;
    Fill(**found, (*found)->name, entry);
    return true;
  }
  auto at = Resume(disk, search);
  while (at != children.end() && !Fits(search, **at)) {
    ++at;
  }
  search.generation = disk.generation();
  if (at == children.end()) {
    search.next = at;
    return false;
  }
  search.started = true;
  search.last = (*at)->name;
  Fill(**at, (*at)->name, entry);
  search.next = ++at;
  return true;
}

// Opens the search; answers the error with which FindFirstFile fails.
Error Begin(const Disk& disk, TextView path, SearchObject& search, FindData& entry) {
  const simulated::PathParts parts = disk.Parse(path);
  if (parts.error != Error::kNone) {
    return parts.error;
  }
  const simulated::Place place = disk.Locate(parts);
  if (place.error != Error::kNone) {
    return place.error;
  }
  if (place.name.empty() || parts.trailing_separator) {
    return Error::kFileNotFound;  // a folder itself is not searched for by its name and a separator
  }
  if (place.name.find_first_of(QS_TEXT("/:|")) != Text::npos) {
    return Error::kInvalidName;
  }
  if (place.folder->denial().listing) {
    return Error::kAccessDenied;
  }
  const bool ended_in_dot = !simulated::HasVerbatimPrefix(path) && path.back() == Char{'.'} &&
                            place.name.back() != Char{'.'};
  search.folder = place.folder;
  search.pattern = simulated::NamePattern(place.name, ended_in_dot);
  const bool is_root = place.folder->parent == nullptr;
  search.dots_due = is_root || !search.pattern.exact_name().empty() ? 0 : 2;
  return Advance(disk, search, entry) ? Error::kNone : Error::kFileNotFound;
}

Result<SearchHandle> First(Call kind, const Char* pattern, SearchOperation operation,
                           FindData& entry) {
  State& s = Living();
  SeamCall call(s, kind, pattern, static_cast<std::uint64_t>(operation));
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  SearchObject search;
  search.folders_only =
      operation == SearchOperation::kLimitToDirectories && s.directory_limit.load();
  const Error error = Begin(s.disk, ViewOf(pattern), search, entry);
  if (error != Error::kNone) {
    return call.Answer(error);
  }
  return SearchHandle(s.ledger.Open(std::move(search)));
}

}  // namespace

Result<SearchHandle> FindFirstBasic(const Char* pattern, SearchOperation operation,
                                    FindData& entry) noexcept {
  return First(Call::kFindFirstBasic, pattern, operation, entry);
}

Result<SearchHandle> FindFirst(const Char* pattern, FindData& entry) noexcept {
  return First(Call::kFindFirst, pattern, SearchOperation::kNameMatch, entry);
}

Error FindNext(const SearchHandle& search, FindData& entry) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kFindNext);
  MutexLock lock(s.mutex);
  if (const Error fault = FaultOf(s, call); fault != Error::kNone) {
    return call.Answer(fault);
  }
  if (!search.valid()) {
    return call.Answer(Error::kInvalidHandle);
  }
  SearchObject& object = s.ledger.Get<SearchObject>(search.raw());
  return call.Answer(Advance(s.disk, object, entry) ? Error::kNone : Error::kNoMoreFiles);
}

void SearchPolicy::Close(RawHandle raw) noexcept {
  State& s = Living();
  SeamCall call(s, Call::kFindClose);
  MutexLock lock(s.mutex);
  s.ledger.Close<SearchObject>(raw);
}

}  // namespace quastel::platform
