#ifndef QUASTEL_APPS_QUASTEL_RULE_READER_H_
#define QUASTEL_APPS_QUASTEL_RULE_READER_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quastel::client {

// What is wrong at a place of a rule document's text. Reads on after "line 3, column 14: ".
struct RuleMistake {
  std::size_t offset = 0;
  std::string message;
  std::string hint;  // may be empty
};

struct RuleAttribute {
  std::size_t offset = 0;
  std::wstring name;
  std::wstring value;  // with its entities decoded
};

struct RuleElement {
  std::size_t offset = 0;  // of its "<"
  std::wstring name;
  std::vector<RuleAttribute> attributes;
  std::vector<RuleElement> children;

  // The first attribute of that name, which is the one that counts, or null.
  const RuleAttribute* Find(std::wstring_view attribute_name) const;
};

// Reads the text of a rule document by the grammar of docs/rule-format.md. The library reads it in
// the same way, but does not tell where a document is wrong; a test holds the two together. Answers
// the first mistake, and writes `root` when there is none.
std::optional<RuleMistake> ReadRules(std::wstring_view text, RuleElement& root);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_READER_H_
