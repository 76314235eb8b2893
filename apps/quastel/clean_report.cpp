#include "clean_report.h"

#include "clean_obstacle.h"
#include "display_text.h"
#include "json_writer.h"
#include "report_table.h"
#include "status_text.h"
#include "text.h"

namespace quastel::client {
namespace {

constexpr std::size_t kOutcomeColumn = 14;

bool IsRecycling(const CleanReport& report) {
  return report.options.mode == CleanMode::kRecycle;
}

const char* OutcomeWord(const CleanReport& report, Outcome outcome) {
  switch (outcome) {
    case Outcome::kRemoved:
      return IsRecycling(report) ? "recycled" : "deleted";
    case Outcome::kWouldRemove:
      return IsRecycling(report) ? "would_recycle" : "would_delete";
    case Outcome::kRefused:
      return "refused";
    case Outcome::kKept:
      return "kept";
    case Outcome::kUnselected:
      return "unselected";
    case Outcome::kRepeated:
      return "repeated";
    case Outcome::kNotTried:
      break;
  }
  return "not_tried";
}

Json RowJson(const CleanReport& report, std::size_t i) {
  const PlannedFile& planned = report.plan.files[i];
  const CleanResult& result = report.results[i];
  Json json;
  json.Set("item_id", planned.file.item_id);
  json.Set("group_id", planned.file.group_id);
  AddPath(json, planned.file.path);
  json.Set("size", planned.file.size);
  json.Set("outcome", OutcomeWord(report, result.outcome));
  json.Set("reason", result.obstacle ? Json(ObstacleWord(*result.obstacle)) : Json(nullptr));
  json.Set("message", result.obstacle ? Json(ObstacleSentence(*result.obstacle)) : Json(nullptr));
  if (report.plan.duplicates && planned.fate == Fate::kRemove) {
    json.Set("kept_item_id", report.plan.files[planned.survivor].file.item_id);
  }
  return json;
}

Json OptionsJson(const CleanReport& report) {
  Json json;
  json.Set("mode", IsRecycling(report) ? "recycle" : "permanent");
  json.Set("dry_run", report.options.dry_run);
  if (report.plan.duplicates) {
    const char* const keep = KeepRuleName(report.options.keep);
    json.Set("keep", keep == nullptr ? Json(nullptr) : Json(keep));
    json.Set("keep_under", report.options.keep_under.empty()
                               ? Json(nullptr)
                               : Json(ToUtf8(report.options.keep_under)));
    json.Set("verify", report.options.verify);
  }
  if (report.source == "junk") {
    json.Set("all", report.options.all);
  }
  return json;
}

Json TotalsJson(const CleanReport& report) {
  const CleanTotals totals = TotalsOf(report);
  Json json;
  json.Set("selected", totals.selected);
  json.Set("removed", totals.removed);
  json.Set("failed", totals.refused);
  json.Set("not_tried", totals.not_tried);
  json.Set("kept", totals.kept);
  json.Set("folders_removed", report.removed_folders.size());
  json.Set("bytes_freed", totals.bytes_freed);
  return json;
}

// A row that was never meant to go is no news, except for the copy that stays.
bool IsTold(Outcome outcome) {
  return outcome != Outcome::kUnselected;
}

std::string OutcomeLine(const CleanReport& report, std::size_t i) {
  const CleanFile& file = report.plan.files[i].file;
  const CleanResult& result = report.results[i];
  std::string word = OutcomeWord(report, result.outcome);
  for (char& c : word) {
    c = c == '_' ? ' ' : c;
  }
  std::string line = PadRight(word, kOutcomeColumn) +
                     PadLeft(HumanSize(static_cast<std::uint64_t>(file.size)), kSizeWidth) + "  " +
                     ShownPath(file.path);
  if (result.obstacle) {
    line += std::string(": ") + ObstacleSentence(*result.obstacle);
  }
  return line + "\n";
}

std::string SummaryText(const CleanReport& report, const CleanTotals& totals) {
  const bool dry = report.options.dry_run;
  std::string text = Counted(totals.removed, "file", "files");
  if (IsRecycling(report)) {
    text += dry ? " would go to the Recycle Bin" : " moved to the Recycle Bin";
  } else {
    text += dry ? " would be deleted" : " deleted";
  }
  text += ", " + HumanSize(totals.bytes_freed);
  text += dry ? "" : (IsRecycling(report) ? " (free when the bin is emptied)" : " freed");
  if (!report.removed_folders.empty()) {
    text +=
        ", " + Counted(report.removed_folders.size(), "empty folder", "empty folders") + " removed";
  }
  text += ".\n";
  if (totals.refused > 0) {
    text += Counted(totals.refused, "file was", "files were") + " left alone: see the reason " +
            "behind each.\n";
  }
  if (totals.not_tried > 0) {
    text += Counted(totals.not_tried, "file was", "files were") + " not tried.\n";
  }
  return text;
}

}  // namespace

CleanTotals TotalsOf(const CleanReport& report) {
  CleanTotals totals;
  for (std::size_t i = 0; i < report.results.size(); ++i) {
    const PlannedFile& planned = report.plan.files[i];
    totals.selected += planned.fate == Fate::kRemove ? 1u : 0u;
    switch (report.results[i].outcome) {
      case Outcome::kRemoved:
      case Outcome::kWouldRemove:
        ++totals.removed;
        totals.bytes_freed += static_cast<std::uint64_t>(planned.file.size);
        break;
      case Outcome::kRefused:
        ++totals.refused;
        break;
      case Outcome::kNotTried:
        ++totals.not_tried;
        break;
      case Outcome::kKept:
        ++totals.kept;
        break;
      case Outcome::kUnselected:
      case Outcome::kRepeated:
        break;
    }
  }
  return totals;
}

void WriteCleanJson(const CleanReport& report, OutputStream& out) {
  JsonWriter object(out, "clean");
  object.Member("source", report.source);
  object.Member("saved_as",
                report.saved_as.empty() ? Json(nullptr) : Json(ToUtf8(report.saved_as)));
  object.Member("options", OptionsJson(report));
  object.Member("start_time", report.start_time);
  object.Member("status", StatusWord(report.status));
  object.Member("cancelled", report.Cancelled());
  object.ArrayMember("rows", report.results.size(),
                     [&](std::size_t i) { return RowJson(report, i); });
  object.Member("removed_folders", JsonStrings(report.removed_folders));
  object.Member("totals", TotalsJson(report));
  object.End();
}

void WriteCleanTable(const CleanReport& report, OutputStream& out) {
  bool told = false;
  for (std::size_t i = 0; i < report.results.size(); ++i) {
    if (IsTold(report.results[i].outcome)) {
      out.Write(OutcomeLine(report, i));
      told = true;
    }
  }
  out.Write(told ? "\n" : "");
  out.Write(SummaryText(report, TotalsOf(report)));
  if (const std::uint64_t unselected = report.plan.CountOf(Fate::kUnselected); unselected > 0) {
    out.Write(Counted(unselected, "file is", "files are") +
              " not selected; --all takes them too.\n");
  }
  if (report.options.dry_run) {
    out.Write("This was a dry run: nothing was changed.\n");
  }
  if (report.Cancelled()) {
    out.Write("The clean was cancelled: this is what was done until then.\n");
  }
}

}  // namespace quastel::client
