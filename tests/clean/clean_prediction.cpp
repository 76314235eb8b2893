#include "clean/clean_prediction.h"

#include <algorithm>
#include <map>
#include <utility>

namespace quastel::clean_tests {
namespace {

Text Lower(Text text) {
  for (Char& c : text) {
    c = c >= u'A' && c <= u'Z' ? static_cast<Char>(c + 32) : c;
  }
  return text;
}

}  // namespace

Model::Model(const World& world, const std::vector<Row>& rows, std::uint32_t kind)
    : world_(world), rows_(rows), kind_(kind) {}

std::optional<Prediction> Model::Predict(const Ids& ids, const std::vector<Event>& events) {
  std::vector<const Row*> work;
  std::set<std::uint64_t> taken;
  for (const std::uint64_t id : ids) {
    const Row* row = RowOf(id);
    if (row == nullptr || row->numbers.deleted != 0 || !taken.insert(id).second) {
      return std::nullopt;
    }
    work.push_back(row);
  }
  if (kind_ == QS_SCAN_KIND_DUPLICATES && TakesWholeSet(taken)) {
    return std::nullopt;
  }
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    // Insertion sort, stable by construction.
    for (std::size_t i = 1; i < work.size(); ++i) {
      for (std::size_t j = i; j > 0 && work[j - 1]->path.size() < work[j]->path.size(); --j) {
        std::swap(work[j - 1], work[j]);
      }
    }
  }
  Prediction result;
  CleanBlock& block = result.block;
  block.requested = ids.size();
  Happen(events, 0);
  for (const Row* row : work) {
    const bool deleted = IsUnchanged(*row) && IsReachable(row->path) && MayGo(row->path);
    ++block.processed;
    if (deleted) {
      ++block.deleted;
      block.bytes_freed += static_cast<std::uint64_t>(row->numbers.size);
      result.marks.insert(row->numbers.item_id);
      Remove(row->path, result);
    } else {
      ++block.failed;
    }
    Happen(events, block.processed);
    if (deleted && kind_ == QS_SCAN_KIND_JUNK_RULES) {
      RemoveFolderOf(row->path, result);
    }
  }
  block.status = block.deleted == 0 && block.failed > 0 ? QS_FAILED : QS_OK;
  block.state = block.status == QS_OK ? QS_STATE_DONE : QS_STATE_FAILED;
  result.status = block.status;
  return result;
}

const Row* Model::RowOf(std::uint64_t id) const {
  for (const Row& row : rows_) {
    if (row.numbers.kind != QS_ROW_GROUP && row.numbers.item_id == id) {
      return &row;
    }
  }
  return nullptr;
}

bool Model::TakesWholeSet(const std::set<std::uint64_t>& taken) const {
  std::map<std::uint64_t, std::pair<int, int>> sets;
  for (const Row& row : rows_) {
    if (row.numbers.deleted == 0) {
      auto& [copies, of_them_taken] = sets[row.numbers.group_id];
      ++copies;
      of_them_taken += taken.count(row.numbers.item_id) == 1;
    }
  }
  return std::any_of(sets.begin(), sets.end(),
                     [](const auto& set) { return set.second.first == set.second.second; });
}

void Model::Happen(const std::vector<Event>& events, std::uint64_t processed) {
  for (const Event& event : events) {
    if (event.after != processed) {
      continue;
    }
    if (event.what == Event::kVanishes) {
      gone_.insert(Lower(event.path));
    } else if (event.what == Event::kIsTouched) {
      touched_.insert(Lower(event.path));
    } else if (IsThere(FolderOf(event.path))) {
      appeared_.insert(event.path);
    }
  }
}

void Model::Remove(const Text& path, Prediction& result) {
  gone_.insert(Lower(path));
  result.removed.insert(Utf8(path));
}

std::optional<simulated::NodeFacts> Model::Facts(const Text& path) const {
  return gone_.count(Lower(path)) == 1 ? std::nullopt : world_.machine.Find(path);
}

bool Model::IsThere(const Text& path) const {
  return Facts(path).has_value();
}

Denial Model::DenialOf(const Text& path) const {
  const auto found = world_.denied.find(path);
  return found == world_.denied.end() ? Denial{} : found->second;
}

bool Model::IsLookable(const Text& path) const {
  return IsThere(path) && !DenialOf(path).querying;
}

bool Model::IsRealFolder(const Text& path) const {
  if (path.size() <= 2) {
    return true;
  }
  return IsRealFolder(FolderOf(path)) && IsLookable(path) && Facts(path)->is_folder &&
         !platform::IsReparsePoint(Facts(path)->attributes);
}

bool Model::IsReachable(const Text& path) const {
  return IsRealFolder(FolderOf(path)) && IsLookable(path) &&
         !platform::IsReparsePoint(Facts(path)->attributes);
}

bool Model::IsUnchanged(const Row& row) const {
  const auto facts = Facts(row.path);
  return facts && !facts->is_folder && touched_.count(Lower(row.path)) == 0 &&
         facts->size == static_cast<std::uint64_t>(row.numbers.size) &&
         facts->last_write + kTicksAt1601 == row.numbers.modified;
}

bool Model::MayGo(const Text& path) const {
  return !DenialOf(path).deleting && world_.locked.count(path) == 0 &&
         (Facts(path)->attributes & platform::kAttributeReadOnly) == 0;
}

Paths Model::EntriesOf(const Text& folder) const {
  Paths entries;
  for (const Text& name : world_.machine.NamesIn(folder)) {
    if (IsThere(folder + u"\\" + name)) {
      entries.push_back(folder + u"\\" + name);
    }
  }
  for (const Text& path : appeared_) {
    if (FolderOf(path) == folder) {
      entries.push_back(path);
    }
  }
  return entries;
}

bool Model::HasFiles(const Text& folder) const {
  if (DenialOf(folder).listing) {
    return false;
  }
  for (const Text& entry : EntriesOf(folder)) {
    const auto facts = Facts(entry);
    if (!facts || !facts->is_folder) {
      return true;  // one that appeared is a file
    }
    if (!platform::IsReparsePoint(facts->attributes) && HasFiles(entry)) {
      return true;
    }
  }
  return false;
}

void Model::RemoveFolderOf(const Text& path, Prediction& result) {
  const Text folder = FolderOf(path);
  const Text name = Lower(folder.substr(folder.rfind(u'\\') + 1));
  if (name != u"downloads" && IsRealFolder(folder) && !HasFiles(folder) &&
      EntriesOf(folder).empty() && MayGo(folder)) {
    Remove(folder, result);
    ++result.folders;
  }
}

}  // namespace quastel::clean_tests
