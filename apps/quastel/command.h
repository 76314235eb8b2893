#ifndef QUASTEL_APPS_QUASTEL_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_COMMAND_H_

#include <functional>

#include "console.h"
#include "exit_codes.h"

namespace CLI {
class App;
}  // namespace CLI

namespace quastel::client {

// What the arguments ask for. Each command adds itself to the parser and, when it is the one that
// was called, stores its work here; it runs after parsing is over.
using Action = std::function<ExitCode(Console&)>;

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_COMMAND_H_
