#include "junk_command.h"

#include <quastel_core.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "category_words.h"
#include "clean_options.h"
#include "command_options.h"
#include "full_path.h"
#include "junk_report.h"
#include "junk_table.h"
#include "path_text.h"
#include "rule_document.h"
#include "rule_review.h"
#include "scan_command.h"
#include "scan_options.h"
#include "standard_rules.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

const char* Stage(const qs_product_scan_status& /*status*/,
                  const qs_product_scan_performance& /*performance*/) {
  return "Scanning";
}

// Before the scan, which may take its time. A document with a problem is the scan's to refuse.
void CheckCategory(const RuleDocument& document, const std::string& typed) {
  if (document.problem || typed.empty()) {
    return;
  }
  const std::wstring wanted = FromUtf8(typed);
  std::string known;
  for (const std::wstring& name : TopCategories(document.root)) {
    if (NamesCategory(wanted, name)) {
      return;
    }
    known += (known.empty() ? "" : ", ") + ToUtf8(CategoryWords(name));
  }
  throw UserError(ExitCode::kUsage, Quoted(document.path) + " has no category " + Quoted(wanted),
                  known.empty() ? "it has no categories" : "its categories are: " + known);
}

ScanRequest JunkRequest(const ScanOptions& options) {
  const JunkOptions& junk = options.junk;
  ScanRequest request;
  request.rules_path = junk.rules.empty() ? StandardRules() : FullPath(FromUtf8(junk.rules));
  request.protection = ResolveRuleFolders(junk.folders);
  CheckCategory(LoadRuleDocument(request.rules_path), junk.category);
  return request;
}

// The library tells that a document is wrong, but not where.
void ExplainFailure(const Report& report) {
  const RuleDocument document = LoadRuleDocument(report.request.rules_path);
  if (document.problem) {
    throw ProblemError(document.path, *document.problem);
  }
}

ExitCode RunJunk(const ScanOptions& options, Console& console) {
  return RunScanCommand({"junk",
                         QS_SCAN_KIND_JUNK_RULES,
                         Stage,
                         ArrangeJunk,
                         {"No junk here: no rule found a file.", WriteJunk},
                         JunkRequest,
                         ExplainFailure},
                        options, console);
}

}  // namespace

void AddJunkCommand(CLI::App& app, Action& action) {
  CLI::App& command =
      AddCommand(app, "junk", "List the files in the folders that a rule document names");
  const auto options = std::make_shared<ScanOptionParser>(
      command, ScanWords{{SortKey::kSize, SortKey::kPath, SortKey::kModified, SortKey::kCategory,
                          SortKey::kName},
                         "size (largest first), modified (newest first), path, category or name",
                         "files",
                         false});
  const auto junk = std::make_shared<JunkOptions>();
  AddOption(command, "--rules", junk->rules, "FILE",
            "The rule document, instead of the standard one that comes with the program");
  AddOption(command, "--category", junk->category, "NAME",
            "List this category alone; the scan and its totals stay the same");
  AddFlag(command, "--files", junk->list_files,
          "List the files in the table too; --top does as well, and the JSON always does");
  AddRuleFolderOptions(command, junk->folders);
  const auto clean = std::make_shared<CleanOptionParser>(command, CleanSubject::kJunk);
  OnCall(command, [options, junk, clean, &action] {
    ScanOptions read = options->Read();
    read.clean = clean->Read();
    read.junk = *junk;
    action = [read](Console& console) { return RunJunk(read, console); };
  });
}

}  // namespace quastel::client
