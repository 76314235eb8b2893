#include "rule_folders.h"

#include "command_options.h"
#include "path_text.h"
#include "scan_roots.h"
#include "text.h"

namespace quastel::client {

void AddRuleFolderOptions(CLI::App& command, RuleFolderOptions& options) {
  AddOption(command, "--user-home", options.user_home, "DIR",
            "The profile that {UserHome} stands for in the rules, instead of %USERPROFILE%");
  AddOption(command, "--system-root", options.system_root, "DIR",
            "The drive that {Root} stands for in the rules, instead of %SystemDrive%");
}

ProtectedFolders ResolveRuleFolders(const RuleFolderOptions& options) {
  ProtectedFolders folders;
  folders.user_home = options.user_home.empty()
                          ? RequiredProfile("so it is not known what {UserHome} stands for",
                                            "set it, or name the folder with --user-home DIR")
                          : ResolveRoots({FromUtf8(options.user_home)}).front();
  folders.system_root = options.system_root.empty()
                            ? RequiredSystemRoot("so it is not known what {Root} stands for",
                                                 "set it, or name the drive with --system-root DIR")
                            : WithSeparator(ResolveRoots({FromUtf8(options.system_root)}).front());
  return folders;
}

}  // namespace quastel::client
