#include "category_words.h"

#include "name_order.h"

namespace quastel::client {
namespace {

constexpr std::wstring_view kKeyStart = L"Page_JunkFiles_Report_Category_";

constexpr bool IsCapital(wchar_t unit) {
  return unit >= L'A' && unit <= L'Z';
}

}  // namespace

std::wstring CategoryWords(std::wstring_view name) {
  const std::wstring_view last = name.substr(name.rfind(L'_') + 1);
  if (!name.starts_with(kKeyStart) || last.empty()) {
    return std::wstring(name);
  }
  std::wstring words(1, last.front());
  for (const wchar_t unit : last.substr(1)) {
    if (IsCapital(unit)) {
      words.push_back(L' ');
      words.push_back(static_cast<wchar_t>(unit - L'A' + L'a'));
    } else {
      words.push_back(unit);
    }
  }
  return words;
}

bool NamesCategory(std::wstring_view typed, std::wstring_view name) {
  return CompareNames(typed, name) == 0 || CompareNames(typed, CategoryWords(name)) == 0;
}

}  // namespace quastel::client
