#include "duplicate_table.h"

#include <cstddef>
#include <string>

#include "display_text.h"
#include "duplicate_report.h"
#include "report_table.h"

namespace quastel::client {
namespace {

void WriteGroup(const ReportGroup& group, OutputStream& out) {
  out.Write(Counted(group.count, "copy", "copies") + " of " + HumanSize(group.file_size) + ", " +
            HumanSize(group.Reclaimable()) + " reclaimable\n");
}

}  // namespace

void WriteDuplicates(const Report& report, OutputStream& out) {
  std::size_t row = 0;
  for (std::size_t i = 0; i < report.listed_groups; ++i) {
    const ReportGroup& group = report.groups[i];
    WriteGroup(group, out);
    for (const std::size_t end = row + static_cast<std::size_t>(group.count); row < end; ++row) {
      out.Write("  " + FittedPath(report.rows[row].path, 2, out) + "\n");
    }
    out.Write("\n");
  }
  WriteShownCount(report.listed_groups, report.groups.size(), "groups", out);
  out.Write(Counted(report.groups.size(), "group", "groups") + ", " +
            Counted(report.rows.size(), "file", "files") + ", " +
            HumanSize(report.counters.total_bytes) + "; " + HumanSize(TotalReclaimable(report)) +
            " reclaimable by keeping one file of each group.\n");
}

}  // namespace quastel::client
