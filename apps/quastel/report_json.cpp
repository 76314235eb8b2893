#include "report_json.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string_view>

#include "status_text.h"
#include "text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

using Json = nlohmann::ordered_json;

// A JSON string holds no raw line end, so that each one is the writer's own and can be indented.
std::string Indented(const Json& value, std::string_view indent) {
  const std::string text = value.dump(2);
  std::string out;
  out.reserve(text.size() + text.size() / 4);
  for (const char c : text) {
    out.push_back(c);
    if (c == '\n') {
      out.append(indent);
    }
  }
  return out;
}

// Writes an object's members one by one, so that it never stands in memory as a whole.
class ObjectWriter {
 public:
  explicit ObjectWriter(OutputStream& out) : out_(out) { out_.Write("{"); }

  void Member(std::string_view name, const Json& value) {
    Begin(name);
    out_.Write(Indented(value, "  "));
  }

  template <typename Make>
  void ArrayMember(std::string_view name, std::size_t count, Make make) {
    Begin(name);
    out_.Write("[");
    for (std::size_t i = 0; i < count; ++i) {
      out_.Write(i == 0 ? "\n    " : ",\n    ");
      out_.Write(Indented(make(i), "    "));
    }
    out_.Write(count == 0 ? "]" : "\n  ]");
  }

  void End() { out_.Write("\n}\n"); }

 private:
  void Begin(std::string_view name) {
    out_.Write(std::string(first_ ? "\n  \"" : ",\n  \"").append(name).append("\": "));
    first_ = false;
  }

  OutputStream& out_;
  bool first_ = true;
};

Json Strings(const std::vector<std::wstring>& texts) {
  Json list = Json::array();
  for (const std::wstring& text : texts) {
    list.push_back(ToUtf8(text));
  }
  return list;
}

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

std::string CodeUnits(std::wstring_view text) {
  std::string out;
  for (const wchar_t unit : text) {
    std::array<char, 8> digits = {};
    std::snprintf(digits.data(), digits.size(), "%04x", static_cast<unsigned>(unit));
    out.append(digits.data());
  }
  return out;
}

Json RowJson(const ScanRow& row) {
  Json json;
  json["item_id"] = row.numbers.item_id;
  json["group_id"] = row.numbers.group_id;
  json["path"] = ToUtf8(row.path);
  if (!IsWellFormed(row.path)) {
    // No JSON string can carry such a name exactly, and many readers refuse an escaped surrogate.
    json["path_utf16"] = CodeUnits(row.path);
  }
  json["name"] = ToUtf8(row.name);
  json["location"] = ToUtf8(row.location);
  json["category"] = ToUtf8(row.title);
  json["size"] = row.numbers.size;
  json["modified_ticks"] = row.numbers.modified;
  json["modified"] = OrNull(LocalIsoText(row.numbers.modified));
  json["large_class"] = row.numbers.large_class;
  return json;
}

Json GroupJson(const ReportGroup& group) {
  Json json;
  json["id"] = group.id;
  json["title"] = ToUtf8(group.title);
  json["count"] = group.count;
  json["bytes"] = group.bytes;
  return json;
}

Json OptionsJson(const Report& report) {
  Json json;
  json["sort"] = SortKeyName(report.options.sort);
  json["top"] = OrNull(report.options.top);
  json["protect"] = report.protection.has_value();
  json["system_root"] = nullptr;
  json["user_home"] = nullptr;
  if (report.protection) {
    json["system_root"] = ToUtf8(report.protection->system_root);
    json["user_home"] = ToUtf8(report.protection->user_home);
  }
  return json;
}

Json TotalsJson(const Report& report) {
  Json json;
  json["files_visited"] = report.counters.files_visited;
  json["bytes_visited"] = report.counters.bytes_visited;
  json["item_count"] = report.counters.item_count;
  json["total_bytes"] = report.counters.total_bytes;
  return json;
}

Json PerformanceJson(const qs_product_scan_performance& performance) {
  Json json;
  json["elapsed_us"] = performance.elapsed_us;
  json["filter_roots_us"] = performance.filter_roots_us;
  json["walk_us"] = performance.walk_us;
  return json;
}

}  // namespace

void WriteJson(const Report& report, OutputStream& out) {
  ObjectWriter object(out);
  object.Member("schema_version", kJsonSchemaVersion);
  object.Member("library_version", qs_version());
  object.Member("command", report.command);
  object.Member("roots", Strings(report.roots));
  object.Member("options", OptionsJson(report));
  object.Member("start_time", report.start_time);
  object.Member("status", StatusWord(report.status));
  object.Member("cancelled", report.Cancelled());
  object.ArrayMember("rows", report.listed,
                     [&report](std::size_t i) { return RowJson(report.rows[i]); });
  object.ArrayMember("groups", report.groups.size(),
                     [&report](std::size_t i) { return GroupJson(report.groups[i]); });
  object.Member("totals", TotalsJson(report));
  object.Member("performance", PerformanceJson(report.performance));
  object.End();
}

}  // namespace quastel::client
