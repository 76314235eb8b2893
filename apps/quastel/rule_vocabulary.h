#ifndef QUASTEL_APPS_QUASTEL_RULE_VOCABULARY_H_
#define QUASTEL_APPS_QUASTEL_RULE_VOCABULARY_H_

#include <string>
#include <string_view>
#include <vector>

namespace quastel::client {

// An element that may stand in a category, and the attributes that it knows.
struct RuleWord {
  std::wstring_view element;
  std::vector<std::wstring_view> required;
  std::vector<std::wstring_view> optional;
};

inline constexpr std::wstring_view kRootElement = L"Root";
inline constexpr std::wstring_view kCategoryElement = L"Category";
inline constexpr std::wstring_view kFolderElement = L"Folder";
inline constexpr std::wstring_view kFolderListElement = L"FolderList";
inline constexpr std::wstring_view kChildrenListElement = L"ChildrenList";

// Null for an element that a scan ignores.
const RuleWord* FindRuleWord(std::wstring_view element);

// "; did you mean Path?" when one of the words is near, else empty.
std::string NearestRuleWord(std::wstring_view word, const std::vector<std::wstring_view>& words);

// The names of the elements that may stand in a category.
std::vector<std::wstring_view> RuleElements();

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_VOCABULARY_H_
