#include "interrupt.h"

#include <windows.h>

#include <atomic>

namespace quastel::client {
namespace {

// The system calls the handler on a thread of its own and gives it no context.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables)
std::atomic<bool> interrupted{false};

BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    return FALSE;
  }
  return interrupted.exchange(true) ? FALSE : TRUE;
}

}  // namespace

InterruptGuard::InterruptGuard() {
  interrupted = false;
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

InterruptGuard::~InterruptGuard() {
  SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): asked of a guard that lives
bool InterruptGuard::Requested() const {
  return interrupted;
}

}  // namespace quastel::client
