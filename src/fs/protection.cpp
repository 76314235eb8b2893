#include "fs/protection.h"

#include <algorithm>

#include "base/ascii.h"
#include "fs/path_rules.h"

namespace quastel {
namespace {

constexpr std::array<TextView, 3> kIgnoredNames = {QS_TEXT("hiberfil.sys"), QS_TEXT("swapfile.sys"),
                                                   QS_TEXT("pagefile.sys")};

}  // namespace

bool IsIgnoredFile(TextView path) {
  const TextView leaf = LeafOf(path);
  return std::any_of(kIgnoredNames.begin(), kIgnoredNames.end(),
                     [leaf](TextView name) { return EqualsFolded(leaf, name); });
}

ProtectedFolders::ProtectedFolders(const Text& system_root, const Text& user_home) {
  const Text root = ToComparablePath(system_root);
  folders_ = {JoinPath(root, QS_TEXT("Program Files")),
              JoinPath(root, QS_TEXT("Program Files (x86)")),
              JoinPath(root, QS_TEXT("Windows")),
              JoinPath(root, QS_TEXT("ProgramData")),
              JoinPath(root, QS_TEXT("$Recycle.Bin")),
              ToComparablePath(user_home).append(QS_TEXT("\\AppData"))};
}

bool ProtectedFolders::Contains(const Text& path) const {
  const Text comparable = ToComparablePath(path);
  return std::any_of(folders_.begin(), folders_.end(),
                     [&comparable](const Text& folder) { return IsPathUnder(comparable, folder); });
}

bool ProtectedFolders::ContainsFile(const Text& path, TextView name) const {
  // The system drops dots and blanks at the end of a name when it resolves a path.
  const bool may_change = !name.empty() && (name.back() == Char{'.'} || name.back() == Char{' '});
  const bool may_be_folder =
      may_change || std::any_of(folders_.begin(), folders_.end(), [name](const Text& folder) {
        return EqualsFolded(name, LeafOf(folder));
      });
  return may_be_folder && Contains(path);
}

}  // namespace quastel
