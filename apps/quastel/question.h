#ifndef QUASTEL_APPS_QUASTEL_QUESTION_H_
#define QUASTEL_APPS_QUASTEL_QUESTION_H_

#include <string>

#include "console.h"

namespace quastel::client {

// Asks on standard error and reads a line of standard input. Yes is "y" or "yes" in either case;
// everything else is no, an empty line and the end of the input too.
bool AskYesOrNo(const std::string& question, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_QUESTION_H_
