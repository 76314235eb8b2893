#include "path_text.h"

#include <cstddef>

#include "text.h"

namespace quastel::client {
namespace {

constexpr std::wstring_view kExtended = L"\\\\?\\";
constexpr std::wstring_view kExtendedNetwork = L"\\\\?\\UNC\\";

}  // namespace

std::wstring TidyPath(std::wstring_view path) {
  const std::size_t kept = path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1]) ? 2 : 0;
  std::wstring tidy(path.substr(0, kept));
  tidy.reserve(path.size());
  for (std::size_t i = kept; i < path.size(); ++i) {
    const bool repeated = i > kept && IsSeparator(path[i]) && IsSeparator(path[i - 1]);
    if (!repeated) {
      tidy.push_back(path[i]);
    }
  }
  return tidy;
}

std::wstring WithoutExtendedPrefix(std::wstring_view path) {
  if (path.starts_with(kExtendedNetwork)) {
    return std::wstring(L"\\\\").append(path.substr(kExtendedNetwork.size()));
  }
  if (path.starts_with(kExtended)) {
    path.remove_prefix(kExtended.size());
  }
  return std::wstring(path);
}

std::wstring FolderOf(std::wstring_view path) {
  const std::size_t separator = path.find_last_of(L"\\/");
  return std::wstring(path.substr(0, separator == std::wstring_view::npos ? 0 : separator));
}

std::string Quoted(std::wstring_view path) {
  return std::string("\"").append(ToUtf8(path)).append("\"");
}

}  // namespace quastel::client
