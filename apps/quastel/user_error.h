#ifndef QUASTEL_APPS_QUASTEL_USER_ERROR_H_
#define QUASTEL_APPS_QUASTEL_USER_ERROR_H_

#include <stdexcept>
#include <string>
#include <utility>

#include "exit_codes.h"

namespace quastel::client {

// Ends a command: main() prints it and answers its exit code. Texts are UTF-8; a message of several
// lines names several things that went wrong.
class UserError : public std::runtime_error {
 public:
  UserError(ExitCode code, const std::string& message, std::string hint = {})
      : std::runtime_error(message), code_(code), hint_(std::move(hint)) {}

  ExitCode code() const { return code_; }
  const std::string& hint() const { return hint_; }

 private:
  ExitCode code_;
  std::string hint_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_USER_ERROR_H_
