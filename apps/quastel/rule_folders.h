#ifndef QUASTEL_APPS_QUASTEL_RULE_FOLDERS_H_
#define QUASTEL_APPS_QUASTEL_RULE_FOLDERS_H_

#include <string>

#include "protected_folders.h"

namespace CLI {
class App;
}  // namespace CLI

namespace quastel::client {

// Which folders the placeholders of rule documents stand for, as typed; empty for those of whoever
// runs the program.
struct RuleFolderOptions {
  std::string user_home;
  std::string system_root;
};

// Lets `command` accept them; `options` must live until the arguments were parsed.
void AddRuleFolderOptions(CLI::App& command, RuleFolderOptions& options);

// What {UserHome} and {Root} stand for: what was typed, otherwise %USERPROFILE% and %SystemDrive%.
// Throws UserError when a folder that was typed is not there or a variable is not set.
ProtectedFolders ResolveRuleFolders(const RuleFolderOptions& options);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_FOLDERS_H_
