#include "full_path.h"

#include <windows.h>

namespace quastel::client {

std::wstring FullPath(const std::wstring& path) {
  const DWORD needed = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(needed, L'\0');
  const DWORD length = GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
  if (length == 0 || length >= needed) {
    return path;
  }
  full.resize(length);
  return full;
}

}  // namespace quastel::client
