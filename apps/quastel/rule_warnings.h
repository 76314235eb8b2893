#ifndef QUASTEL_APPS_QUASTEL_RULE_WARNINGS_H_
#define QUASTEL_APPS_QUASTEL_RULE_WARNINGS_H_

#include <vector>

#include "rule_reader.h"

namespace quastel::client {

// What a scan accepts or ignores without a word, but whoever wrote it hardly meant: words that are
// not in the vocabulary, attributes given twice, paths that lead elsewhere than they seem to. In
// the order of the document.
std::vector<RuleMistake> RuleWarnings(const RuleElement& root);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_WARNINGS_H_
