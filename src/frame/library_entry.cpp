// The entry point that the system calls when the library is loaded and unloaded.

#include "frame/thread_buffer.h"
#include "platform/process.h"

namespace {

constexpr unsigned long kProcessDetach = 0;
constexpr unsigned long kProcessAttach = 1;

}  // namespace

extern "C" int DllMain(void* module, unsigned long reason, void* reserved);

// There is no state to set up: every object lives in a handle. Threads come and go without the
// library, so their notifications are switched off; their read buffers go away by themselves, and
// all at once when the library is unloaded. When the whole process ends (`reserved` is set) the
// other threads are gone already, and the system takes the memory.
extern "C" int DllMain(void* module, unsigned long reason, void* reserved) {
  if (reason == kProcessAttach) {
    quastel::platform::DisableThreadNotifications(module);
  } else if (reason == kProcessDetach && reserved == nullptr) {
    quastel::ReleaseThreadBuffers();
  }
  return 1;
}
