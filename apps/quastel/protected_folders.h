#ifndef QUASTEL_APPS_QUASTEL_PROTECTED_FOLDERS_H_
#define QUASTEL_APPS_QUASTEL_PROTECTED_FOLDERS_H_

#include <string>

namespace quastel::client {

// The two places from which the library derives the folders that it stays out of.
struct ProtectedFolders {
  std::wstring system_root;  // with its separator: "C:\"
  std::wstring user_home;
};

// From %SystemDrive% and %USERPROFILE%. Throws UserError when one is not set: a guess could leave
// the real system unprotected.
ProtectedFolders ProtectedFoldersFromEnvironment();

// %SystemDrive% with its separator, and %USERPROFILE%. They throw UserError when the variable is
// not set, whose message reads on with `consequence`.
std::wstring RequiredSystemRoot(const std::string& consequence, const std::string& hint);
std::wstring RequiredProfile(const std::string& consequence, const std::string& hint);

std::wstring WithSeparator(std::wstring folder);

// %USERPROFILE%; empty when it is not set.
std::wstring ProfileFromEnvironment();

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_PROTECTED_FOLDERS_H_
