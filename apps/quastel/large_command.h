#ifndef QUASTEL_APPS_QUASTEL_LARGE_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_LARGE_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel large ROOT...: lists the files above 10 MiB and touches nothing.
void AddLargeCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_LARGE_COMMAND_H_
