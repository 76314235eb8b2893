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
  // They all end like this, and hardly another file does.
  if (path.empty() || FoldAscii(path.back()) != Char{'s'}) {
    return false;
  }
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
  std::transform(folders_.begin(), folders_.end(), leaf_lengths_.begin(),
                 [](const Text& folder) { return LeafOf(folder).size(); });
}

bool ProtectedFolders::Contains(const Text& path) const {
  const Text comparable = ToComparablePath(path);
  return std::any_of(folders_.begin(), folders_.end(),
                     [&comparable](const Text& folder) { return IsPathUnder(comparable, folder); });
}

bool ProtectedFolders::ContainsFile(TextView path, TextView name) const {
  // The system drops dots and blanks at the end of a name when it resolves a path.
  bool may_be_folder = !name.empty() && (name.back() == Char{'.'} || name.back() == Char{' '});
  for (std::size_t i = 0; i < folders_.size() && !may_be_folder; ++i) {
    may_be_folder =
        name.size() == leaf_lengths_[i] &&
        EqualsFolded(name, TextView(folders_[i]).substr(folders_[i].size() - leaf_lengths_[i]));
  }
  return may_be_folder && Contains(Text(path));
}

}  // namespace quastel
