#include "junk_report.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "category_words.h"
#include "name_order.h"
#include "path_text.h"
#include "text.h"

namespace quastel::client {
namespace {

int CompareBy(SortKey key, const ScanRow& a, const ScanRow& b) {
  switch (key) {
    case SortKey::kSize:
      return Descending(a.numbers.size, b.numbers.size);
    case SortKey::kModified:
      return Descending(a.numbers.modified, b.numbers.modified);
    case SortKey::kCategory: {
      const int order = CompareNames(a.category, b.category);
      return order != 0 ? order : CompareBy(SortKey::kSize, a, b);
    }
    case SortKey::kName:
      return CompareNames(a.name, b.name);
    default:
      return 0;  // the path decides
  }
}

class JunkTree {
 public:
  explicit JunkTree(Report& report) : report_(report) {}

  void Build() {
    std::vector<ScanRow> files;
    for (ScanRow& row : report_.rows) {
      if (row.numbers.kind == QS_ROW_GROUP) {
        AddGroup(row);
      } else {
        AddFile(row);
        files.push_back(std::move(row));
      }
    }
    report_.rows = std::move(files);
    // A group's header comes after that of the group around it.
    for (std::size_t i = report_.groups.size(); i-- > 0;) {
      const ReportGroup& group = report_.groups[i];
      if (group.parent_id != 0) {
        Add(group, report_.groups[index_.at(group.parent_id)]);
      }
    }
  }

  // The outermost category around a group.
  const ReportGroup& CategoryOf(std::uint64_t group_id) const {
    return report_.groups[top_[index_.at(group_id)]];
  }

 private:
  void AddGroup(ScanRow& header) {
    ReportGroup group;
    group.id = header.numbers.group_id;
    group.parent_id = header.parent_group_id;
    group.title = std::move(header.title);
    group.path = std::move(header.path);
    const std::size_t index = report_.groups.size();
    std::size_t top = index;
    if (group.parent_id != 0) {
      const std::size_t parent = index_.at(group.parent_id);
      group.depth = report_.groups[parent].depth + 1;
      top = top_[parent];
    }
    index_[group.id] = index;
    top_.push_back(top);
    report_.groups.push_back(std::move(group));
  }

  void AddFile(ScanRow& row) {
    ReportGroup& group = report_.groups[index_.at(row.numbers.group_id)];
    const std::uint64_t size = PositiveSize(row);
    // What the library calls the location of junk is the name of its group.
    row.location = FolderOf(row.path);
    row.rule_folder = group.path;
    row.category = GroupName(CategoryOf(row.numbers.group_id));
    if (group.own_count == 0) {
      group.own_location = row.location;
    } else if (group.own_location != row.location) {
      group.own_location.clear();
    }
    ++group.own_count;
    group.own_bytes += size;
    ++group.count;
    group.bytes += size;
    if (row.numbers.preselect != 0) {
      ++group.selected_count;
      group.selected_bytes += size;
    }
  }

  static void Add(const ReportGroup& group, ReportGroup& parent) {
    parent.count += group.count;
    parent.bytes += group.bytes;
    parent.selected_count += group.selected_count;
    parent.selected_bytes += group.selected_bytes;
  }

  Report& report_;
  std::unordered_map<std::uint64_t, std::size_t> index_;  // id -> place in the groups
  std::vector<std::size_t> top_;                          // the place of each group's category
};

FileSum Sum(const std::vector<ScanRow>& rows, std::size_t first, std::size_t end) {
  FileSum sum;
  for (std::size_t i = first; i < end; ++i) {
    ++sum.count;
    sum.bytes += PositiveSize(rows[i]);
  }
  return sum;
}

}  // namespace

void ArrangeJunk(Report& report) {
  JunkTree tree(report);
  tree.Build();
  const std::wstring wanted = FromUtf8(report.options.junk.category);
  const auto is_listed = [&](std::uint64_t group_id) {
    return wanted.empty() || NamesCategory(wanted, tree.CategoryOf(group_id).title);
  };
  const auto hidden =
      std::stable_partition(report.rows.begin(), report.rows.end(),
                            [&](const ScanRow& row) { return is_listed(row.numbers.group_id); });
  std::sort(report.rows.begin(), hidden,
            [key = report.options.sort](const ScanRow& a, const ScanRow& b) {
              const int order = CompareBy(key, a, b);
              if (order != 0) {
                return order < 0;
              }
              // A file that two rules find has two rows.
              return a.path != b.path ? IsPathBefore(a.path, b.path)
                                      : a.numbers.item_id < b.numbers.item_id;
            });
  report.listed = WithinTop(static_cast<std::size_t>(hidden - report.rows.begin()), report.options);
  // The tree finds groups by their places, so these change last.
  std::vector<ReportGroup> listed_groups;
  std::vector<ReportGroup> other_groups;
  for (const ReportGroup& group : report.groups) {
    (is_listed(group.id) ? listed_groups : other_groups).push_back(group);
  }
  report.listed_groups = listed_groups.size();
  listed_groups.insert(listed_groups.end(), other_groups.begin(), other_groups.end());
  report.groups = std::move(listed_groups);
}

std::wstring GroupName(const ReportGroup& group) {
  return group.IsCategory() ? CategoryWords(group.title) : group.title;
}

FileSum SelectedFiles(const Report& report) {
  FileSum sum;
  for (const ReportGroup& group : report.groups) {
    if (group.parent_id == 0) {
      sum.count += group.selected_count;
      sum.bytes += group.selected_bytes;
    }
  }
  return sum;
}

FileSum ListedFiles(const Report& report) {
  return Sum(report.rows, 0, report.listed);
}

FileSum FilesOfOtherCategories(const Report& report) {
  FileSum sum;
  for (std::size_t i = report.listed_groups; i < report.groups.size(); ++i) {
    if (report.groups[i].parent_id == 0) {
      sum.count += report.groups[i].count;
      sum.bytes += report.groups[i].bytes;
    }
  }
  return sum;
}

}  // namespace quastel::client
