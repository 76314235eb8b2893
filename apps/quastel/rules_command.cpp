#include "rules_command.h"

#include <memory>
#include <string>

#include "command_options.h"
#include "full_path.h"
#include "interrupt.h"
#include "messages.h"
#include "own_walk.h"
#include "path_text.h"
#include "rule_folders.h"
#include "rules_report.h"
#include "status_text.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

struct CheckOptions {
  std::string file;
  bool json = false;
  RuleFolderOptions folders;
};

void FindAllPlaces(RulesReport& report, Console& console) {
  const InterruptGuard interrupt;
  report.rules = RulesOf(report.document.root);
  WalkState state;
  const WalkEnd end =
      RunWalk([&] { return FindPlaces(report.rules, report.folders, state, report.outcomes); },
              state, {"Scanning", "file", "files", true}, interrupt, console);
  report.status = end.status;
  report.elapsed_us = end.elapsed_us;
}

void PrintWarnings(const RuleDocument& document, Console& console) {
  for (const RuleProblem& warning : document.warnings) {
    PrintNote(console, Quoted(document.path) + ", " + PositionText(warning.position) + ": " +
                           warning.message + (warning.hint.empty() ? "" : "; " + warning.hint));
  }
}

ExitCode RunCheck(const CheckOptions& options, Console& console) {
  RulesReport report;
  report.folders = ResolveRuleFolders(options.folders);
  report.document = LoadRuleDocument(FullPath(FromUtf8(options.file)));
  if (!report.document.problem) {
    FindAllPlaces(report, console);
  }
  if (options.json) {
    WriteRulesJson(report, console.out);
    console.out.Flush();
  }
  if (report.document.problem) {
    throw ProblemError(report.document.path, *report.document.problem);
  }
  if (!options.json) {
    PrintWarnings(report.document, console);
    WriteRulesTable(report, console.out);
    console.out.Flush();
  }
  if (report.status == QS_OK) {
    return ExitCode::kDone;
  }
  if (report.status == QS_CANCELLED) {
    return ExitCode::kCancelled;
  }
  PrintError(console, std::string("the check ended early: ") + StatusSentence(report.status), "");
  return ExitCode::kError;
}

}  // namespace

void AddRulesCommand(CLI::App& app, Action& action) {
  CLI::App& rules = AddCommand(app, "rules", "Work with rule documents");
  RequireCommand(rules);
  CLI::App& check =
      AddCommand(rules, "check",
                 "Tell where a rule document is wrong, or where its rules lead and what is there");
  const auto options = std::make_shared<CheckOptions>();
  AddOption(check, "FILE", options->file, "", "The rule document").Required();
  AddFlag(check, "--json", options->json, "Write one JSON object");
  AddRuleFolderOptions(check, options->folders);
  OnCall(check, [options, &action] {
    action = [options](Console& console) { return RunCheck(*options, console); };
  });
}

}  // namespace quastel::client
