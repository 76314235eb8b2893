#ifndef QUASTEL_APPS_QUASTEL_LIST_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_LIST_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel list ROOT...: the smaller family of the library, a flat list and a clean by index.
void AddListCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_LIST_COMMAND_H_
