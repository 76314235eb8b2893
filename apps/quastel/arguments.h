#ifndef QUASTEL_APPS_QUASTEL_ARGUMENTS_H_
#define QUASTEL_APPS_QUASTEL_ARGUMENTS_H_

#include <string>
#include <vector>

#include "command.h"

namespace quastel::client {

// Understands the arguments that follow the program's name and answers what they ask for, which may
// be to print a help text. Throws UserError with ExitCode::kUsage when they make no sense.
Action ParseArguments(const std::vector<std::wstring>& arguments);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_ARGUMENTS_H_
