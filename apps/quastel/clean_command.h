#ifndef QUASTEL_APPS_QUASTEL_CLEAN_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_COMMAND_H_

#include "command.h"

namespace quastel::client {

// quastel clean --from REPORT.json
void AddCleanCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_COMMAND_H_
