#ifndef QUASTEL_APPS_QUASTEL_SCRIPT_JSON_H_
#define QUASTEL_APPS_QUASTEL_SCRIPT_JSON_H_

#include <string>

#include "json.h"

namespace quastel::client {

// JSON text that may stand inside a script element of a page, whatever its strings hold.
std::string JsonForScript(const Json& value);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCRIPT_JSON_H_
