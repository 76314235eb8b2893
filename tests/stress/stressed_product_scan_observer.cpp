// What observers of a product scan do, and what every answer that they get has to be.

#include <cstddef>

#include "stress/stressed_product_scan.h"
#include "support/text.h"

namespace quastel::stress {
namespace {

void DemandGoodState(std::uint32_t state, qs_status status) {
  switch (state) {
    case QS_STATE_IDLE:
    case QS_STATE_RUNNING:
    case QS_STATE_DONE:
      QS_DEMAND(status == QS_OK);
      return;
    case QS_STATE_CANCELLED:
      QS_DEMAND(status == QS_CANCELLED);
      return;
    default:
      QS_DEMAND(state == QS_STATE_FAILED && status == QS_FAILED);
  }
}

template <typename Call>
Text QueryText(Call&& call) {
  Char text[kCapacity];
  std::uint64_t needed = 0;
  QS_DEMAND(call(text, std::uint64_t{kCapacity}, &needed) == QS_OK);
  QS_DEMAND(needed >= 1 && needed <= kCapacity && text[needed - 1] == 0);
  return Text(text, needed - 1);
}

}  // namespace

qs_status StressedProductScan::ReadRow(std::uint64_t index, Row& row) const {
  Char path[kCapacity];
  Char name[kCapacity];
  Char title[kCapacity];
  Char location[4 * kCapacity];  // the key of a small file holds its whole content
  std::uint64_t path_needed = 0;
  std::uint64_t name_needed = 0;
  const qs_status status = qs_product_scan_report_row(
      scan_, index, path, kCapacity, &path_needed, name, kCapacity, &name_needed, title, kCapacity,
      nullptr, location, 4 * kCapacity, nullptr, &row.numbers);
  if (status == QS_OK) {
    row.path.assign(path, path_needed - 1);
    row.name.assign(name, name_needed - 1);
  }
  return status;
}

void StressedProductScan::DemandGoodRow(std::uint64_t index, const Row& row) const {
  if (row.numbers.kind == QS_ROW_GROUP) {
    QS_DEMAND(kind_ == QS_SCAN_KIND_JUNK_RULES && row.numbers.item_id == QS_NO_ITEM_ID);
    QS_DEMAND(row.numbers.deletable == 0 && row.numbers.deleted == 0);
    return;
  }
  QS_DEMAND(row.numbers.kind == kind_);
  QS_DEMAND(row.numbers.size >= 0 && row.numbers.item_id <= index);
  QS_DEMAND(kind_ == QS_SCAN_KIND_JUNK_RULES || row.numbers.item_id == index);
  folder_.DemandRowOfOurs(row.path, row.name, static_cast<std::uint64_t>(row.numbers.size));
}

void StressedProductScan::Query(Random& random) {
  qs_product_scan_status status = {};
  QS_DEMAND(qs_product_scan_poll(scan_, &status) == QS_OK);
  DemandGoodState(status.state, status.status);
  QS_DEMAND(status.files_visited <= folder_.size() && status.item_count <= folder_.size());

  qs_product_scan_performance performance = {};
  performance.size = sizeof(performance);
  QS_DEMAND(qs_product_scan_get_performance(scan_, &performance) == QS_OK);
  QS_DEMAND(performance.item_count <= performance.row_count);

  const Text path = QueryText([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_product_scan_current_path(scan_, out, capacity, needed);
  });
  QS_DEMAND_SEEN(path.empty() || folder_.files().contains(path), support::Utf8(path));
  const Text group = QueryText([this](Char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_product_scan_current_group(scan_, out, capacity, needed);
  });
  QS_DEMAND(group.empty() || group == u"first" || group == u"second");

  std::uint64_t count = 0;
  QS_DEMAND(qs_product_scan_report_count(scan_, &count) == QS_OK);
  for (std::uint64_t i = 0; i < count; i += 1 + random() % 8) {
    Row row;
    const qs_status read = ReadRow(i, row);
    // Another scan may have begun since the rows were counted.
    QS_DEMAND(read == QS_OK || read == QS_NOT_FOUND);
    if (read == QS_NOT_FOUND) {
      break;
    }
    DemandGoodRow(i, row);
    ++tally().rows_read;
    std::uint64_t parent = 0;
    const qs_status asked = qs_product_scan_report_row_parent_group_id(scan_, i, &parent);
    QS_DEMAND(asked == QS_OK || asked == QS_NOT_FOUND);
  }

  qs_product_clean_status clean = {};
  QS_DEMAND(qs_product_scan_poll_clean(scan_, &clean) == QS_OK);
  DemandGoodState(clean.state, clean.status);
  qs_product_clean_detail detail = {};
  detail.size = sizeof(detail);
  QS_DEMAND(qs_product_scan_poll_clean_detailed(scan_, &detail) == QS_OK);
  DemandGoodState(detail.state, detail.status);
  QS_DEMAND(detail.processed == detail.deleted + detail.failed);
  QS_DEMAND(detail.processed <= detail.requested);
}

void StressedProductScan::CancelScan() {
  QS_DEMAND(qs_product_scan_cancel(scan_) == QS_OK);
}

void StressedProductScan::CancelClean() {
  QS_DEMAND(qs_product_scan_cancel_clean(scan_) == QS_OK);
}

void StressedProductScan::GetInTheWay() {
  const qs_status started = qs_product_scan_start(scan_, nullptr);
  QS_DEMAND(started == QS_BUSY || started == QS_INVALID_ARGUMENT);
  const std::uint64_t nothing = QS_NO_ITEM_ID;
  const qs_status cleaned = qs_product_scan_start_clean(scan_, &nothing, 1);
  QS_DEMAND(cleaned == QS_BUSY || cleaned == QS_INVALID_ARGUMENT || cleaned == QS_UNSUPPORTED);
  tally().busy += started == QS_BUSY ? 1 : 0;
}

}  // namespace quastel::stress
