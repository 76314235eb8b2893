#include "duplicate_report.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "name_order.h"
#include "path_text.h"

namespace quastel::client {
namespace {

struct DuplicateSet {
  ReportGroup group;
  std::vector<ScanRow> rows;  // by path
  bool hidden = false;
};

int CompareBy(SortKey key, const ReportGroup& a, const ReportGroup& b) {
  switch (key) {
    case SortKey::kReclaimable:
      return Descending(a.Reclaimable(), b.Reclaimable());
    case SortKey::kSize:
      return Descending(a.file_size, b.file_size);
    case SortKey::kCount:
      return Descending(a.count, b.count);
    default:
      return 0;  // the first path decides
  }
}

std::vector<DuplicateSet> TakeSets(Report& report) {
  // By id first, which is the order of the groups below.
  std::sort(report.rows.begin(), report.rows.end(), [](const ScanRow& a, const ScanRow& b) {
    return a.numbers.group_id != b.numbers.group_id ? a.numbers.group_id < b.numbers.group_id
                                                    : IsPathBefore(a.path, b.path);
  });
  std::vector<DuplicateSet> sets;
  auto row = report.rows.begin();
  for (ReportGroup& group : GroupRows(report.rows)) {
    DuplicateSet set;
    for (std::uint64_t i = 0; i < group.count; ++i, ++row) {
      // What the library calls the location of a duplicate is the key of its group.
      row->group_key = std::move(row->location);
      row->location = FolderOf(row->path);
      set.rows.push_back(std::move(*row));
    }
    set.hidden = group.file_size < report.options.min_size.value_or(0);
    set.group = std::move(group);
    sets.push_back(std::move(set));
  }
  return sets;
}

}  // namespace

void ArrangeDuplicates(Report& report) {
  std::vector<DuplicateSet> sets = TakeSets(report);
  std::sort(sets.begin(), sets.end(),
            [key = report.options.sort](const DuplicateSet& a, const DuplicateSet& b) {
              if (a.hidden != b.hidden) {
                return b.hidden;
              }
              const int order = CompareBy(key, a.group, b.group);
              return order != 0 ? order < 0
                                : IsPathBefore(a.rows.front().path, b.rows.front().path);
            });
  const auto shown = static_cast<std::size_t>(
      std::count_if(sets.begin(), sets.end(), [](const DuplicateSet& set) { return !set.hidden; }));
  report.listed_groups = WithinTop(shown, report.options);
  report.rows.clear();
  for (DuplicateSet& set : sets) {
    std::move(set.rows.begin(), set.rows.end(), std::back_inserter(report.rows));
    report.groups.push_back(std::move(set.group));
    if (report.groups.size() <= report.listed_groups) {
      report.listed = report.rows.size();
    }
  }
}

std::uint64_t TotalReclaimable(const Report& report) {
  std::uint64_t total = 0;
  for (const ReportGroup& group : report.groups) {
    total += group.Reclaimable();
  }
  return total;
}

}  // namespace quastel::client
