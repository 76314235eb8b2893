#include "report_table.h"

#include <algorithm>
#include <string_view>

#include "display_text.h"
#include "path_text.h"
#include "status_text.h"
#include "text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

constexpr std::size_t kSizeWidth = 10;
constexpr std::size_t kTimeWidth = 16;
constexpr std::string_view kGap = "  ";

std::uint64_t Positive(std::int64_t size) {
  return static_cast<std::uint64_t>(std::max<std::int64_t>(size, 0));
}

std::string Shown(const std::wstring& path) {
  return ToUtf8(Printable(WithoutExtendedPrefix(path)));
}

// Category titles are the library's own, in ASCII: a byte is a column.
std::size_t CategoryWidth(const Report& report) {
  std::size_t width = std::string_view("Category").size();
  for (const ReportGroup& group : report.groups) {
    width = std::max(width, group.title.size());
  }
  return width;
}

void WriteRow(OutputStream& out, std::string_view size, std::string_view modified,
              std::string_view category, std::size_t category_width, std::string_view path) {
  std::string line = PadLeft(size, kSizeWidth);
  line.append(kGap).append(PadRight(modified, kTimeWidth));
  line.append(kGap).append(PadRight(category, category_width));
  out.Write(line.append(kGap).append(path).append("\n"));
}

void WriteRows(const Report& report, OutputStream& out) {
  const std::size_t width = CategoryWidth(report);
  WriteRow(out, "Size", "Modified", "Category", width, "Path");
  for (std::size_t i = 0; i < report.listed; ++i) {
    const ScanRow& row = report.rows[i];
    WriteRow(out, HumanSize(Positive(row.numbers.size)),
             LocalMinuteText(row.numbers.modified).value_or("-"), ToUtf8(row.title), width,
             Shown(row.path));
  }
}

void WriteGroups(const Report& report, OutputStream& out) {
  const std::size_t width = CategoryWidth(report);
  const std::string total = GroupedNumber(report.rows.size());
  const std::size_t count_width = std::max(total.size(), std::string_view("Files").size());
  const auto line = [&](std::string_view category, std::string_view count, std::string_view size) {
    out.Write(PadRight(category, width)
                  .append(kGap)
                  .append(PadLeft(count, count_width))
                  .append(kGap)
                  .append(PadLeft(size, kSizeWidth))
                  .append("\n"));
  };
  line("Category", "Files", "Size");
  for (const ReportGroup& group : report.groups) {
    line(ToUtf8(group.title), GroupedNumber(group.count), HumanSize(group.bytes));
  }
  line("Total", total, HumanSize(report.counters.total_bytes));
}

}  // namespace

void WriteTable(const Report& report, const ReportWords& words, OutputStream& out) {
  if (report.rows.empty()) {
    out.Write((report.status == QS_OK ? words.nothing_found : "Nothing was found.") + "\n");
  } else {
    if (report.listed != 0) {
      WriteRows(report, out);
      out.Write("\n");
    }
    if (report.listed < report.rows.size()) {
      out.Write("Showing " + GroupedNumber(report.listed) + " of " +
                GroupedNumber(report.rows.size()) + " rows.\n\n");
    }
    WriteGroups(report, out);
    out.Write("\n");
  }
  out.Write(Counted(report.counters.files_visited, "file", "files") + " seen (" +
            HumanSize(report.counters.bytes_visited) + ") in " +
            HumanDuration(report.performance.elapsed_us) + ".\n");
  if (report.Cancelled()) {
    out.Write("The scan was cancelled: this is what it had found until then.\n");
  } else if (report.status != QS_OK) {
    out.Write(std::string("The scan ended early: ") + StatusSentence(report.status) +
              ". This is what it had found until then.\n");
  }
}

}  // namespace quastel::client
