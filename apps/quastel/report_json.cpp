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
  json["item_id"] = row.numbers.item_id;
  json["group_id"] = row.numbers.group_id;
  if (junk) {
    json["parent_group_id"] = row.parent_group_id;
  }
  AddPath(json, row.path);
  json["name"] = ToUtf8(row.name);
  json["location"] = ToUtf8(row.location);
  if (kind == QS_SCAN_KIND_DUPLICATES) {
    json["group_key"] = ToUtf8(row.group_key);
  } else {
    json["category"] = ToUtf8(junk ? row.category : row.title);
  }
  json["size"] = row.numbers.size;
  json["modified_ticks"] = row.numbers.modified;
  // Programs that keep numbers as floating point lose the last digits.
  json["modified_ticks_text"] = std::to_string(row.numbers.modified);
  json["modified"] = OrNull(LocalIsoText(row.numbers.modified));
  if (kind == QS_SCAN_KIND_LARGE_FILES) {
    json["large_class"] = row.numbers.large_class;
  }
  if (junk) {
    json["selected"] = row.numbers.preselect != 0;
    json["folder"] = ToUtf8(row.rule_folder);
  }
  return json;
}

Json JunkGroupJson(const ReportGroup& group) {
  Json json;
  json["id"] = group.id;
  json["parent_id"] = group.parent_id;
  json["title"] = ToUtf8(group.title);
  json["name"] = ToUtf8(GroupName(group));
  json["path"] = nullptr;
  if (!group.IsCategory()) {
    AddPath(json, group.path);
  }
  json["count"] = group.count;
  json["bytes"] = group.bytes;
  json["selected"] = group.count != 0 && group.selected_count == group.count;
  return json;
}

}  // namespace

Json GroupJson(const ReportGroup& group, std::uint32_t kind) {
  if (kind == QS_SCAN_KIND_JUNK_RULES) {
    return JunkGroupJson(group);
  }
  const bool duplicates = kind == QS_SCAN_KIND_DUPLICATES;
  Json json;
  json["id"] = group.id;
  json["title"] = ToUtf8(group.title);
  if (duplicates) {
    json["size"] = group.file_size;
  }
  json["count"] = group.count;
  json["bytes"] = group.bytes;
  if (duplicates) {
    json["reclaimable"] = group.Reclaimable();
  }
  return json;
}

Json OptionsJson(const Report& report) {
  const ScanRequest& request = report.request;
  Json json;
  json["sort"] = SortKeyName(report.options.sort);
  json["top"] = OrNull(report.options.top);
  if (HasDuplicates(report)) {
    json["min_size"] = OrNull(report.options.min_size);
  }
  if (HasJunk(report)) {
    const std::string& category = report.options.junk.category;
    json["category"] = category.empty() ? Json(nullptr) : Json(ToUtf8(FromUtf8(category)));
    json["rules"] = ToUtf8(request.rules_path);
  } else {
    json["protect"] = request.protection.has_value();
  }
  json["system_root"] = nullptr;
  if (request.protection) {
    json["system_root"] = ToUtf8(request.protection->system_root);
  }
  const wchar_t* home = request.UserHome();
  json["user_home"] = home == nullptr ? Json(nullptr) : Json(ToUtf8(home));
  return json;
}

Json TotalsJson(const Report& report) {
  Json json;
  json["files_visited"] = report.counters.files_visited;
  json["bytes_visited"] = report.counters.bytes_visited;
  json["item_count"] = report.counters.item_count;
  json["total_bytes"] = report.counters.total_bytes;
  if (HasDuplicates(report)) {
    json["group_count"] = report.groups.size();
    json["reclaimable"] = TotalReclaimable(report);
  }
  if (HasJunk(report)) {
    const FileSum selected = SelectedFiles(report);
    json["selected_count"] = selected.count;
    json["selected_bytes"] = selected.bytes;
    const FileSum listed = ListedFiles(report);
    json["listed_count"] = listed.count;
    json["listed_bytes"] = listed.bytes;
  }
  return json;
}

Json PerformanceJson(const Report& report) {
  const qs_product_scan_performance& performance = report.performance;
  Json json;
  json["elapsed_us"] = performance.elapsed_us;
  if (HasJunk(report)) {
    json["load_rules_us"] = performance.load_rules_us;
  } else {
    json["filter_roots_us"] = performance.filter_roots_us;
  }
  json["walk_us"] = performance.walk_us;
  if (HasDuplicates(report)) {
    json["group_by_size_us"] = performance.group_by_size_us;
    json["sample_us"] = performance.sample_us;
    json["sample_keys_us"] = performance.sample_keys_us;
    json["plan_hashes_us"] = performance.plan_hashes_us;
    json["hash_us"] = performance.hash_us;
    json["group_by_hash_us"] = performance.group_by_hash_us;
    json["candidates"] = performance.candidates;
    json["sampled_items"] = performance.sampled_items;
    json["hashed_items"] = performance.hashed_items;
    json["unhashed_groups"] = performance.unhashed_groups;
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
