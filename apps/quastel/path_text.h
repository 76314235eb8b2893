#ifndef QUASTEL_APPS_QUASTEL_PATH_TEXT_H_
#define QUASTEL_APPS_QUASTEL_PATH_TEXT_H_

#include <string>
#include <string_view>

namespace quastel::client {

constexpr bool IsSeparator(wchar_t unit) {
  return unit == L'\\' || unit == L'/';
}

// The library joins folder and name with a separator of its own, also when the folder is a drive
// root that ends in one ("Q:\\x"). This folds each run of separators into one, aside from the two
// that begin a network path or an extended-length path.
std::wstring TidyPath(std::wstring_view path);

// For people: "\\?\Q:\x" reads "Q:\x" and "\\?\UNC\server\share" reads "\\server\share".
std::wstring WithoutExtendedPrefix(std::wstring_view path);

// The text before the last separator, so "Q:" for a file in a drive's root.
std::wstring FolderOf(std::wstring_view path);

// In quotation marks and UTF-8, for a message.
std::string Quoted(std::wstring_view path);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_PATH_TEXT_H_
