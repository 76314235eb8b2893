// The entry point that the system calls when the library is loaded and unloaded.

#include "platform/process.h"

namespace {

constexpr unsigned long kProcessAttach = 1;

}  // namespace

extern "C" int DllMain(void* module, unsigned long reason, void* /*reserved*/);

// There is no state to set up: every object lives in a handle. Threads come and go without the
// library, so their notifications are switched off.
extern "C" int DllMain(void* module, unsigned long reason, void* /*reserved*/) {
  if (reason == kProcessAttach) {
    quastel::platform::DisableThreadNotifications(module);
  }
  return 1;
}
