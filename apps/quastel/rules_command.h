#ifndef QUASTEL_APPS_QUASTEL_RULES_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_RULES_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel rules check FILE: tells what is wrong with a rule document, or where it leads.
void AddRulesCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULES_COMMAND_H_
