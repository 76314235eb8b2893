#include "stress/stressed_session.h"

#include <algorithm>
#include <set>
#include <utility>

#include "support/text.h"

namespace quastel::stress {

StressedSession::StressedSession(simulated::SimulatedWindows& machine, std::uint32_t mode,
                                 std::string_view name)
    : mode_(mode),
      folder_(machine, u"C:\\data\\" + support::Wide(name),
              {0, kLargestSmallFile, kLargestSmallFile + 1, 20'000'000}) {
  Create();
}

void StressedSession::Create() {
  QS_DEMAND(qs_session_create(&session_) == QS_OK);
}

void StressedSession::Destroy() {
  QS_DEMAND(qs_session_destroy(session_) == QS_OK);
  session_ = nullptr;
}

void StressedSession::DemandBusyInside() {
  QS_DEMAND(qs_session_destroy(session_) == QS_BUSY);
  QS_DEMAND(qs_session_start_scan(session_, u"C:\\", mode_) == QS_BUSY);
  QS_DEMAND(qs_session_start_clean(session_, nullptr, 0) == QS_BUSY);
}

qs_status StressedSession::ReadRow(std::uint64_t index, Row& row) const {
  Char path[kCapacity];
  Char name[kCapacity];
  std::uint64_t path_needed = 0;
  std::uint64_t name_needed = 0;
  const qs_status status = qs_session_report_row(session_, index, path, kCapacity, &path_needed,
                                                 name, kCapacity, &name_needed, &row.numbers);
  if (status == QS_OK) {
    row.path.assign(path, path_needed - 1);
    folder_.DemandRowOfOurs(row.path, TextView(name, name_needed - 1), row.numbers.size);
    QS_DEMAND(mode_ != QS_SESSION_LARGE_FILES || row.numbers.size > kLargestSmallFile);
  }
  return status;
}

std::vector<StressedSession::Row> StressedSession::ReadReport() const {
  std::uint64_t count = 0;
  QS_DEMAND(qs_session_report_count(session_, &count) == QS_OK);
  std::vector<Row> rows(count);
  for (std::uint64_t i = 0; i < count; ++i) {
    QS_DEMAND(ReadRow(i, rows[i]) == QS_OK);
  }
  return rows;
}

void StressedSession::DemandComplete(const std::vector<Row>& rows) const {
  std::set<Text> found;
  for (const Row& row : rows) {
    QS_DEMAND_SEEN(found.insert(row.path).second, support::Utf8(row.path));
  }
  for (const auto& [path, file] : folder_.files()) {
    const bool expected = mode_ != QS_SESSION_LARGE_FILES || file.size > kLargestSmallFile;
    QS_DEMAND_SEEN(found.contains(path) == expected, support::Utf8(path));
  }
}

// The files are deleted in the order given, up to the first that has changed.
void StressedSession::Clean(const std::vector<Row>& rows, Random& random) {
  std::vector<std::uint64_t> indexes;
  for (std::uint64_t i = 0; i < rows.size(); ++i) {
    if (random() % 3 == 0) {
      indexes.push_back(i);
    }
  }
  std::shuffle(indexes.begin(), indexes.end(), random);
  std::size_t first_changed = indexes.size();
  if (!indexes.empty() && random() % 2 == 0) {
    first_changed = random() % indexes.size();
    folder_.Change(rows[indexes[first_changed]].path, random);
  }
  const qs_status status =
      Persist([&] { return qs_session_start_clean(session_, indexes.data(), indexes.size()); });
  ++tally().cleans;

  qs_session_clean_status clean = {};
  QS_DEMAND(qs_session_poll_clean(session_, &clean) == QS_OK);
  QS_DEMAND(clean.requested == indexes.size() && clean.status == status);
  QS_DEMAND(clean.processed <= first_changed);
  if (status == QS_CANCELLED) {
    QS_DEMAND(clean.state == QS_STATE_CANCELLED);
    ++tally().cleans_cancelled;
  } else {
    QS_DEMAND(clean.processed == first_changed);
    const bool failed = first_changed < indexes.size();
    QS_DEMAND(status == (failed ? QS_FAILED : QS_OK));
    QS_DEMAND(clean.state == (failed ? QS_STATE_FAILED : QS_STATE_DONE));
  }
  const std::vector<Row> after = ReadReport();
  QS_DEMAND(after.size() == rows.size());
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    QS_DEMAND(after[indexes[i]].numbers.deleted == (i < clean.processed ? 1u : 0u));
    if (i < clean.processed) {
      folder_.NoteDeleted(rows[indexes[i]].path);
    }
  }
  tally().deleted += clean.processed;
  folder_.DemandUnharmed();
}

void StressedSession::Drive(Random& random) {
  folder_.Refresh(random);
  DrivenHandle() = this;
  const qs_status status =
      Persist([&] { return qs_session_start_scan(session_, folder_.root().c_str(), mode_); });
  DrivenHandle() = nullptr;
  ++tally().scans;
  const std::vector<Row> rows = ReadReport();
  folder_.DemandUnharmed();
  if (status == QS_CANCELLED) {
    ++tally().scans_cancelled;
    // What was cancelled cannot be cleaned.
    QS_DEMAND(Persist([&] { return qs_session_start_clean(session_, nullptr, 0); }) ==
              QS_UNSUPPORTED);
    ++tally().cleans_refused;
    return;
  }
  QS_DEMAND(status == QS_OK);
  DemandComplete(rows);
  Clean(rows, random);
}

void StressedSession::Query(Random& random) {
  // The members are read one after the other, so they are not compared with each other.
  qs_session_scan_status status = {};
  QS_DEMAND(qs_session_poll_scan(session_, &status) == QS_OK);
  QS_DEMAND(status.state <= QS_STATE_CANCELLED && status.reserved == 0);
  QS_DEMAND(status.status == QS_OK || status.status == QS_CANCELLED);
  QS_DEMAND(status.files_visited <= folder_.size() && status.row_count <= folder_.size());

  Char path[kCapacity];
  std::uint64_t needed = 0;
  QS_DEMAND(qs_session_scan_current_path(session_, path, kCapacity, &needed) == QS_OK);
  QS_DEMAND(needed == 1 || folder_.files().contains(Text(path, needed - 1)));

  std::uint64_t count = 0;
  QS_DEMAND(qs_session_report_count(session_, &count) == QS_OK);
  for (std::uint64_t i = 0; i < count; i += 1 + random() % 8) {
    Row row;
    const qs_status read = ReadRow(i, row);
    // Another scan may have begun since the rows were counted.
    QS_DEMAND(read == QS_OK || read == QS_NOT_FOUND);
    if (read == QS_NOT_FOUND) {
      break;
    }
    ++tally().rows_read;
  }

  qs_session_clean_status clean = {};
  QS_DEMAND(qs_session_poll_clean(session_, &clean) == QS_OK);
  QS_DEMAND(clean.state <= QS_STATE_FAILED && clean.reserved == 0);
}

void StressedSession::CancelScan() {
  QS_DEMAND(qs_session_cancel_scan(session_) == QS_OK);
}

void StressedSession::CancelClean() {
  QS_DEMAND(qs_session_cancel_clean(session_) == QS_OK);
}

void StressedSession::GetInTheWay() {
  QS_DEMAND(qs_session_start_scan(session_, nullptr, mode_) == QS_INVALID_ARGUMENT);
  const std::uint64_t nothing = UINT64_MAX;
  const qs_status cleaned = qs_session_start_clean(session_, &nothing, 1);
  QS_DEMAND(cleaned == QS_BUSY || cleaned == QS_NOT_FOUND || cleaned == QS_UNSUPPORTED);
  tally().busy += cleaned == QS_BUSY ? 1 : 0;
}

}  // namespace quastel::stress
