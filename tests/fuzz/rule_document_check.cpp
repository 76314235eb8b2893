#include "fuzz/rule_document_check.h"

#include "fuzz/demand.h"
#include "junk/rule_document.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::fuzz {
namespace {

using junk::RuleAttribute;
using junk::RuleNode;

bool IsName(TextView name) {
  for (const Char c : name) {
    const bool fits = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '-' || c == '.' || c == ':' || c == '_';
    if (!fits) {
      return false;
    }
  }
  return !name.empty();
}

// No deeper than the reader lets it be, so the walk may recurse.
void CheckNode(const RuleNode& node, std::size_t depth) {
  Demand(depth <= junk::kDeepestElement, "elements are no deeper than allowed");
  Demand(IsName(node.name), "an element has a name");
  for (const RuleAttribute& attribute : node.attributes) {
    Demand(IsName(attribute.name), "an attribute has a name");
    for (const TextView entity :
         {QS_TEXT("&lt;"), QS_TEXT("&gt;"), QS_TEXT("&quot;"), QS_TEXT("&apos;")}) {
      Demand(attribute.value.find(entity) == Text::npos, "entities are decoded");
    }
  }
  for (const RuleNode& child : node.children) {
    CheckNode(child, depth + 1);
  }
}

// A value holds none of the entities that are decoded after the ampersand's, so
// it comes back.
Text Encoded(const Text& value) {
  Text encoded;
  for (const Char c : value) {
    if (c == Char{'&'}) {
      encoded += QS_TEXT("&amp;");
    } else if (c == Char{'"'}) {
      encoded += QS_TEXT("&quot;");
    } else {
      encoded += c;
    }
  }
  return encoded;
}

void Write(const RuleNode& node, Text& document) {
  document.append(QS_TEXT("<")).append(node.name);
  for (const RuleAttribute& attribute : node.attributes) {
    document.append(QS_TEXT(" ")).append(attribute.name).append(QS_TEXT("=\""));
    document.append(Encoded(attribute.value)).append(QS_TEXT("\""));
  }
  document.append(QS_TEXT(">"));
  for (const RuleNode& child : node.children) {
    Write(child, document);
  }
  document.append(QS_TEXT("</")).append(node.name).append(QS_TEXT(">"));
}

bool AreEqual(const RuleNode& a, const RuleNode& b) {
  if (a.name != b.name || a.attributes.size() != b.attributes.size() ||
      a.children.size() != b.children.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.attributes.size(); ++i) {
    if (a.attributes[i].name != b.attributes[i].name ||
        a.attributes[i].value != b.attributes[i].value) {
      return false;
    }
  }
  for (std::size_t i = 0; i < a.children.size(); ++i) {
    if (!AreEqual(a.children[i], b.children[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool CheckRuleDocument(std::string_view bytes) {
  simulated::SimulatedWindows machine;
  machine.AddFile(QS_TEXT("C:\\rules.xml"), bytes);
  RuleNode root;
  root.name = QS_TEXT("untouched");
  const qs_status status = junk::LoadRuleDocument(QS_TEXT("C:\\rules.xml"), root);
  Demand(machine.open_handles() == 0, "the file is closed");
  if (status != QS_OK) {
    Demand(status == QS_FAILED, "a document that is there is read or fails");
    Demand(root.name == QS_TEXT("untouched") && root.attributes.empty() && root.children.empty(),
           "a failure leaves nothing behind");
    return false;
  }
  CheckNode(root, 1);

  Text document;
  Write(root, document);
  RuleNode again;
  Demand(junk::ParseRuleDocument(document, again), "a tree that was read can be written");
  Demand(AreEqual(root, again), "a tree that was written is read as it was");
  RuleNode cut;
  document.pop_back();
  Demand(!junk::ParseRuleDocument(document, cut), "a document without its end is none");
  return true;
}

}  // namespace quastel::fuzz
