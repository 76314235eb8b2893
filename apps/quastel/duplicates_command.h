#ifndef QUASTEL_APPS_QUASTEL_DUPLICATES_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_DUPLICATES_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel duplicates ROOT...: lists the groups of equal files and touches nothing.
void AddDuplicatesCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_DUPLICATES_COMMAND_H_
