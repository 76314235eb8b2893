#include "junk_table.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "display_text.h"
#include "junk_report.h"
#include "report_table.h"
#include "text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

constexpr std::string_view kFilesTitle = "Files";

struct Line {
  std::wstring name;
  std::uint64_t count;
  std::uint64_t bytes;
  std::wstring path;
};

// Names are in any script, so that they are padded by the columns that they take.
std::string PadCells(const std::wstring& text, std::size_t width) {
  const std::size_t cells = CellWidth(text);
  return ToUtf8(text).append(width > cells ? width - cells : 0, ' ');
}

bool IsUnselected(const ReportGroup& group) {
  return group.count != 0 && group.selected_count == 0;
}

std::wstring Shown(const ReportGroup& group) {
  const std::wstring name = Printable(GroupName(group));
  return name.empty() ? L"(without a name)" : name;
}

// A category's own files, which lie in no folder's group, get a line as if they had one.
std::vector<Line> GroupLines(const Report& report) {
  std::vector<Line> lines;
  for (std::size_t i = 0; i < report.listed_groups; ++i) {
    const ReportGroup& group = report.groups[i];
    if (group.count == 0) {
      continue;
    }
    const std::wstring indent(2 * group.depth, L' ');
    const std::wstring_view mark =
        group.depth == 0 && IsUnselected(group) ? L" (not selected)" : L"";
    lines.push_back({(indent + Shown(group)).append(mark), group.count, group.bytes, group.path});
    if (group.IsCategory() && group.own_count != 0) {
      lines.push_back({indent + L"  Files by themselves", group.own_count, group.own_bytes,
                       group.own_location});
    }
  }
  return lines;
}

void WriteGroups(const Report& report, OutputStream& out) {
  const std::vector<Line> lines = GroupLines(report);
  const std::wstring title = L"Category";
  std::size_t name_width = title.size();
  for (const Line& line : lines) {
    name_width = std::max(name_width, CellWidth(line.name));
  }
  const std::size_t count_width =
      std::max(GroupedNumber(report.rows.size()).size(), kFilesTitle.size());
  const auto front = [&](const std::wstring& name, std::string_view count, std::string_view size) {
    std::string line = PadCells(name, name_width);
    line.append(kGap).append(PadLeft(count, count_width));
    return line.append(kGap).append(PadLeft(size, kSizeWidth));
  };
  const std::size_t used = name_width + count_width + kSizeWidth + 3 * kGap.size();
  WriteHeading(front(title, kFilesTitle, "Size"), out);
  for (const Line& line : lines) {
    std::string text = front(line.name, GroupedNumber(line.count), HumanSize(line.bytes));
    if (!line.path.empty()) {
      text.append(kGap).append(FittedPath(line.path, used, out));
    }
    out.Write(text.append("\n"));
  }
  FileSum total;
  FileSum selected;
  for (std::size_t i = 0; i < report.listed_groups; ++i) {
    const ReportGroup& group = report.groups[i];
    if (group.depth == 0) {
      total.count += group.count;
      total.bytes += group.bytes;
      selected.count += group.selected_count;
      selected.bytes += group.selected_bytes;
    }
  }
  out.Write(front(L"Total", GroupedNumber(total.count), HumanSize(total.bytes)) + "\n");
  out.Write(front(L"Selected", GroupedNumber(selected.count), HumanSize(selected.bytes)) + "\n");
}

void WriteFiles(const Report& report, OutputStream& out) {
  const auto front = [](std::string_view size, std::string_view modified) {
    std::string line = PadLeft(size, kSizeWidth);
    return line.append(kGap).append(PadRight(modified, kTimeWidth)).append(kGap);
  };
  WriteHeading(front("Size", "Modified") + "Path", out);
  for (std::size_t i = 0; i < report.listed; ++i) {
    const ScanRow& row = report.rows[i];
    const std::string line =
        front(HumanSize(PositiveSize(row)), LocalMinuteText(row.numbers.modified).value_or("-"));
    out.Write(line + FittedPath(row.path, line.size(), out) + "\n");
  }
  out.Write("\n");
  const auto others = static_cast<std::size_t>(FilesOfOtherCategories(report).count);
  WriteShownCount(report.listed, report.rows.size() - others, "files", out);
}

// The names of categories that a test accepts, separated by commas.
template <typename Accept>
std::string CategoryNames(const Report& report, const Accept& accept) {
  std::string names;
  for (std::size_t i = 0; i < report.listed_groups; ++i) {
    const ReportGroup& group = report.groups[i];
    if (group.depth == 0 && accept(group)) {
      names += (names.empty() ? "" : ", ") + ToUtf8(Shown(group));
    }
  }
  return names;
}

std::string Remarks(const Report& report) {
  std::string remarks;
  const FileSum others = FilesOfOtherCategories(report);
  if (others.count != 0) {
    remarks.append("Left out: " + Counted(others.count, "file", "files") + ", " +
                   HumanSize(others.bytes) + ", in other categories.\n");
  }
  const std::string unselected = CategoryNames(report, IsUnselected);
  if (!unselected.empty()) {
    remarks.append("Not selected: " + unselected +
                   ". Nothing brings these files back, so that each has to be picked by hand.\n");
  }
  const std::string empty =
      CategoryNames(report, [](const ReportGroup& group) { return group.count == 0; });
  if (!empty.empty()) {
    remarks.append("Nothing in: " + empty + ".\n");
  }
  return remarks;
}

}  // namespace

void WriteJunk(const Report& report, OutputStream& out) {
  if (report.listed != 0 && (report.options.junk.list_files || report.options.top)) {
    WriteFiles(report, out);
  }
  WriteGroups(report, out);
  const std::string remarks = Remarks(report);
  if (!remarks.empty()) {
    out.Write("\n" + remarks);
  }
}

}  // namespace quastel::client
