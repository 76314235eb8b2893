#include "large_report.h"

#include <algorithm>

#include "name_order.h"
#include "path_text.h"

namespace quastel::client {
namespace {

int CompareBy(SortKey key, const ScanRow& a, const ScanRow& b) {
  switch (key) {
    case SortKey::kSize:
      return Descending(a.numbers.size, b.numbers.size);
    case SortKey::kModified:
      return Descending(a.numbers.modified, b.numbers.modified);
    case SortKey::kCategory: {
      const int order = CompareNames(a.title, b.title);
      return order != 0 ? order : CompareBy(SortKey::kSize, a, b);
    }
    case SortKey::kName:
      return CompareNames(a.name, b.name);
    default:
      return 0;  // the path decides
  }
}

}  // namespace

void ArrangeLargeFiles(Report& report) {
  for (ScanRow& row : report.rows) {
    row.location = TidyPath(row.location);
  }
  std::sort(report.rows.begin(), report.rows.end(),
            [key = report.options.sort](const ScanRow& a, const ScanRow& b) {
              const int order = CompareBy(key, a, b);
              return order != 0 ? order < 0 : IsPathBefore(a.path, b.path);
            });
  report.listed = WithinTop(report.rows.size(), report.options);
  report.groups = GroupRows(report.rows);
  report.listed_groups = report.groups.size();
}

}  // namespace quastel::client
