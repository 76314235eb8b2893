#ifndef QUASTEL_APPS_QUASTEL_HELP_EXAMPLES_H_
#define QUASTEL_APPS_QUASTEL_HELP_EXAMPLES_H_

#include <string>
#include <string_view>

namespace quastel::client {

// What the help of a command ends in: examples of its own, and what the exit codes mean. The whole
// program is the command "quastel". Empty for a command without examples.
std::string HelpFooter(std::string_view command);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HELP_EXAMPLES_H_
