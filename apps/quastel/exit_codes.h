#ifndef QUASTEL_APPS_QUASTEL_EXIT_CODES_H_
#define QUASTEL_APPS_QUASTEL_EXIT_CODES_H_

namespace quastel::client {

// What the process answers; docs/client.md promises these numbers to scripts.
enum class ExitCode : int {
  kDone = 0,
  kError = 1,
  kUsage = 2,
  kSomeRowsFailed = 3,
  kCancelled = 5,
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_EXIT_CODES_H_
