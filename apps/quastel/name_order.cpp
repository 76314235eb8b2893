#include "name_order.h"

#include <windows.h>

namespace quastel::client {
namespace {

// A network path loses a separator, so that its two spellings compare alike.
std::wstring_view WithoutPrefix(std::wstring_view path) {
  constexpr std::wstring_view kExtended = L"\\\\?\\";
  constexpr std::wstring_view kExtendedNetwork = L"\\\\?\\UNC";
  for (const std::wstring_view prefix : {kExtendedNetwork, kExtended, std::wstring_view(L"\\")}) {
    if (path.starts_with(prefix)) {
      return path.substr(prefix.size());
    }
  }
  return path;
}

}  // namespace

int CompareNames(std::wstring_view a, std::wstring_view b) {
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                              static_cast<int>(b.size()), TRUE) -
         CSTR_EQUAL;
}

bool IsPathBefore(std::wstring_view a, std::wstring_view b) {
  a = WithoutPrefix(a);
  b = WithoutPrefix(b);
  const int order = CompareNames(a, b);
  return order != 0 ? order < 0 : a < b;
}

}  // namespace quastel::client
