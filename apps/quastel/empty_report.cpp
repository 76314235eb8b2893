#include "empty_report.h"

#include "display_text.h"
#include "html_page.h"
#include "json_writer.h"
#include "path_text.h"
#include "report_table.h"
#include "status_text.h"
#include "text.h"

namespace quastel::client {
namespace {

constexpr std::size_t kCountWidth = 9;

std::size_t Listed(const EmptyReport& report) {
  return WithinTop(report.rows.size(), report.options);
}

// With all that lie in them.
std::uint64_t AllFolders(const EmptyReport& report) {
  std::uint64_t folders = 0;
  for (const EmptyFolder& row : report.rows) {
    folders += row.folders;
  }
  return folders;
}

std::wstring NameOf(const std::wstring& path) {
  return path.substr(path.find_last_of(L"\\/") + 1);
}

Json RowJson(const EmptyFolder& row, std::size_t id) {
  Json json;
  json.Set("item_id", id);
  AddPath(json, row.path);
  json.Set("name", ToUtf8(NameOf(row.path)));
  json.Set("location", ToUtf8(FolderOf(row.path)));
  json.Set("folders", row.folders);
  return json;
}

Json OptionsJson(const EmptyReport& report) {
  Json json;
  json.Set("top", report.options.top ? Json(*report.options.top) : Json(nullptr));
  json.Set("protect", report.protection.has_value());
  json.Set("system_root", nullptr);
  json.Set("user_home", nullptr);
  if (report.protection) {
    json.Set("system_root", ToUtf8(report.protection->system_root));
    json.Set("user_home", ToUtf8(report.protection->user_home));
  }
  return json;
}

Json TotalsJson(const EmptyReport& report) {
  Json json;
  json.Set("folders_visited", report.folders_visited);
  json.Set("item_count", report.rows.size());
  json.Set("folder_count", AllFolders(report));
  return json;
}

Json PerformanceJson(const EmptyReport& report) {
  Json json;
  json.Set("elapsed_us", report.elapsed_us);
  return json;
}

}  // namespace

void WriteEmptyTable(const EmptyReport& report, OutputStream& out) {
  const std::size_t listed = Listed(report);
  if (report.rows.empty()) {
    out.Write(report.status == QS_OK
                  ? "No empty folders here: each holds a file, or a folder that does.\n"
                  : "Nothing was found.\n");
  } else {
    if (listed != 0) {
      WriteHeading(PadLeft("Folders", kCountWidth) + "  Path", out);
      for (std::size_t i = 0; i < listed; ++i) {
        out.Write(PadLeft(GroupedNumber(report.rows[i].folders), kCountWidth) + "  " +
                  FittedPath(report.rows[i].path, kCountWidth + 2, out) + "\n");
      }
      out.Write("\n");
    }
    WriteShownCount(listed, report.rows.size(), "rows", out);
    out.Write(Counted(report.rows.size(), "empty folder", "empty folders") + ", " +
              Counted(AllFolders(report), "folder", "folders") +
              " with those that lie in them.\n\n");
  }
  out.Write(Counted(report.folders_visited, "folder", "folders") + " seen in " +
            HumanDuration(report.elapsed_us) + ".\n");
  WriteEarlyEnd(report.status, out);
}

void WriteEmptyJson(const EmptyReport& report, OutputStream& out) {
  JsonWriter object(out, "empty");
  object.Member("roots", JsonStrings(report.roots));
  object.Member("options", OptionsJson(report));
  object.Member("start_time", report.start_time);
  object.Member("status", StatusWord(report.status));
  object.Member("cancelled", report.status == QS_CANCELLED);
  object.ArrayMember("rows", Listed(report),
                     [&](std::size_t i) { return RowJson(report.rows[i], i); });
  object.Member("totals", TotalsJson(report));
  object.Member("performance", PerformanceJson(report));
  object.End();
}

void WriteEmptyHtml(const EmptyReport& report) {
  HtmlPage page(report.options.html, "empty");
  page.Member("roots", JsonStrings(report.roots));
  page.Member("options", OptionsJson(report));
  page.Member("start_time", report.start_time);
  page.Member("status", StatusWord(report.status));
  page.Member("totals", TotalsJson(report));
  page.Member("performance", PerformanceJson(report));
  page.Member("groups", Json::List());
  page.Rows({"folders"}, Listed(report), [&](std::size_t i) {
    return PageRow{report.rows[i].path, Json::List(report.rows[i].folders)};
  });
  page.End();
}

}  // namespace quastel::client
