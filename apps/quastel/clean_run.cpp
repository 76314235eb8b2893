#include "clean_run.h"

#include <windows.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "held_file.h"
#include "path_text.h"

namespace quastel::client {
namespace {

CleanResult Refused(Obstacle obstacle) {
  return {Outcome::kRefused, obstacle};
}

Outcome OutcomeOf(Fate fate) {
  switch (fate) {
    case Fate::kKeep:
      return Outcome::kKept;
    case Fate::kUnselected:
      return Outcome::kUnselected;
    case Fate::kRepeated:
      return Outcome::kRepeated;
    case Fate::kRemove:
      break;
  }
  return Outcome::kNotTried;
}

bool MatchesSnapshot(const CleanFile& file) {
  return qs_file_matches_snapshot(file.path.c_str(), file.size,
                                  static_cast<std::int64_t>(file.modified)) != 0;
}

// What keeps a duplicate from going: nothing when both files are held, apart, and equal.
std::optional<Obstacle> CompareWithSurvivor(const HeldFile& victim, const HeldFile& survivor,
                                            const CleanFile& kept, const CleanOptions& options,
                                            const std::atomic<bool>& cancel) {
  const std::optional<FileIdentity> identity = victim.Identity();
  const std::optional<FileIdentity> kept_identity = survivor.Identity();
  if (!identity) {
    return Obstacle::kChanged;
  }
  if (!kept_identity) {
    return Obstacle::kSurvivorChanged;
  }
  if (*identity == *kept_identity) {
    return Obstacle::kSameFile;
  }
  if (!options.verify) {
    // Then the scan's word for the copy that stays has to be good.
    return MatchesSnapshot(kept) ? std::nullopt : std::optional(Obstacle::kSurvivorChanged);
  }
  switch (CompareContents(victim, survivor, cancel)) {
    case Comparison::kEqual:
    case Comparison::kCancelled:
      break;
    case Comparison::kDifferent:
      return Obstacle::kNotACopy;
    case Comparison::kUnreadable:
      return Obstacle::kUnreadable;
  }
  return std::nullopt;
}

}  // namespace

CleanRun::CleanRun(const CleanPlan& plan, CleanOptions options)
    : plan_(plan), options_(std::move(options)), results_(plan.files.size()) {}

CleanRun::~CleanRun() {
  Cancel();
  work_.Finish();
}

void CleanRun::Start() {
  work_.Start([this] { return RemoveAll(); });
}

CleanProgress CleanRun::Progress() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return progress_;
}

// What lies deep in a folder goes before what lies nearer to the root, so that folders are empty
// when their turn comes. Duplicates keep the order of the report, group by group.
std::vector<std::size_t> CleanRun::Order() const {
  std::vector<std::size_t> order(plan_.files.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (!plan_.duplicates) {
    std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
      return plan_.files[a].file.path.size() > plan_.files[b].file.path.size();
    });
  }
  return order;
}

qs_status CleanRun::RemoveAll() {
  for (const std::size_t i : Order()) {
    const PlannedFile& planned = plan_.files[i];
    if (planned.fate != Fate::kRemove) {
      results_[i].outcome = OutcomeOf(planned.fate);
      continue;
    }
    if (cancel_) {
      continue;
    }
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      progress_.path = planned.file.path;
    }
    results_[i] = RemoveOne(planned);
    const bool removed = results_[i].outcome == Outcome::kRemoved;
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      ++progress_.files;
      progress_.bytes += removed ? static_cast<std::uint64_t>(planned.file.size) : 0;
    }
    if (removed) {
      RemoveEmptyFolders(planned.file);
    }
  }
  return cancel_ ? QS_CANCELLED : QS_OK;
}

CleanResult CleanRun::RemoveOne(const PlannedFile& planned) {
  if (HasUnclearName(planned.file.path)) {
    return Refused(Obstacle::kUnclearName);
  }
  return plan_.duplicates ? RemoveDuplicate(planned) : Remove(planned.file);
}

CleanResult CleanRun::RemoveDuplicate(const PlannedFile& planned) {
  const CleanFile& kept = plan_.files[planned.survivor].file;
  HeldFile survivor;
  const unsigned long error = survivor.Open(kept.path, HeldFile::Sharing::kNobodyRemoves);
  if (error != ERROR_SUCCESS) {
    const bool gone = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return Refused(gone ? Obstacle::kSurvivorGone : Obstacle::kSurvivorInUse);
  }
  HeldFile victim;
  if (victim.Open(planned.file.path, HeldFile::Sharing::kMayBeRemoved) != ERROR_SUCCESS) {
    return Refused(FindObstacle(planned.file, options_.mode).value_or(Obstacle::kInUse));
  }
  const std::optional<Obstacle> obstacle =
      CompareWithSurvivor(victim, survivor, kept, options_, cancel_);
  if (cancel_) {
    return {};
  }
  return obstacle ? Refused(*obstacle) : Remove(planned.file);
}

CleanResult CleanRun::Remove(const CleanFile& file) const {
  if (options_.dry_run) {
    const std::optional<Obstacle> obstacle = FindObstacle(file, options_.mode);
    return obstacle ? Refused(*obstacle) : CleanResult{Outcome::kWouldRemove, std::nullopt};
  }
  const auto last_write = static_cast<std::int64_t>(file.modified);
  const std::int32_t removed =
      options_.mode == CleanMode::kRecycle
          ? qs_move_snapshot_to_recycle_bin(file.path.c_str(), file.size, last_write)
          : qs_delete_snapshot_permanently(file.path.c_str(), file.size, last_write);
  if (removed != 0) {
    return {Outcome::kRemoved, std::nullopt};
  }
  return Refused(FindObstacle(file, options_.mode).value_or(Obstacle::kUnknown));
}

// From the file's folder upwards, and never the rule's own folder: programs expect their folder for
// temporary files to be there. What goes to the Recycle Bin keeps its folder to come back to.
void CleanRun::RemoveEmptyFolders(const CleanFile& file) {
  if (options_.mode == CleanMode::kRecycle || file.rule_folder.empty()) {
    return;
  }
  for (std::wstring folder = FolderOf(file.path); IsBelow(folder, file.rule_folder);
       folder = FolderOf(folder)) {
    if (qs_empty_directory_eligible(folder.c_str()) == 0 ||
        qs_delete_permanently(folder.c_str()) == 0) {
      return;
    }
    removed_folders_.push_back(folder);
  }
}

}  // namespace quastel::client
