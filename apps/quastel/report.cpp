#include "report.h"

#include <windows.h>

#include <algorithm>
#include <map>

#include "path_text.h"

namespace quastel::client {
namespace {

// Without regard to case, as the file system compares names; negative, zero or positive.
int CompareNames(const std::wstring& a, const std::wstring& b) {
  return CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(),
                              static_cast<int>(b.size()), TRUE) -
         CSTR_EQUAL;
}

template <typename Number>
int Descending(Number a, Number b) {
  return a == b ? 0 : (a > b ? -1 : 1);
}

int CompareBy(SortKey key, const ScanRow& a, const ScanRow& b) {
  switch (key) {
    case SortKey::kSize:
      return Descending(a.numbers.size, b.numbers.size);
    case SortKey::kModified:
      return Descending(a.numbers.modified, b.numbers.modified);
    case SortKey::kCategory:
      return CompareNames(a.title, b.title);
    case SortKey::kName:
      return CompareNames(a.name, b.name);
    case SortKey::kPath:
      break;
  }
  return 0;
}

void Sort(std::vector<ScanRow>& rows, SortKey key) {
  std::sort(rows.begin(), rows.end(), [key](const ScanRow& a, const ScanRow& b) {
    int order = CompareBy(key, a, b);
    if (order == 0 && key == SortKey::kCategory) {
      order = CompareBy(SortKey::kSize, a, b);
    }
    if (order == 0) {
      order = CompareNames(a.path, b.path);
    }
    // Two names may differ in case alone; the order must not depend on the walk.
    return order != 0 ? order < 0 : a.path < b.path;
  });
}

std::vector<ReportGroup> Group(const std::vector<ScanRow>& rows) {
  std::map<std::uint64_t, ReportGroup> groups;
  for (const ScanRow& row : rows) {
    ReportGroup& group = groups[row.numbers.group_id];
    group.id = row.numbers.group_id;
    group.title = row.title;
    ++group.count;
    group.bytes += static_cast<std::uint64_t>(std::max<std::int64_t>(row.numbers.size, 0));
  }
  std::vector<ReportGroup> list;
  for (const auto& entry : groups) {
    list.push_back(entry.second);
  }
  return list;
}

}  // namespace

void CollectRows(const ProductScan& scan, Report& report) {
  report.counters = scan.Poll();
  report.performance = scan.Performance();
  const std::uint64_t count = scan.RowCount();
  report.rows.resize(static_cast<std::size_t>(count));
  RowReader reader(scan);
  for (std::uint64_t i = 0; i < count; ++i) {
    ScanRow& row = report.rows[static_cast<std::size_t>(i)];
    reader.Read(i, row);
    row.path = TidyPath(row.path);
    row.location = TidyPath(row.location);
  }
  Sort(report.rows, report.options.sort);
  report.groups = Group(report.rows);
  report.listed = report.rows.size();
  if (report.options.top && *report.options.top < count) {
    report.listed = static_cast<std::size_t>(*report.options.top);
  }
}

}  // namespace quastel::client
