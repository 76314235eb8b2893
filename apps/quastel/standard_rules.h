#ifndef QUASTEL_APPS_QUASTEL_STANDARD_RULES_H_
#define QUASTEL_APPS_QUASTEL_STANDARD_RULES_H_

#include <string>

namespace quastel::client {

// The rule document that a junk scan uses when none is named: rules\standard.xml beside the
// program, or where an installation puts it, ..\share\quastel\rules\standard.xml. Throws UserError
// when it is in neither place.
std::wstring StandardRules();

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_STANDARD_RULES_H_
