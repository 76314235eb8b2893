#include "library_call.h"

#include <string>

#include "status_text.h"
#include "user_error.h"

namespace quastel::client {

void RequireOk(qs_status status, const char* call) {
  if (status != QS_OK) {
    throw UserError(ExitCode::kError, std::string(call) + ": " + StatusSentence(status));
  }
}

}  // namespace quastel::client
