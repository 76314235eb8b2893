#include "report_json.h"

#include "duplicate_report.h"
#include "json_writer.h"
#include "junk_report.h"
#include "status_text.h"
#include "text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

// Whether the rows come in sets of equal files, rather than each with a category.
bool HasDuplicates(const Report& report) {
  return report.request.kind == QS_SCAN_KIND_DUPLICATES;
}

bool HasJunk(const Report& report) {
  return report.request.kind == QS_SCAN_KIND_JUNK_RULES;
}

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json RowJson(const ScanRow& row, std::uint32_t kind) {
  const bool junk = kind == QS_SCAN_KIND_JUNK_RULES;
  Json json;
  json.Set("item_id", row.numbers.item_id);
  json.Set("group_id", row.numbers.group_id);
  if (junk) {
    json.Set("parent_group_id", row.parent_group_id);
  }
  AddPath(json, row.path);
  json.Set("name", ToUtf8(row.name));
  json.Set("location", ToUtf8(row.location));
  if (kind == QS_SCAN_KIND_DUPLICATES) {
    json.Set("group_key", ToUtf8(row.group_key));
  } else {
    json.Set("category", ToUtf8(junk ? row.category : row.title));
  }
  json.Set("size", row.numbers.size);
  json.Set("modified_ticks", row.numbers.modified);
  // Programs that keep numbers as floating point lose the last digits.
  json.Set("modified_ticks_text", std::to_string(row.numbers.modified));
  json.Set("modified", OrNull(LocalIsoText(row.numbers.modified)));
  if (kind == QS_SCAN_KIND_LARGE_FILES) {
    json.Set("large_class", row.numbers.large_class);
  }
  if (junk) {
    json.Set("selected", row.numbers.preselect != 0);
    json.Set("folder", ToUtf8(row.rule_folder));
  }
  return json;
}

Json JunkGroupJson(const ReportGroup& group) {
  Json json;
  json.Set("id", group.id);
  json.Set("parent_id", group.parent_id);
  json.Set("title", ToUtf8(group.title));
  json.Set("name", ToUtf8(GroupName(group)));
  json.Set("path", nullptr);
  if (!group.IsCategory()) {
    AddPath(json, group.path);
  }
  json.Set("count", group.count);
  json.Set("bytes", group.bytes);
  json.Set("selected", group.count != 0 && group.selected_count == group.count);
  return json;
}

}  // namespace

Json GroupJson(const ReportGroup& group, std::uint32_t kind) {
  if (kind == QS_SCAN_KIND_JUNK_RULES) {
    return JunkGroupJson(group);
  }
  const bool duplicates = kind == QS_SCAN_KIND_DUPLICATES;
  Json json;
  json.Set("id", group.id);
  json.Set("title", ToUtf8(group.title));
  if (duplicates) {
    json.Set("size", group.file_size);
  }
  json.Set("count", group.count);
  json.Set("bytes", group.bytes);
  if (duplicates) {
    json.Set("reclaimable", group.Reclaimable());
  }
  return json;
}

Json OptionsJson(const Report& report) {
  const ScanRequest& request = report.request;
  Json json;
  json.Set("sort", SortKeyName(report.options.sort));
  json.Set("top", OrNull(report.options.top));
  if (HasDuplicates(report)) {
    json.Set("min_size", OrNull(report.options.min_size));
  }
  if (HasJunk(report)) {
    const std::string& category = report.options.junk.category;
    json.Set("category", category.empty() ? Json(nullptr) : Json(ToUtf8(FromUtf8(category))));
    json.Set("rules", ToUtf8(request.rules_path));
  } else {
    json.Set("protect", request.protection.has_value());
  }
  json.Set("system_root", nullptr);
  if (request.protection) {
    json.Set("system_root", ToUtf8(request.protection->system_root));
  }
  const wchar_t* home = request.UserHome();
  json.Set("user_home", home == nullptr ? Json(nullptr) : Json(ToUtf8(home)));
  return json;
}

Json TotalsJson(const Report& report) {
  Json json;
  json.Set("files_visited", report.counters.files_visited);
  json.Set("bytes_visited", report.counters.bytes_visited);
  json.Set("item_count", report.counters.item_count);
  json.Set("total_bytes", report.counters.total_bytes);
  if (HasDuplicates(report)) {
    json.Set("group_count", report.groups.size());
    json.Set("reclaimable", TotalReclaimable(report));
  }
  if (HasJunk(report)) {
    const FileSum selected = SelectedFiles(report);
    json.Set("selected_count", selected.count);
    json.Set("selected_bytes", selected.bytes);
    const FileSum listed = ListedFiles(report);
    json.Set("listed_count", listed.count);
    json.Set("listed_bytes", listed.bytes);
  }
  return json;
}

Json PerformanceJson(const Report& report) {
  const qs_product_scan_performance& performance = report.performance;
  Json json;
  json.Set("elapsed_us", performance.elapsed_us);
  if (HasJunk(report)) {
    json.Set("load_rules_us", performance.load_rules_us);
  } else {
    json.Set("filter_roots_us", performance.filter_roots_us);
  }
  json.Set("walk_us", performance.walk_us);
  if (HasDuplicates(report)) {
    json.Set("group_by_size_us", performance.group_by_size_us);
    json.Set("sample_us", performance.sample_us);
    json.Set("sample_keys_us", performance.sample_keys_us);
    json.Set("plan_hashes_us", performance.plan_hashes_us);
    json.Set("hash_us", performance.hash_us);
    json.Set("group_by_hash_us", performance.group_by_hash_us);
    json.Set("candidates", performance.candidates);
    json.Set("sampled_items", performance.sampled_items);
    json.Set("hashed_items", performance.hashed_items);
    json.Set("unhashed_groups", performance.unhashed_groups);
  }
  return json;
}

void WriteJson(const Report& report, OutputStream& out) {
  const std::uint32_t kind = report.request.kind;
  JsonWriter object(out, report.command);
  object.Member("roots", JsonStrings(report.request.roots));
  object.Member("options", OptionsJson(report));
  object.Member("start_time", report.start_time);
  object.Member("status", StatusWord(report.status));
  object.Member("cancelled", report.Cancelled());
  object.ArrayMember("rows", report.listed,
                     [&](std::size_t i) { return RowJson(report.rows[i], kind); });
  object.ArrayMember("groups", report.listed_groups,
                     [&](std::size_t i) { return GroupJson(report.groups[i], kind); });
  object.Member("totals", TotalsJson(report));
  object.Member("performance", PerformanceJson(report));
  object.End();
}

}  // namespace quastel::client
