#include "rules_report.h"

#include <string>
#include <string_view>
#include <utility>

#include "category_words.h"
#include "display_text.h"
#include "json_writer.h"
#include "path_text.h"
#include "report_table.h"
#include "rule_vocabulary.h"
#include "status_text.h"
#include "text.h"

namespace quastel::client {
namespace {

constexpr std::size_t kFilesWidth = 9;

std::wstring LeafOf(const std::wstring& path) {
  return path.substr(path.find_last_of(L"\\/") + 1);
}

// What the rule's groups are called in a report; a ChildrenList names each after its folder.
std::wstring RuleName(const RuleElement& rule, const RuleOutcome& outcome) {
  const RuleAttribute* const given = rule.Find(L"DisplayName");
  if (rule.name == kChildrenListElement) {
    return L"Each folder in " + LeafOf(outcome.folder);
  }
  if (given != nullptr) {
    return given->value;
  }
  return rule.name == kFolderElement ? LeafOf(outcome.folder) : rule.Find(L"EndPath")->value;
}

std::string CategoryPath(const RuleUse& rule) {
  std::string path;
  for (const std::wstring& name : rule.categories) {
    path += (path.empty() ? "" : " / ") + ToUtf8(Printable(CategoryWords(name)));
  }
  return path;
}

Json OrNull(const RuleAttribute* attribute) {
  return attribute == nullptr ? Json(nullptr) : Json(ToUtf8(attribute->value));
}

struct Totals {
  std::size_t existing = 0;
  std::uint64_t places = 0;
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
};

Totals Sum(const RulesReport& report) {
  Totals totals;
  for (const RuleOutcome& outcome : report.outcomes) {
    totals.existing += outcome.exists ? 1 : 0;
    totals.places += outcome.places.size();
    totals.files += outcome.files;
    totals.bytes += outcome.bytes;
  }
  return totals;
}

Json ProblemJson(const RuleProblem& problem) {
  Json json;
  json.Set("line", problem.position.line);
  json.Set("column", problem.position.column);
  json.Set("message", problem.message);
  json.Set("hint", problem.hint.empty() ? Json(nullptr) : Json(problem.hint));
  return json;
}

Json PlaceJson(const RulePlace& place) {
  Json json;
  AddPath(json, place.path);
  json.Set("below", place.below);
  json.Set("files", place.files);
  json.Set("bytes", place.bytes);
  return json;
}

Json RuleJson(const RulesReport& report, std::size_t i) {
  const RuleElement& rule = *report.rules[i].element;
  const RuleOutcome& outcome = report.outcomes[i];
  Json json;
  json.Set("line", report.document.rule_positions[i].line);
  json.Set("column", report.document.rule_positions[i].column);
  json.Set("element", ToUtf8(rule.name));
  json.Set("categories", JsonStrings(report.rules[i].categories));
  json.Set("name", ToUtf8(RuleName(rule, outcome)));
  AddPath(json, outcome.folder);
  json.Set("pattern", OrNull(rule.Find(L"Pattern")));
  json.Set("end_path", OrNull(rule.Find(L"EndPath")));
  json.Set("contains_path", OrNull(rule.Find(L"ContainsPath")));
  json.Set("exists", outcome.exists);
  Json places = Json::List();
  for (const RulePlace& place : outcome.places) {
    places.Append(PlaceJson(place));
  }
  json.Set("places", std::move(places));
  json.Set("files", outcome.files);
  json.Set("bytes", outcome.bytes);
  return json;
}

// The rule in a line, with what it looks for where that is not everything.
std::wstring Summary(const RuleElement& rule, const RuleOutcome& outcome) {
  std::wstring name = RuleName(rule, outcome);
  if (rule.name == kFolderElement) {
    const std::wstring pattern = PlainValue(rule.Find(L"Pattern"));
    return pattern.empty() ? name : name + L", " + pattern;
  }
  if (rule.name == kChildrenListElement) {
    return name;
  }
  const std::wstring end_path = PlainValue(rule.Find(L"EndPath"));
  const std::wstring wanted = PlainValue(rule.Find(L"ContainsPath"));
  return (name == end_path ? L"" : name + L", ") + end_path + L" in each folder of " +
         WithoutExtendedPrefix(outcome.folder) +
         (wanted.empty() ? L"" : L" with \"" + wanted + L"\" in its path");
}

void WriteRule(const RulesReport& report, std::size_t i, OutputStream& out) {
  const RuleElement& rule = *report.rules[i].element;
  const RuleOutcome& outcome = report.outcomes[i];
  out.Write("  Line " + std::to_string(report.document.rule_positions[i].line) + ": " +
            ToUtf8(Printable(Summary(rule, outcome))) + "\n");
  const auto place = [&out](std::string_view files, std::string_view size,
                            const std::string& path) {
    out.Write("  " + PadLeft(files, kFilesWidth) + "  " + PadLeft(size, kSizeWidth) + "  " + path +
              "\n");
  };
  if (!outcome.exists) {
    place("-", "-", ShownPath(outcome.folder) + "  (not there)");
  } else if (outcome.places.empty()) {
    place("-", "-", ShownPath(outcome.folder) + "  (no such folders in it)");
  }
  for (const RulePlace& found : outcome.places) {
    place(GroupedNumber(found.files), HumanSize(found.bytes),
          ShownPath(found.path) + (found.below ? "" : "  (directly in it)"));
  }
}

}  // namespace

void WriteRulesTable(const RulesReport& report, OutputStream& out) {
  out.Write(Quoted(report.document.path) +
            " is good: " + Counted(report.rules.size(), "rule", "rules") + " in " +
            Counted(TopCategories(report.document.root).size(), "category", "categories") + ".\n");
  std::string heading;
  for (std::size_t i = 0; i < report.outcomes.size(); ++i) {
    const std::string category = CategoryPath(report.rules[i]);
    if (i == 0 || category != heading) {
      out.Write("\n" + category + "\n");
      heading = category;
    }
    WriteRule(report, i, out);
  }
  const Totals totals = Sum(report);
  out.Write("\nOf " + Counted(report.outcomes.size(), "rule", "rules") + " " +
            GroupedNumber(totals.existing) + " " +
            (totals.existing == 1 ? "has its" : "have their") +
            " folder: " + Counted(totals.places, "place", "places") + " with " +
            Counted(totals.files, "file", "files") + " (" + HumanSize(totals.bytes) +
            "), looked up in " + HumanDuration(report.elapsed_us) + ".\n");
  if (report.status == QS_CANCELLED) {
    out.Write("The check was cancelled: the places of the other rules were not looked up.\n");
  }
}

void WriteRulesJson(const RulesReport& report, OutputStream& out) {
  const RuleDocument& document = report.document;
  JsonWriter object(out, "rules check");
  object.Member("document", ToUtf8(document.path));
  object.Member("valid", !document.problem);
  object.Member("problem", document.problem ? ProblemJson(*document.problem) : Json(nullptr));
  object.ArrayMember("warnings", document.warnings.size(),
                     [&](std::size_t i) { return ProblemJson(document.warnings[i]); });
  object.Member("system_root", ToUtf8(report.folders.system_root));
  object.Member("user_home", ToUtf8(report.folders.user_home));
  object.Member("status", StatusWord(report.status));
  object.Member("cancelled", report.status == QS_CANCELLED);
  object.ArrayMember("rules", report.outcomes.size(),
                     [&](std::size_t i) { return RuleJson(report, i); });
  const Totals sum = Sum(report);
  Json totals;
  totals.Set("rules", report.rules.size());
  totals.Set("existing", sum.existing);
  totals.Set("places", sum.places);
  totals.Set("files", sum.files);
  totals.Set("bytes", sum.bytes);
  object.Member("totals", totals);
  object.End();
}

}  // namespace quastel::client
