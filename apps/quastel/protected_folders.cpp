#include "protected_folders.h"

#include "environment.h"
#include "path_text.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr const wchar_t* kProfile = L"USERPROFILE";

std::wstring RequiredVariable(const wchar_t* name, const std::string& consequence,
                              const std::string& hint) {
  std::wstring value = EnvironmentVariable(name);
  if (value.empty()) {
    throw UserError(ExitCode::kError,
                    "the environment variable " + ToUtf8(name) + " is not set, " + consequence,
                    hint);
  }
  return value;
}

}  // namespace

ProtectedFolders ProtectedFoldersFromEnvironment() {
  constexpr const char* kConsequence = "so the system's protected folders are not known";
  constexpr const char* kHint = "set it, or scan without protection by --no-protect";
  ProtectedFolders folders;
  folders.system_root = RequiredSystemRoot(kConsequence, kHint);
  folders.user_home = RequiredProfile(kConsequence, kHint);
  return folders;
}

std::wstring RequiredSystemRoot(const std::string& consequence, const std::string& hint) {
  return WithSeparator(RequiredVariable(L"SystemDrive", consequence, hint));
}

std::wstring RequiredProfile(const std::string& consequence, const std::string& hint) {
  return RequiredVariable(kProfile, consequence, hint);
}

std::wstring WithSeparator(std::wstring folder) {
  if (folder.empty() || !IsSeparator(folder.back())) {
    folder.push_back(L'\\');
  }
  return folder;
}

std::wstring ProfileFromEnvironment() {
  return EnvironmentVariable(kProfile);
}

}  // namespace quastel::client
