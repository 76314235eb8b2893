#include "large_table.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "display_text.h"
#include "report_table.h"
#include "text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

// Category titles are the library's own, in ASCII: a byte is a column.
std::size_t CategoryWidth(const Report& report) {
  std::size_t width = std::string_view("Category").size();
  for (const ReportGroup& group : report.groups) {
    width = std::max(width, group.title.size());
  }
  return width;
}

// A row up to its path.
std::string RowFront(std::string_view size, std::string_view modified, std::string_view category,
                     std::size_t category_width) {
  std::string line = PadLeft(size, kSizeWidth);
  line.append(kGap).append(PadRight(modified, kTimeWidth));
  return line.append(kGap).append(PadRight(category, category_width)).append(kGap);
}

void WriteRows(const Report& report, OutputStream& out) {
  const std::size_t width = CategoryWidth(report);
  WriteHeading(RowFront("Size", "Modified", "Category", width) + "Path", out);
  for (std::size_t i = 0; i < report.listed; ++i) {
    const ScanRow& row = report.rows[i];
    const std::string front =
        RowFront(HumanSize(PositiveSize(row)), LocalMinuteText(row.numbers.modified).value_or("-"),
                 ToUtf8(row.title), width);
    out.Write(front + FittedPath(row.path, front.size(), out) + "\n");
  }
}

void WriteGroups(const Report& report, OutputStream& out) {
  const std::size_t width = CategoryWidth(report);
  const std::string total = GroupedNumber(report.rows.size());
  const std::size_t count_width = std::max(total.size(), std::string_view("Files").size());
  const auto line = [&](std::string_view category, std::string_view count, std::string_view size) {
    return PadRight(category, width)
        .append(kGap)
        .append(PadLeft(count, count_width))
        .append(kGap)
        .append(PadLeft(size, kSizeWidth));
  };
  WriteHeading(line("Category", "Files", "Size"), out);
  for (const ReportGroup& group : report.groups) {
    out.Write(line(ToUtf8(group.title), GroupedNumber(group.count), HumanSize(group.bytes)) + "\n");
  }
  out.Write(line("Total", total, HumanSize(report.counters.total_bytes)) + "\n");
}

}  // namespace

void WriteLargeFiles(const Report& report, OutputStream& out) {
  if (report.listed != 0) {
    WriteRows(report, out);
    out.Write("\n");
  }
  WriteShownCount(report.listed, report.rows.size(), "rows", out);
  WriteGroups(report, out);
}

}  // namespace quastel::client
