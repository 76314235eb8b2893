#ifndef QUASTEL_APPS_QUASTEL_RULE_DOCUMENT_H_
#define QUASTEL_APPS_QUASTEL_RULE_DOCUMENT_H_

#include <optional>
#include <string>
#include <vector>

#include "rule_reader.h"
#include "text_positions.h"
#include "user_error.h"

namespace quastel::client {

// A mistake where a person finds it.
struct RuleProblem {
  TextPosition position;
  std::string message;
  std::string hint;
};

// A rule document as the client reads it, to tell what is wrong with it and what it means. Scanning
// is the library's, which reads the file itself.
struct RuleDocument {
  std::wstring path;
  std::optional<RuleProblem> problem;  // the first one: a scan with the document fails
  std::vector<RuleProblem> warnings;   // a scan goes its way, but hardly the one that was meant
  RuleElement root;                    // empty when there is a problem of grammar

  // Parallel to what RulesOf(root) answers.
  std::vector<TextPosition> rule_positions;
};

// Throws UserError when the file cannot be read.
RuleDocument LoadRuleDocument(const std::wstring& path);

// What a command says about a document with a problem, which it cannot work with.
UserError ProblemError(const std::wstring& path, const RuleProblem& problem);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_DOCUMENT_H_
