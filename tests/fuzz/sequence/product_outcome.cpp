// What a scan leaves, against what it should have found.

#include <algorithm>

#include "fuzz/demand.h"
#include "fuzz/sequence/duplicate_model.h"
#include "fuzz/sequence/product_player.h"
#include "fuzz/sequence/text_query.h"

namespace quastel::fuzz::sequence {

void ProductPlayer::TakeScan(const ProductRequest& request, const ScanOutcome& expected,
                             qs_status status, const Plan& plan, const Outside& outside,
                             bool disturbed) {
  kind_ = request.kind();
  rows_ = ReadReport(scan_);
  Demand(qs_product_scan_poll(scan_, &status_) == QS_OK, "an ended scan can be polled");
  performance_.size = sizeof performance_;
  Demand(qs_product_scan_get_performance(scan_, &performance_) == QS_OK,
         "an ended scan has its performance");
  clean_ = {};
  clean_.size = sizeof clean_;

  const bool may_be_cancelled = outside.cancelled;
  if (may_be_cancelled && !plan.IsRace()) {
    Demand(status == QS_CANCELLED, "a cancel counts, whatever else happened");
  }
  if (status == QS_CANCELLED) {
    Demand(may_be_cancelled, "only a cancel cancels");
    ++seen_.cancelled;
  } else if (disturbed) {
    Demand(status == QS_OK || status == QS_FAILED || status == expected.status ||
               (kind_ == QS_SCAN_KIND_JUNK_RULES &&
                (status == QS_NOT_FOUND || status == QS_INVALID_ARGUMENT)),
           "a disturbed scan ends with a status that it can have");
  } else {
    Demand(status == expected.status, "the status of a scan");
    seen_.failed_scans += status != QS_OK ? 1 : 0;
  }
  DemandWellFormed(rows_, kind_);
  if (!disturbed && expected.is_certain) {
    DemandRows(rows_, expected.rows, status != QS_CANCELLED);
  }
  if (!disturbed && kind_ == QS_SCAN_KIND_DUPLICATES) {
    DemandEqualContents(world_.machine(), rows_);
  }
  for (const auto& [index, row] : outside.read) {
    Demand(index < rows_.size() && rows_[static_cast<std::size_t>(index)] == row,
           "a row that was read from the running scan stays");
  }
  Demand(outside.rows_seen <= rows_.size(), "rows are only added");

  const std::uint32_t state = status == QS_OK          ? QS_STATE_DONE
                              : status == QS_CANCELLED ? QS_STATE_CANCELLED
                                                       : QS_STATE_FAILED;
  Demand(status_.state == state && status_.status == status && performance_.status == status,
         "the state follows from the status");
  if (!disturbed && status == expected.status) {
    DemandCounters(expected);
  }
  if (!disturbed) {
    DemandCurrentTexts(expected, outside);
  }
  std::uint64_t items = 0;
  std::uint64_t bytes = 0;
  for (const Row& row : rows_) {
    items += row.IsItem() ? 1 : 0;
    bytes += static_cast<std::uint64_t>(row.size);
  }
  Demand(status_.item_count == items && performance_.item_count == items &&
             performance_.row_count == rows_.size() && status_.total_bytes == bytes,
         "the rows are counted");
  Demand(performance_.size == sizeof performance_ && performance_.kind == kind_ &&
             status_.reserved == 0,
         "the kind of the scan");
  Demand(status_.files_visited == performance_.files_visited &&
             status_.bytes_visited == performance_.bytes_visited,
         "both records have the same counters");
  Demand(kind_ == QS_SCAN_KIND_DUPLICATES || status_.path_published == 0,
         "only a duplicate scan shows paths without counting");
}

void ProductPlayer::DemandCounters(const ScanOutcome& expected) const {
  std::uint64_t bytes = 0;
  for (const FoundFile& file : expected.visited) {
    bytes += file.size;
  }
  Demand(status_.files_visited == expected.visited.size() && status_.bytes_visited == bytes,
         "the files seen are counted");
  Demand(performance_.candidates == expected.candidates, "the candidates are counted");
}

void ProductPlayer::DemandCurrentTexts(const ScanOutcome& expected, const Outside& outside) const {
  const Text path = TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_product_scan_current_path(scan_, out, capacity, needed);
  });
  const bool known = std::any_of(expected.visited.begin(), expected.visited.end(),
                                 [&path](const FoundFile& file) { return file.path == path; });
  Demand(path.empty() || known, "the current path is one that the scan saw");
  if (status_.status == QS_CANCELLED) {
    return;
  }
  Demand(path.empty() == expected.visited.empty(), "there is a current path once there was a file");
  if (!expected.visited.empty() && kind_ != QS_SCAN_KIND_DUPLICATES && !outside.clock_moved) {
    Demand(path == expected.visited[0].path, "the current path changes every 20 ms at most");
  }
  const Text group = TextFrom([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_product_scan_current_group(scan_, out, capacity, needed);
  });
  Demand(group == expected.current_group, "the current group is the last category");
}

}  // namespace quastel::fuzz::sequence
