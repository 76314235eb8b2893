#include "report_table.h"

#include "colour.h"
#include "display_text.h"
#include "path_text.h"
#include "status_text.h"
#include "text.h"

namespace quastel::client {
namespace {

// A path cut shorter than this tells nothing.
constexpr std::size_t kShortestPath = 20;

}  // namespace

void WriteTable(const Report& report, const TableParts& parts, OutputStream& out) {
  if (report.rows.empty()) {
    out.Write((report.status == QS_OK ? parts.nothing_found : "Nothing was found.") + "\n");
  } else {
    parts.write_findings(report, out);
    out.Write("\n");
  }
  out.Write(Counted(report.counters.files_visited, "file", "files") + " seen (" +
            HumanSize(report.counters.bytes_visited) + ") in " +
            HumanDuration(report.performance.elapsed_us) + ".\n");
  WriteEarlyEnd(report.status, out);
}

void WriteEarlyEnd(qs_status status, OutputStream& out) {
  if (status == QS_CANCELLED) {
    out.Write("The scan was cancelled: this is what it had found until then.\n");
  } else if (status != QS_OK) {
    out.Write(std::string("The scan ended early: ") + StatusSentence(status) +
              ". This is what it had found until then.\n");
  }
}

std::string ShownPath(const std::wstring& path) {
  return ToUtf8(Printable(WithoutExtendedPrefix(path)));
}

std::string FittedPath(const std::wstring& path, std::size_t used, const OutputStream& out) {
  if (!out.IsTerminal()) {
    return ShownPath(path);
  }
  // The last column stays free: some consoles wrap a full line at once.
  const std::size_t room = out.Width() - 1;
  return ToUtf8(FitMiddle(Printable(WithoutExtendedPrefix(path)),
                          room > used + kShortestPath ? room - used : kShortestPath));
}

void WriteHeading(std::string_view line, OutputStream& out) {
  WriteToned(out, line, Tone::kHeading);
  out.Write("\n");
}

void WriteShownCount(std::size_t listed, std::size_t all, std::string_view things,
                     OutputStream& out) {
  if (listed < all) {
    out.Write(std::string("Showing ")
                  .append(GroupedNumber(listed))
                  .append(" of ")
                  .append(GroupedNumber(all))
                  .append(" ")
                  .append(things)
                  .append(".\n\n"));
  }
}

}  // namespace quastel::client
