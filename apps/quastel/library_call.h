#ifndef QUASTEL_APPS_QUASTEL_LIBRARY_CALL_H_
#define QUASTEL_APPS_QUASTEL_LIBRARY_CALL_H_

#include <quastel_core.h>

namespace quastel::client {

// For calls that cannot fail while the handle is good: if one does, going on would show wrong data.
// Throws UserError with the name of the function and what its status means.
void RequireOk(qs_status status, const char* call);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_LIBRARY_CALL_H_
