#include "html_report.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "html_page.h"
#include "json_writer.h"
#include "new_file.h"
#include "path_text.h"
#include "report_json.h"
#include "status_text.h"
#include "time_text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

// The ids of some groups are too large for the numbers of a browser: their places stand for them.
using GroupPlaces = std::unordered_map<std::uint64_t, std::size_t>;

GroupPlaces PlacesOf(const Report& report) {
  GroupPlaces places;
  for (std::size_t i = 0; i < report.listed_groups; ++i) {
    places[report.groups[i].id] = i;
  }
  return places;
}

Json PlaceOf(const GroupPlaces& places, std::uint64_t id) {
  const auto place = places.find(id);
  return place == places.end() ? Json(nullptr) : Json(place->second);
}

Json PageGroupJson(const ReportGroup& group, std::uint32_t kind, const GroupPlaces& places) {
  Json json = GroupJson(group, kind);
  json.Remove("id");
  if (kind == QS_SCAN_KIND_JUNK_RULES) {
    json.Remove("parent_id");
    json.Set("parent", PlaceOf(places, group.parent_id));
  }
  return json;
}

PageRow MakeRow(const ScanRow& row, bool junk, const GroupPlaces& places) {
  const std::optional<std::string> modified = LocalIsoText(row.numbers.modified);
  Json cells = Json::List(row.numbers.size, modified ? Json(*modified) : Json(nullptr),
                          PlaceOf(places, row.numbers.group_id));
  if (junk) {
    cells.Append(row.numbers.preselect != 0 ? 1 : 0);
  }
  return {row.path, std::move(cells)};
}

}  // namespace

void WriteHtml(const Report& report) {
  const std::uint32_t kind = report.request.kind;
  const bool junk = kind == QS_SCAN_KIND_JUNK_RULES;
  const GroupPlaces places = PlacesOf(report);
  HtmlPage page(report.options.html, report.command);
  page.Member("roots", JsonStrings(report.request.roots));
  page.Member("options", OptionsJson(report));
  page.Member("start_time", report.start_time);
  page.Member("status", StatusWord(report.status));
  page.Member("totals", TotalsJson(report));
  page.Member("performance", PerformanceJson(report));
  Json groups = Json::List();
  for (std::size_t i = 0; i < report.listed_groups; ++i) {
    groups.Append(PageGroupJson(report.groups[i], kind, places));
  }
  page.Member("groups", groups);
  std::vector<std::string> columns = {"size", "modified", "group"};
  if (junk) {
    columns.emplace_back("selected");
  }
  page.Rows(columns, report.listed,
            [&](std::size_t i) { return MakeRow(report.rows[i], junk, places); });
  page.End();
}

void CheckHtmlPath(const std::wstring& path, bool clean) {
  if (path.empty()) {
    return;
  }
  if (clean) {
    throw UserError(ExitCode::kUsage,
                    "--html shows what a scan found, and not what a clean removed",
                    "make the page first, without --clean; nothing was touched");
  }
  RequireNewFile(path);
}

void TellHtmlPath(const std::wstring& path, bool json, OutputStream& out) {
  if (!json) {
    out.Write("The page is " + Quoted(WithoutExtendedPrefix(path)) + ".\n");
  }
}

}  // namespace quastel::client
