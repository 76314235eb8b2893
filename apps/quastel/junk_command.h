#ifndef QUASTEL_APPS_QUASTEL_JUNK_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_JUNK_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel junk: lists what the rules of a document find, and touches nothing.
void AddJunkCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_JUNK_COMMAND_H_
