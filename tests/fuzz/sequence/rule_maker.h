// Rule documents of a few words.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_RULE_MAKER_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_RULE_MAKER_H_

#include <string>

#include "fuzz/input.h"
#include "junk/rule_document.h"

namespace quastel::fuzz::sequence {

junk::RuleNode SomeDocument(Input& input);

// The document as a file.
std::string Written(const junk::RuleNode& root);

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_RULE_MAKER_H_
