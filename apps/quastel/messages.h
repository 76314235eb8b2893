#ifndef QUASTEL_APPS_QUASTEL_MESSAGES_H_
#define QUASTEL_APPS_QUASTEL_MESSAGES_H_

#include <string_view>

#include "console.h"

namespace quastel::client {

// All go to standard error, which is never read by a program. Several lines become several
// messages; an empty hint prints none.
void PrintError(Console& console, std::string_view message, std::string_view hint);
void PrintNote(Console& console, std::string_view message);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_MESSAGES_H_
