#ifndef QUASTEL_APPS_QUASTEL_VERSION_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_VERSION_COMMAND_H_

#include <string>

#include "command.h"

namespace quastel::client {

// "quastel 0.4.0 (library 0.4.0)"
std::string VersionText();

// quastel version: the versions of the client and of the library that it found.
void AddVersionCommand(CLI::App& app, Action& action);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_VERSION_COMMAND_H_
