#include "fuzz/sequence/session_player.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "fuzz/demand.h"
#include "fuzz/guarded_buffer.h"
#include "fuzz/sequence/comparison.h"
#include "fuzz/sequence/report.h"
#include "fuzz/sequence/text_query.h"

namespace quastel::fuzz::sequence {

SessionPlayer::SessionPlayer(World& world, Watch& watch, CallSequenceSeen& seen)
    : world_(world), watch_(watch), seen_(seen) {
  Recreate();
}

SessionPlayer::~SessionPlayer() {
  Demand(qs_session_destroy(session_) == QS_OK, "an idle session can be destroyed");
}

void SessionPlayer::Recreate() {
  if (session_ != nullptr) {
    Demand(qs_session_destroy(session_) == QS_OK, "an idle session can be destroyed");
  }
  session_ = nullptr;
  Demand(qs_session_create(&session_) == QS_OK && session_ != nullptr, "a session can be made");
  rows_.clear();
  current_path_.clear();
  mode_ = 0;
  status_ = {};
  clean_ = {};
}

void SessionPlayer::Play(Input& input) {
  switch (input.Below(8)) {
    case 0:
    case 1:
      Scan(input);
      break;
    case 2:
    case 3:
    case 4:
      Clean(input);
      break;
    case 5:
      ReadRows(input);
      break;
    case 6:
      RefuseScan(input);
      break;
    default:
      if (input.OneIn(3)) {
        Recreate();
      }
      Demand(
          qs_session_cancel_scan(session_) == QS_OK && qs_session_cancel_clean(session_) == QS_OK,
          "a cancel without anything to cancel does nothing");
      break;
  }
  DemandSteady();
}

void SessionPlayer::DemandSteady() {
  qs_session_scan_status status;
  std::memset(&status, 0xAB, sizeof status);
  Demand(qs_session_poll_scan(session_, &status) == QS_OK &&
             std::memcmp(&status, &status_, sizeof status) == 0,
         "the state of an idle session stays");
  qs_session_clean_status clean;
  std::memset(&clean, 0xAB, sizeof clean);
  Demand(qs_session_poll_clean(session_, &clean) == QS_OK &&
             std::memcmp(&clean, &clean_, sizeof clean) == 0,
         "the state of an idle session's clean stays");
  std::uint64_t count = 0;
  Demand(qs_session_report_count(session_, &count) == QS_OK && count == rows_.size(),
         "the number of rows of an idle session stays");
  const Text path = TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_session_scan_current_path(session_, out, capacity, needed);
  });
  Demand(path == current_path_, "the current path of an idle session stays");
  Demand(world_.machine().open_handles() == 0, "nothing is left open");
}

SessionPlayer::SessionRow SessionPlayer::ReadRow(std::uint64_t index) {
  std::uint64_t needed[2] = {};
  qs_session_row numbers = {};
  Demand(qs_session_report_row(session_, index, nullptr, 0, &needed[0], nullptr, 0, &needed[1],
                               &numbers) == QS_BUFFER_TOO_SMALL,
         "a session's row without buffers");
  SessionRow row;
  row.path.resize(static_cast<std::size_t>(needed[0]));
  row.name.resize(static_cast<std::size_t>(needed[1]));
  Demand(qs_session_report_row(session_, index, row.path.data(), needed[0], nullptr,
                               row.name.data(), needed[1], nullptr, &numbers) == QS_OK,
         "a session's row with buffers of the lengths it gave");
  row.path.pop_back();
  row.name.pop_back();
  row.size = numbers.size;
  row.modified = numbers.modified;
  Demand(numbers.deleted <= 1, "a mark is 0 or 1");
  row.deleted = numbers.deleted != 0;
  return row;
}

std::vector<SessionPlayer::SessionRow> SessionPlayer::ReadReport() {
  std::uint64_t count = 0;
  Demand(qs_session_report_count(session_, &count) == QS_OK, "the rows are counted");
  std::vector<SessionRow> rows;
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(ReadRow(i));
  }
  return rows;
}

void SessionPlayer::ReadRows(Input& input) {
  const std::size_t index = input.Below(rows_.size() + 2);
  qs_session_row numbers = {};
  numbers.size = 77;
  std::uint64_t needed[2] = {7, 7};
  if (index >= rows_.size()) {
    Demand(qs_session_report_row(session_, index, nullptr, 0, &needed[0], nullptr, 0, &needed[1],
                                 &numbers) == QS_NOT_FOUND,
           "a session has no row behind the last");
    Demand(needed[0] == 7 && needed[1] == 7 && numbers.size == 77,
           "a row that is not there stores nothing");
    return;
  }
  const SessionRow& row = rows_[index];
  GuardedBuffer<Char> path(SomeCapacity(input, row.path.size() + 1));
  GuardedBuffer<Char> name(SomeCapacity(input, row.name.size() + 1));
  const bool path_fits = path.capacity() > row.path.size();
  const bool name_fits = name.capacity() > row.name.size();
  Demand(qs_session_report_row(session_, index, path.data(), path.capacity(), &needed[0],
                               name.data(), name.capacity(), &needed[1],
                               &numbers) == (path_fits && name_fits ? QS_OK : QS_BUFFER_TOO_SMALL),
         "one refused text is the answer for a session's row");
  Demand(needed[0] == row.path.size() + 1 && needed[1] == row.name.size() + 1,
         "the lengths of the texts of a session's row");
  path_fits ? path.DemandHolds(row.path, "a path that fits is copied")
            : path.DemandUntouched("a path that does not fit is left out");
  name_fits ? name.DemandHolds(row.name, "a name that fits is copied")
            : name.DemandUntouched("a name that does not fit is left out");
  Demand(numbers.size == row.size && numbers.modified == row.modified &&
             numbers.deleted == (row.deleted ? 1u : 0u),
         "the numbers of a session's row");
}

void SessionPlayer::RefuseScan(Input& input) {
  const Watch::Quiet quiet;
  const qs_status status =
      input.OneIn(2)   ? qs_session_start_scan(session_, u"C:\\t",
                                               3 + static_cast<std::uint32_t>(input.Number(2)))
      : input.OneIn(2) ? qs_session_start_scan(session_, u"", 0)
                       : qs_session_start_scan(session_, nullptr, 0);
  Demand(status == QS_INVALID_ARGUMENT, "such a scan is refused");
  ++seen_.refused;
}

void SessionPlayer::Scan(Input& input) {
  const Text root = world_.SomeFolder(input);
  const auto mode = static_cast<std::uint32_t>(input.Below(3));
  const Plan plan = Plan::From(input);
  simulated::SimulatedWindows& machine = world_.machine();
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS",
                         input.OneIn(8) ? std::optional<Text>(u"60") : std::nullopt);
  world_.ForgetTouched();
  const Disk before = world_.Look();
  const std::vector<FoundFile> visited = FilesOf(before, {.root = root});
  std::vector<SessionRow> expected;
  std::uint64_t bytes = 0;
  for (const FoundFile& file : visited) {
    bytes += file.size;
    if (mode != QS_SESSION_LARGE_FILES || file.size > 10'485'760) {
      expected.push_back({file.path, file.name, file.size, file.modified, false});
    }
  }
  const std::uint64_t changes = world_.changes();
  machine.ClearFaults();
  if (plan.meeting != Meeting::kParked && input.OneIn(12)) {
    machine.FailAnyCall(1 + input.Byte(), simulated::Repeat::kOnce);
  }
  bool cancelled = false;
  qs_status status = QS_OK;
  watch_.Begin({});
  seen_.met += Fly(
      watch_, plan, [&] { status = qs_session_start_scan(session_, root.c_str(), mode); },
      [&] { Meet(input, plan.IsRace(), false, cancelled); });
  watch_.End();
  const bool disturbed = machine.faults_injected() > 0 || world_.changes() != changes;
  machine.ClearFaults();

  DemandDisk(world_, before, false);
  mode_ = mode;
  rows_ = ReadReport();
  Demand(qs_session_poll_scan(session_, &status_) == QS_OK, "an ended scan can be polled");
  current_path_ = TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_session_scan_current_path(session_, out, capacity, needed);
  });
  if (status == QS_CANCELLED) {
    Demand(cancelled, "only a cancel cancels");
    ++seen_.cancelled;
  } else {
    Demand(!cancelled || plan.IsRace(), "a cancel of a session counts");
    Demand(status == QS_OK, "a session's scan is complete");
  }
  Demand(status_.state == (status == QS_OK ? QS_STATE_DONE : QS_STATE_CANCELLED) &&
             status_.status == status && status_.row_count == rows_.size() && status_.reserved == 0,
         "the state follows from the status");
  if (disturbed) {
    return;
  }
  if (status == QS_OK) {
    Demand(rows_ == expected, "the rows of a session");
    Demand(status_.files_visited == visited.size() && status_.bytes_visited == bytes,
           "the files seen are counted");
    Demand(current_path_ == (visited.empty() ? Text() : visited.back().path),
           "the current path is that of the last file");
    seen_.session_scans += rows_.empty() ? 0 : 1;
  } else {
    Demand(
        rows_.size() <= expected.size() && std::equal(rows_.begin(), rows_.end(), expected.begin()),
        "a cancelled session has the first rows");
    Demand(status_.files_visited <= visited.size(), "no more files are seen than there are");
  }
}

}  // namespace quastel::fuzz::sequence
