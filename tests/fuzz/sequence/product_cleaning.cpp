// Cleans of a product scan.

#include <algorithm>
#include <map>
#include <set>

#include "fuzz/demand.h"
#include "fuzz/path_model.h"
#include "fuzz/sequence/comparison.h"
#include "fuzz/sequence/product_player.h"

namespace quastel::fuzz::sequence {

std::vector<std::uint64_t> ProductPlayer::SomeIds(Input& input) {
  std::vector<std::uint64_t> items;
  for (const Row& row : rows_) {
    if (row.IsItem()) {
      items.push_back(row.item_id);
    }
  }
  std::vector<std::uint64_t> ids;
  if (input.OneIn(4)) {
    ids = items;  // all of them, but for what follows
  }
  for (std::size_t n = input.Below(6); n > 0; --n) {
    if (input.OneIn(24)) {
      ids.push_back(input.OneIn(2) ? QS_NO_ITEM_ID : items.size() + input.Below(2));
    } else if (!items.empty()) {
      const std::uint64_t id = items[input.Below(items.size())];
      const bool known = std::find(ids.begin(), ids.end(), id) != ids.end();
      if (!known || input.OneIn(24)) {
        ids.push_back(id);
      }
    }
  }
  return ids;
}

// Why such a clean is refused, or QS_OK.
qs_status ProductPlayer::RefusalOf(const std::vector<std::uint64_t>& ids) const {
  if (status_.state != QS_STATE_DONE && status_.state != QS_STATE_CANCELLED) {
    return QS_UNSUPPORTED;
  }
  std::set<std::uint64_t> named;
  for (const std::uint64_t id : ids) {
    const auto row = std::find_if(rows_.begin(), rows_.end(), [id](const Row& candidate) {
      return candidate.IsItem() && candidate.item_id == id;
    });
    if (row == rows_.end() || row->deleted || !named.insert(id).second) {
      return QS_INVALID_ARGUMENT;
    }
  }
  if (kind_ == QS_SCAN_KIND_DUPLICATES) {
    std::map<std::uint64_t, std::pair<int, int>> groups;  // rows left, rows named
    for (const Row& row : rows_) {
      if (!row.deleted) {
        ++groups[row.group_id].first;
        groups[row.group_id].second += named.contains(row.item_id) ? 1 : 0;
      }
    }
    for (const auto& [group, counts] : groups) {
      if (counts.first == counts.second) {
        return QS_INVALID_ARGUMENT;
      }
    }
  }
  return QS_OK;
}

// The rows in the order in which they are cleaned.
std::vector<std::size_t> ProductPlayer::WorkList(const std::vector<std::uint64_t>& ids) const {
  std::vector<std::size_t> list;
  for (const std::uint64_t id : ids) {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      if (rows_[i].item_id == id) {
        list.push_back(i);
      }
    }
  }
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    std::stable_sort(list.begin(), list.end(), [this](std::size_t a, std::size_t b) {
      return rows_[a].path.size() > rows_[b].path.size();
    });
  }
  return list;
}

Permission ProductPlayer::PermissionFor(const std::vector<std::size_t>& list) const {
  Permission permission;
  for (const std::size_t index : list) {
    const Row& row = rows_[index];
    permission.files.emplace(KeyOf(row.path), FileSnapshot{row.size, row.modified});
  }
  permission.parents = kind_ == QS_SCAN_KIND_JUNK_RULES;
  return permission;
}

// The clean of the first `count` rows of the list, on a copy of the disks as they were.
void ProductPlayer::DemandClean(Disk disk, const std::vector<std::size_t>& list,
                                std::size_t count) {
  std::uint64_t deleted = 0;
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const Row& row = rows_[list[i]];
    const Text key = KeyOf(row.path);
    const bool goes = disk.MatchesSnapshot(key, row.size, row.modified) && disk.CanDelete(key);
    Demand(ReadRow(scan_, list[i]).deleted == goes, "a row is marked when its file went");
    if (!goes) {
      continue;
    }
    ++deleted;
    bytes += static_cast<std::uint64_t>(row.size);
    disk.Remove(key);
    const std::size_t last = row.path.find_last_of(u"\\/");
    if (kind_ == QS_SCAN_KIND_JUNK_RULES && last >= model::RootLength(row.path)) {
      const Text folder = row.path.substr(0, last);
      if (disk.IsOfferedAsEmpty(folder) && disk.CanDelete(KeyOf(folder))) {
        disk.Remove(KeyOf(folder));
      }
    }
  }
  Demand(
      clean_.deleted == deleted && clean_.failed == count - deleted && clean_.bytes_freed == bytes,
      "a clean counts what it did");
  DemandDisk(world_, disk, false);
}

void ProductPlayer::TakeMarks() {
  std::uint64_t marks = 0;
  std::map<std::uint64_t, bool> group_lives;
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    Row row = ReadRow(scan_, i);
    Demand(row.deleted || !rows_[i].deleted, "a mark stays");
    marks += row.deleted != rows_[i].deleted ? 1 : 0;
    rows_[i].deleted = row.deleted;
    Demand(row == rows_[i], "a clean changes nothing of a row but its mark");
    group_lives[row.group_id] |= !row.deleted;
  }
  Demand(marks == clean_.deleted, "there are as many new marks as deleted files");
  if (kind_ == QS_SCAN_KIND_DUPLICATES) {
    for (const auto& [group, lives] : group_lives) {
      Demand(lives, "one copy of every set stays");
    }
  }
}

void ProductPlayer::Clean(Input& input) {
  const std::vector<std::uint64_t> ids = SomeIds(input);
  if (ids.empty() ? input.OneIn(2) : input.OneIn(16)) {
    const qs_status refusal = RefusalOf({});
    const qs_status answer = qs_product_scan_start_clean(scan_, nullptr, ids.size());
    Demand(answer == (ids.empty() ? refusal : QS_INVALID_ARGUMENT), "ids may be null without any");
    if (answer == QS_OK) {
      clean_ = {};
      clean_.size = sizeof clean_;
      clean_.state = QS_STATE_DONE;
    }
    return;
  }
  const qs_status refusal = RefusalOf(ids);
  if (refusal != QS_OK) {
    const Watch::Quiet quiet;
    Demand(qs_product_scan_start_clean(scan_, ids.data(), ids.size()) == refusal,
           "such a clean is refused");
    ++seen_.refused;
    return;
  }

  const std::vector<std::size_t> list = WorkList(ids);
  const Plan plan = Plan::From(input);
  simulated::SimulatedWindows& machine = world_.machine();
  world_.ForgetTouched();
  const Disk before = world_.Look();
  const std::uint64_t changes = world_.changes();
  machine.ClearFaults();
  if (plan.meeting != Meeting::kParked && input.OneIn(12)) {
    machine.FailAnyCall(1 + input.Below(60),
                        input.OneIn(2) ? simulated::Repeat::kOnce : simulated::Repeat::kFromThenOn);
  }
  Outside outside;
  qs_status status = QS_OK;
  watch_.Begin(PermissionFor(list));
  seen_.met += Fly(
      watch_, plan, [&] { status = qs_product_scan_start_clean(scan_, ids.data(), ids.size()); },
      [&] { Meet(input, plan.IsRace(), true, outside); });
  watch_.End();
  const bool disturbed = machine.faults_injected() > 0 || world_.changes() != changes;
  machine.ClearFaults();

  Demand(qs_product_scan_poll_clean_detailed(scan_, &clean_) == QS_OK, "a clean can be polled");
  Demand(clean_.requested == ids.size() && clean_.processed == clean_.deleted + clean_.failed &&
             clean_.processed <= clean_.requested && clean_.reserved == 0,
         "the counters of a clean fit each other");
  Demand(clean_.status == status, "a clean leaves its status");
  const qs_status complete = clean_.deleted == 0 && !ids.empty() ? QS_FAILED : QS_OK;
  if (status == QS_CANCELLED) {
    Demand(outside.cancelled, "only a cancel cancels");
    ++seen_.cancelled;
  } else {
    Demand(!outside.cancelled || plan.IsRace(), "a cancel counts, whatever else happened");
    Demand(status == complete && clean_.processed == ids.size(), "a clean goes through its list");
  }
  Demand(clean_.state == (status == QS_OK          ? QS_STATE_DONE
                          : status == QS_CANCELLED ? QS_STATE_CANCELLED
                                                   : QS_STATE_FAILED),
         "the state follows from the status");
  const auto processed = static_cast<std::size_t>(clean_.processed);
  if (disturbed) {
    std::set<Text> named;
    for (std::size_t i = 0; i < processed; ++i) {
      const Text key = KeyOf(rows_[list[i]].path);
      named.insert(key);
      if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
        named.insert(ParentKeyOf(key));
      }
    }
    DemandDisk(world_, before, false, named);
  } else {
    DemandClean(before, list, processed);
  }
  TakeMarks();
  seen_.deleted += clean_.deleted;
  seen_.kept += clean_.failed;
}

}  // namespace quastel::fuzz::sequence
