#ifndef QUASTEL_APPS_QUASTEL_HELP_EXAMPLES_H_
#define QUASTEL_APPS_QUASTEL_HELP_EXAMPLES_H_

#include <CLI/CLI.hpp>

namespace quastel::client {

// Lets the help of the program and of each of its commands end in examples of its own and in what
// the exit codes mean.
void AddExamples(CLI::App& app);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HELP_EXAMPLES_H_
