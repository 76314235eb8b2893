#ifndef QUASTEL_APPS_QUASTEL_HASH_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_HASH_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel hash FILE...: prints the hash of each file's whole content.
void AddHashCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HASH_COMMAND_H_
