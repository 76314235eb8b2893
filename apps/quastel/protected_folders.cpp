#include "protected_folders.h"

#include <windows.h>

#include "path_text.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr const wchar_t* kProfile = L"USERPROFILE";

std::wstring Variable(const wchar_t* name) {
  std::wstring value(MAX_PATH, L'\0');
  for (;;) {
    // Answers the length without the terminator, or the size that it needs with it.
    const DWORD length =
        GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    if (length < value.size()) {
      value.resize(length);
      return value;
    }
    value.resize(length);
  }
}

std::wstring RequiredVariable(const wchar_t* name) {
  std::wstring value = Variable(name);
  if (value.empty()) {
    throw UserError(ExitCode::kError,
                    "the environment variable " + ToUtf8(name) +
                        " is not set, so the system's protected folders are not known",
                    "set it, or scan without protection by --no-protect");
  }
  return value;
}

}  // namespace

ProtectedFolders ProtectedFoldersFromEnvironment() {
  ProtectedFolders folders;
  folders.system_root = RequiredVariable(L"SystemDrive");
  if (!IsSeparator(folders.system_root.back())) {
    folders.system_root.push_back(L'\\');
  }
  folders.user_home = RequiredVariable(kProfile);
  return folders;
}

std::wstring ProfileFromEnvironment() {
  return Variable(kProfile);
}

}  // namespace quastel::client
