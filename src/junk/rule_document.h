// The rule document: an element tree in a small subset of XML.
//
// Names, attributes and nesting are kept; text between elements is read past. Known encodings are
// UTF-16 little-endian with its mark, and UTF-8 with or without one. What the subset does not hold
// (CDATA, document types, processing instructions inside the root, unquoted values) is an error.

#ifndef QUASTEL_JUNK_RULE_DOCUMENT_H_
#define QUASTEL_JUNK_RULE_DOCUMENT_H_

#include <cstddef>
#include <vector>

#include "base/text.h"

namespace quastel::junk {

struct RuleAttribute {
  Text name;
  Text value;  // with its entities decoded
};

struct RuleNode {
  Text name;
  std::vector<RuleAttribute> attributes;  // in document order, repeated names included
  std::vector<RuleNode> children;         // in document order

  // The value of the first attribute of that name, or null.
  const Text* Find(TextView attribute_name) const;
};

// Elements may be nested this deep, the root included: a hostile document must not be able to
// exhaust the caller's stack.
inline constexpr std::size_t kDeepestElement = 256;

// QS_NOT_FOUND when the file does not exist, QS_FAILED for every other trouble. `root` is written
// for QS_OK only.
qs_status LoadRuleDocument(const Text& path, RuleNode& root);

// Reads a decoded document; false when it is not well-formed.
bool ParseRuleDocument(TextView document, RuleNode& root);

}  // namespace quastel::junk

#endif  // QUASTEL_JUNK_RULE_DOCUMENT_H_
