#ifndef QUASTEL_APPS_QUASTEL_SCAN_REQUEST_H_
#define QUASTEL_APPS_QUASTEL_SCAN_REQUEST_H_

#include <quastel_core.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "protected_folders.h"

namespace quastel::client {

// What a scan is asked for.
struct ScanRequest {
  std::uint32_t kind = QS_SCAN_KIND_LARGE_FILES;
  std::vector<std::wstring> roots;  // absolute
  // For a junk scan these are what the placeholders of the rules stand for, and protect nothing.
  std::optional<ProtectedFolders> protection;
  // The profile that keeps the hash cache where `protection` names none; empty for no cache.
  std::wstring cache_profile;
  std::wstring rules_path;  // absolute; junk only

  // What the library is given as the user's profile; null when it is given none.
  const wchar_t* UserHome() const {
    const std::wstring& home = protection ? protection->user_home : cache_profile;
    return home.empty() ? nullptr : home.c_str();
  }
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_REQUEST_H_
