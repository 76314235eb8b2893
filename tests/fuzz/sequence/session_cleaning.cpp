// Cleans of a session.

#include <algorithm>
#include <set>

#include "fuzz/demand.h"
#include "fuzz/sequence/comparison.h"
#include "fuzz/sequence/session_player.h"

namespace quastel::fuzz::sequence {

// Why such a clean is refused, or QS_OK.
qs_status SessionPlayer::RefusalOf(const std::vector<std::uint64_t>& indexes) const {
  if (status_.state != QS_STATE_DONE || mode_ == QS_SESSION_INSPECT) {
    return QS_UNSUPPORTED;
  }
  std::set<std::uint64_t> named;
  for (const std::uint64_t index : indexes) {
    if (index >= rows_.size()) {
      return QS_NOT_FOUND;
    }
    if (!named.insert(index).second) {
      return QS_INVALID_ARGUMENT;
    }
  }
  return QS_OK;
}

// The clean of the first `processed` rows, and of the one that ended it, on a copy of the disks.
void SessionPlayer::DemandClean(Disk disk, const std::vector<std::uint64_t>& indexes,
                                std::size_t processed, qs_status status) {
  const auto goes = [&](const SessionRow& row) {
    const Text key = KeyOf(row.path);
    return disk.MatchesSnapshot(key, static_cast<std::int64_t>(row.size), row.modified) &&
           disk.CanDelete(key);
  };
  for (std::size_t i = 0; i < processed; ++i) {
    const SessionRow& row = rows_[static_cast<std::size_t>(indexes[i])];
    Demand(goes(row), "a session removes what is unchanged");
    Demand(ReadRow(indexes[i]).deleted, "a row is marked when its file went");
    disk.Remove(KeyOf(row.path));
  }
  if (status == QS_FAILED) {
    Demand(processed < indexes.size() && !goes(rows_[static_cast<std::size_t>(indexes[processed])]),
           "a session's clean ends at what it cannot remove");
  }
  DemandDisk(world_, disk, false);
}

void SessionPlayer::TakeMarks() {
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const SessionRow row = ReadRow(i);
    Demand(row.deleted || !rows_[i].deleted, "a mark stays");
    rows_[i].deleted = row.deleted;
    Demand(row == rows_[i], "a clean changes nothing of a row but its mark");
  }
}

void SessionPlayer::Clean(Input& input) {
  std::vector<std::uint64_t> indexes;
  for (std::size_t n = input.Below(6); n > 0; --n) {
    const std::uint64_t index = input.Below(rows_.size() + (input.OneIn(16) ? 2 : 0));
    const bool known = std::find(indexes.begin(), indexes.end(), index) != indexes.end();
    if (!known || input.OneIn(16)) {
      indexes.push_back(index);
    }
  }
  if (indexes.size() == 1 && input.OneIn(4)) {
    Demand(qs_session_start_clean(session_, nullptr, 1) == QS_INVALID_ARGUMENT,
           "indexes may be null without any");
    return;
  }
  const qs_status refusal = RefusalOf(indexes);
  if (refusal != QS_OK) {
    const Watch::Quiet quiet;
    Demand(qs_session_start_clean(session_, indexes.data(), indexes.size()) == refusal,
           "such a clean is refused");
    ++seen_.refused;
    return;
  }
  Permission permission;
  for (const std::uint64_t index : indexes) {
    const SessionRow& row = rows_[static_cast<std::size_t>(index)];
    permission.files.emplace(KeyOf(row.path),
                             FileSnapshot{static_cast<std::int64_t>(row.size), row.modified});
  }
  const Plan plan = Plan::From(input);
  simulated::SimulatedWindows& machine = world_.machine();
  world_.ForgetTouched();
  const Disk before = world_.Look();
  const std::uint64_t changes = world_.changes();
  machine.ClearFaults();
  if (plan.meeting != Meeting::kParked && input.OneIn(12)) {
    machine.FailAnyCall(1 + input.Below(60), simulated::Repeat::kOnce);
  }
  bool cancelled = false;
  qs_status status = QS_OK;
  watch_.Begin(std::move(permission));
  seen_.met += Fly(
      watch_, plan,
      [&] { status = qs_session_start_clean(session_, indexes.data(), indexes.size()); },
      [&] { Meet(input, plan.IsRace(), true, cancelled); });
  watch_.End();
  const bool disturbed = machine.faults_injected() > 0 || world_.changes() != changes;
  machine.ClearFaults();

  Demand(qs_session_poll_clean(session_, &clean_) == QS_OK, "a clean can be polled");
  Demand(clean_.requested == indexes.size() && clean_.processed <= indexes.size() &&
             clean_.status == status && clean_.reserved == 0,
         "a session's clean counts what it did");
  Demand(clean_.state == (status == QS_OK          ? QS_STATE_DONE
                          : status == QS_CANCELLED ? QS_STATE_CANCELLED
                                                   : QS_STATE_FAILED),
         "the state follows from the status");
  const auto processed = static_cast<std::size_t>(clean_.processed);
  Demand(status == QS_CANCELLED ? cancelled
         : status == QS_OK      ? processed == indexes.size() && (!cancelled || plan.IsRace())
                                : status == QS_FAILED && processed < indexes.size(),
         "a session's clean ends with a status that it can have");
  seen_.cancelled += status == QS_CANCELLED ? 1 : 0;
  if (disturbed) {
    std::set<Text> named;
    for (const std::uint64_t index : indexes) {
      named.insert(KeyOf(rows_[static_cast<std::size_t>(index)].path));
    }
    DemandDisk(world_, before, false, named);
  } else {
    DemandClean(before, indexes, processed, status);
  }
  TakeMarks();
  seen_.deleted += processed;
  seen_.kept += status == QS_FAILED ? 1 : 0;
}

}  // namespace quastel::fuzz::sequence
