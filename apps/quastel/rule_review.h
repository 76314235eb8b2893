#ifndef QUASTEL_APPS_QUASTEL_RULE_REVIEW_H_
#define QUASTEL_APPS_QUASTEL_RULE_REVIEW_H_

#include <optional>
#include <string>
#include <vector>

#include "rule_reader.h"

namespace quastel::client {

// One rule of a document, with the headings above it.
struct RuleUse {
  const RuleElement* element = nullptr;
  std::vector<std::wstring> categories;  // their names as written, the outermost first
};

// The first mistake that ends a scan although the document keeps to the grammar, in the order of
// the scan: another outer element than Root, a category without a name, a rule without its path.
std::optional<RuleMistake> FirstMistake(const RuleElement& root);

// The rules that a scan follows, in its order. They point into `root`.
std::vector<RuleUse> RulesOf(const RuleElement& root);

// The names of the categories in Root, as written.
std::vector<std::wstring> TopCategories(const RuleElement& root);

// The value of an attribute as the library takes it: up to its first NUL. Empty for null.
std::wstring PlainValue(const RuleAttribute* attribute);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_REVIEW_H_
