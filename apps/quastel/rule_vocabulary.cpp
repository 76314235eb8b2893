#include "rule_vocabulary.h"

#include <algorithm>

#include "name_order.h"
#include "nearest_word.h"
#include "text.h"

namespace quastel::client {
namespace {

const std::vector<RuleWord>& Words() {
  static const std::vector<RuleWord> words = {
      {kCategoryElement, {L"DisplayName"}, {}},
      {kFolderElement, {L"Path"}, {L"Pattern", L"DisplayName"}},
      {kFolderListElement, {L"StartPath", L"EndPath"}, {L"ContainsPath", L"DisplayName"}},
      {kChildrenListElement, {L"StartPath"}, {}},
  };
  return words;
}

}  // namespace

const RuleWord* FindRuleWord(std::wstring_view element) {
  const auto found = std::find_if(Words().begin(), Words().end(), [element](const RuleWord& word) {
    return word.element == element;
  });
  return found == Words().end() ? nullptr : &*found;
}

std::string NearestRuleWord(std::wstring_view word, const std::vector<std::wstring_view>& words) {
  std::vector<std::string> candidates;
  for (const std::wstring_view candidate : words) {
    // Letter case counts, which is what people forget first.
    if (CompareNames(word, candidate) == 0) {
      return "; did you mean " + ToUtf8(candidate) + "? letter case counts";
    }
    candidates.push_back(ToUtf8(candidate));
  }
  const std::string nearest = NearestWord(ToUtf8(word), candidates);
  return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

std::vector<std::wstring_view> RuleElements() {
  std::vector<std::wstring_view> names;
  for (const RuleWord& word : Words()) {
    names.push_back(word.element);
  }
  return names;
}

}  // namespace quastel::client
