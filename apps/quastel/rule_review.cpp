#include "rule_review.h"

#include "rule_vocabulary.h"
#include "text.h"

namespace quastel::client {
namespace {

RuleMistake At(const RuleElement& element, std::string message, std::string hint) {
  return {element.offset, std::move(message), std::move(hint)};
}

// A category without any name, and a path that comes to nothing, which no placeholder can.
bool IsEmptyValue(const RuleElement& element, std::wstring_view attribute) {
  const RuleAttribute& found = *element.Find(attribute);
  if (element.name == kCategoryElement) {
    return found.value.empty();
  }
  // What EndPath may be is the file system's matter.
  return attribute != L"EndPath" && PlainValue(&found).empty();
}

std::string MisspeltHint(const RuleElement& element, std::wstring_view attribute) {
  for (const RuleAttribute& other : element.attributes) {
    const std::string nearest = NearestRuleWord(other.name, {attribute});
    if (!nearest.empty()) {
      return "it has " + ToUtf8(other.name) + nearest;
    }
  }
  return "add " + ToUtf8(attribute) + "=\"...\"";
}

std::optional<RuleMistake> AttributeMistake(const RuleElement& element) {
  for (const std::wstring_view attribute : FindRuleWord(element.name)->required) {
    const std::string subject = "<" + ToUtf8(element.name) + "> has ";
    if (element.Find(attribute) == nullptr) {
      return At(element, subject + "no " + ToUtf8(attribute), MisspeltHint(element, attribute));
    }
    if (IsEmptyValue(element, attribute)) {
      return At(element, subject + "an empty " + ToUtf8(attribute), "");
    }
  }
  return std::nullopt;
}

// What a scan meets below an element, in its order.
template <typename Visit>
void VisitRules(const RuleElement& parent, std::vector<std::wstring>& categories,
                const Visit& visit) {
  for (const RuleElement& child : parent.children) {
    const bool is_category = child.name == kCategoryElement;
    // Root holds categories only, and whatever is not in the vocabulary is ignored.
    if (FindRuleWord(child.name) == nullptr || (categories.empty() && !is_category)) {
      continue;
    }
    if (!visit(child)) {
      return;
    }
    if (is_category) {
      const RuleAttribute* const name = child.Find(L"DisplayName");
      categories.push_back(name == nullptr ? std::wstring() : name->value);
      VisitRules(child, categories, visit);
      categories.pop_back();
    }
  }
}

}  // namespace

std::optional<RuleMistake> FirstMistake(const RuleElement& root) {
  if (root.name != kRootElement) {
    return At(root, "the outer element is <" + ToUtf8(root.name) + ">, not <Root>",
              "names are spelt exactly, letter case included");
  }
  std::optional<RuleMistake> first;
  std::vector<std::wstring> categories;
  VisitRules(root, categories, [&first](const RuleElement& element) {
    if (!first) {
      first = AttributeMistake(element);
    }
    return !first;
  });
  return first;
}

std::vector<RuleUse> RulesOf(const RuleElement& root) {
  std::vector<RuleUse> rules;
  std::vector<std::wstring> categories;
  VisitRules(root, categories, [&](const RuleElement& element) {
    if (element.name != kCategoryElement) {
      rules.push_back({&element, categories});
    }
    return true;
  });
  return rules;
}

std::vector<std::wstring> TopCategories(const RuleElement& root) {
  std::vector<std::wstring> names;
  std::vector<std::wstring> categories;
  VisitRules(root, categories, [&](const RuleElement& element) {
    if (categories.empty()) {
      names.push_back(element.Find(L"DisplayName")->value);
    }
    return true;
  });
  return names;
}

std::wstring PlainValue(const RuleAttribute* attribute) {
  // NOLINTNEXTLINE(readability-redundant-string-cstr): a NUL ends the value, as it does in a scan.
  return attribute == nullptr ? std::wstring() : std::wstring(attribute->value.c_str());
}

}  // namespace quastel::client
