#include "list_report.h"

#include <algorithm>
#include <utility>

#include "display_text.h"
#include "html_page.h"
#include "json_writer.h"
#include "report_table.h"
#include "status_text.h"
#include "text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

constexpr std::size_t kIndexColumn = 7;

std::size_t ListedRows(const ListReport& report) {
  const std::size_t count = report.rows.size();
  return report.options.top && *report.options.top < count
             ? static_cast<std::size_t>(*report.options.top)
             : count;
}

const char* ModeWord(std::uint32_t mode) {
  return mode == QS_SESSION_LARGE_FILES ? "large" : mode == QS_SESSION_INSPECT ? "inspect" : "all";
}

// A row up to its path.
std::string Front(const std::string& index, const std::string& size, const std::string& modified) {
  return PadLeft(index, kIndexColumn) + "  " + PadLeft(size, kSizeWidth) + "  " +
         PadRight(modified, kTimeWidth) + "  ";
}

Json ModifiedJson(const SessionFile& file) {
  const std::optional<std::string> modified = LocalIsoText(file.numbers.modified);
  return modified ? Json(*modified) : Json(nullptr);
}

Json OptionsJson(const ListReport& report) {
  Json json;
  json.Set("mode", ModeWord(report.options.mode));
  json.Set("top", report.options.top ? Json(*report.options.top) : Json(nullptr));
  return json;
}

Json TotalsJson(const ListReport& report) {
  Json json;
  json.Set("files_visited", report.files_visited);
  json.Set("bytes_visited", report.bytes_visited);
  json.Set("row_count", report.rows.size());
  return json;
}

Json PerformanceJson(const ListReport& report) {
  Json json;
  json.Set("elapsed_us", report.elapsed_us);
  return json;
}

Json RowJson(const SessionFile& file, std::size_t index) {
  Json json;
  json.Set("index", index);
  AddPath(json, file.path);
  json.Set("name", ToUtf8(file.name));
  json.Set("size", file.numbers.size);
  json.Set("modified_ticks", file.numbers.modified);
  json.Set("modified", ModifiedJson(file));
  json.Set("deleted", file.numbers.deleted != 0);
  return json;
}

Json CleanJson(const ListReport& report) {
  if (!report.cleaned) {
    return nullptr;
  }
  Json indexes = Json::List();
  for (const std::uint64_t index : report.options.clean) {
    indexes.Append(index);
  }
  Json json;
  json.Set("indexes", std::move(indexes));
  json.Set("requested", report.options.clean.size());
  json.Set("processed", report.clean_processed);
  json.Set("status", StatusWord(report.clean_status));
  return json;
}

void WriteClean(const ListReport& report, OutputStream& out) {
  for (const std::uint64_t index : report.options.clean) {
    const SessionFile& file = report.rows[static_cast<std::size_t>(index)];
    out.Write(PadRight(file.numbers.deleted != 0 ? "deleted" : "left alone", 12) +
              PadLeft(HumanSize(file.numbers.size), kSizeWidth) + "  " + ShownPath(file.path) +
              "\n");
  }
  out.Write("\n" + GroupedNumber(report.clean_processed) + " of " +
            Counted(report.options.clean.size(), "file", "files") + " deleted.\n");
  if (report.clean_status == QS_FAILED) {
    out.Write(
        "The clean stopped at the first file that could not be deleted: it has changed, is "
        "gone, is read-only, is in use, or lies behind a link.\n");
  } else if (report.clean_status == QS_CANCELLED) {
    out.Write("The clean was cancelled.\n");
  }
}

}  // namespace

void WriteListTable(const ListReport& report, OutputStream& out) {
  if (report.cleaned) {
    WriteClean(report, out);
    return;
  }
  const std::size_t listed = ListedRows(report);
  if (report.rows.empty()) {
    out.Write("No files here.\n\n");
  } else {
    WriteHeading(Front("Index", "Size", "Modified") + "Path", out);
    for (std::size_t i = 0; i < listed; ++i) {
      const SessionFile& file = report.rows[i];
      const std::string front = Front(std::to_string(i), HumanSize(file.numbers.size),
                                      LocalMinuteText(file.numbers.modified).value_or("?"));
      out.Write(front + FittedPath(file.path, front.size(), out) + "\n");
    }
    out.Write("\n");
    WriteShownCount(listed, report.rows.size(), "rows", out);
  }
  out.Write(Counted(report.files_visited, "file", "files") + " seen (" +
            HumanSize(report.bytes_visited) + ") in " + HumanDuration(report.elapsed_us) + ".\n");
  WriteEarlyEnd(report.status, out);
}

void WriteListJson(const ListReport& report, OutputStream& out) {
  JsonWriter object(out, "list");
  object.Member("roots", JsonStrings(report.roots));
  object.Member("options", OptionsJson(report));
  object.Member("start_time", report.start_time);
  object.Member("status", StatusWord(report.status));
  object.Member("cancelled", report.status == QS_CANCELLED);
  object.ArrayMember("rows", ListedRows(report),
                     [&](std::size_t i) { return RowJson(report.rows[i], i); });
  object.Member("clean", CleanJson(report));
  object.Member("totals", TotalsJson(report));
  object.Member("performance", PerformanceJson(report));
  object.End();
}

void WriteListHtml(const ListReport& report) {
  HtmlPage page(report.options.html, "list");
  page.Member("roots", JsonStrings(report.roots));
  page.Member("options", OptionsJson(report));
  page.Member("start_time", report.start_time);
  page.Member("status", StatusWord(report.status));
  page.Member("totals", TotalsJson(report));
  page.Member("performance", PerformanceJson(report));
  page.Member("groups", Json::List());
  page.Rows({"size", "modified"}, ListedRows(report), [&](std::size_t i) {
    const SessionFile& file = report.rows[i];
    return PageRow{file.path, Json::List(file.numbers.size, ModifiedJson(file))};
  });
  page.End();
}

}  // namespace quastel::client
