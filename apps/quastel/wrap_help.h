#ifndef QUASTEL_APPS_QUASTEL_WRAP_HELP_H_
#define QUASTEL_APPS_QUASTEL_WRAP_HELP_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace quastel::client {

// Where the argument parser lets the explanations of options and commands begin.
inline constexpr std::size_t kExplanationColumn = 30;

// A help text with its lines broken at spaces to fit `width` columns; an explanation goes on below
// its beginning. Examples are there to be copied and stay whole. Of several blank lines in a row
// one is left. The text is ASCII.
std::string WrapHelp(std::string_view text, std::size_t width);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_WRAP_HELP_H_
