// What holds for the reader of rule documents whatever the bytes are.

#ifndef QUASTEL_TESTS_FUZZ_RULE_DOCUMENT_CHECK_H_
#define QUASTEL_TESTS_FUZZ_RULE_DOCUMENT_CHECK_H_

#include <string_view>

namespace quastel::fuzz {

// Reads the bytes as a document from a machine of its own; whether they are
// one. Ends the process when a rule is broken.
bool CheckRuleDocument(std::string_view bytes);

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_RULE_DOCUMENT_CHECK_H_
