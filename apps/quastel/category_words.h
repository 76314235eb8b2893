#ifndef QUASTEL_APPS_QUASTEL_CATEGORY_WORDS_H_
#define QUASTEL_APPS_QUASTEL_CATEGORY_WORDS_H_

#include <string>
#include <string_view>

namespace quastel::client {

// The name of a category as people read it. Rule documents may name categories by keys, so that
// each program can show its own words: "Page_JunkFiles_Report_Category_TemporaryFiles" becomes
// "Temporary files". Every other name stays as it is.
std::wstring CategoryWords(std::wstring_view name);

// Whether `typed` names the category, by its words or by its key, without regard to case.
bool NamesCategory(std::wstring_view typed, std::wstring_view name);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CATEGORY_WORDS_H_
