#ifndef QUASTEL_APPS_QUASTEL_EMPTY_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_EMPTY_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel empty ROOT...: lists the folders without any file and touches nothing.
void AddEmptyCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_EMPTY_COMMAND_H_
