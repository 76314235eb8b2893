#ifndef QUASTEL_APPS_QUASTEL_RULES_REPORT_H_
#define QUASTEL_APPS_QUASTEL_RULES_REPORT_H_

#include <quastel_core.h>

#include <cstdint>
#include <vector>

#include "console.h"
#include "protected_folders.h"
#include "rule_document.h"
#include "rule_places.h"
#include "rule_review.h"

namespace quastel::client {

// What quastel rules check has to say about a document.
struct RulesReport {
  RuleDocument document;
  ProtectedFolders folders;
  std::vector<RuleUse> rules;         // none when the document has a problem; they point into it
  std::vector<RuleOutcome> outcomes;  // of the first ones, when the check was cancelled
  qs_status status = QS_OK;
  std::uint64_t elapsed_us = 0;
};

// For a document without a problem.
void WriteRulesTable(const RulesReport& report, OutputStream& out);

void WriteRulesJson(const RulesReport& report, OutputStream& out);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULES_REPORT_H_
