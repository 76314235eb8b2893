#include "report.h"

#include <algorithm>
#include <map>

#include "path_text.h"
#include "product_scan.h"

namespace quastel::client {

void ReadRows(const ProductScan& scan, Report& report) {
  report.counters = scan.Poll();
  report.performance = scan.Performance();
  const std::uint64_t count = scan.RowCount();
  report.rows.resize(static_cast<std::size_t>(count));
  RowReader reader(scan);
  for (std::uint64_t i = 0; i < count; ++i) {
    ScanRow& row = report.rows[static_cast<std::size_t>(i)];
    reader.Read(i, row);
    row.path = TidyPath(row.path);
    if (report.request.kind == QS_SCAN_KIND_JUNK_RULES) {
      row.parent_group_id = scan.ParentGroupId(i);
    }
  }
}

std::vector<ReportGroup> GroupRows(const std::vector<ScanRow>& rows) {
  std::map<std::uint64_t, ReportGroup> groups;
  for (const ScanRow& row : rows) {
    ReportGroup& group = groups[row.numbers.group_id];
    group.id = row.numbers.group_id;
    group.title = row.title;
    ++group.count;
    group.file_size = PositiveSize(row);
    group.bytes += group.file_size;
  }
  std::vector<ReportGroup> list;
  for (const auto& entry : groups) {
    list.push_back(entry.second);
  }
  return list;
}

std::size_t WithinTop(std::size_t count, const ScanOptions& options) {
  return options.top && *options.top < count ? static_cast<std::size_t>(*options.top) : count;
}

std::uint64_t PositiveSize(const ScanRow& row) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(row.numbers.size, 0));
}

}  // namespace quastel::client
