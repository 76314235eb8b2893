#include "platform/thread.h"

#include <process.h>

#include <memory>
#include <new>
#include <type_traits>

#include "platform/win32/windows_api.h"

namespace quastel::platform {

namespace {

static_assert(std::is_same_v<FiberDestructor, PFLS_CALLBACK_FUNCTION>);

struct ThreadStart {
  ThreadEntry entry;
  void* argument;
};

unsigned __stdcall RunThread(void* start) noexcept {
  const std::unique_ptr<ThreadStart> owned(static_cast<ThreadStart*>(start));
  owned->entry(owned->argument);
  return 0;
}

}  // namespace

void ThreadPolicy::Close(RawHandle raw) noexcept {
  const LastErrorKeeper keeper;
  ::CloseHandle(ToSystemHandle(raw));
}

Result<ThreadHandle> StartThread(ThreadEntry entry, void* argument) noexcept {
  std::unique_ptr<ThreadStart> start(new (std::nothrow) ThreadStart{entry, argument});
  if (start == nullptr) {
    return Error::kNotEnoughMemory;
  }
  const std::uintptr_t thread = ::_beginthreadex(nullptr, 0, RunThread, start.get(), 0, nullptr);
  if (thread == 0) {
    return FailureOfLastCall();
  }
  static_cast<void>(start.release());  // the thread frees it
  return ThreadHandle(static_cast<RawHandle>(thread));
}

void JoinThread(const ThreadHandle& thread) noexcept {
  ::WaitForSingleObject(ToSystemHandle(thread.raw()), INFINITE);
}

std::int32_t CurrentThreadPriority() noexcept {
  return ::GetThreadPriority(::GetCurrentThread());
}

void SetCurrentThreadPriority(std::int32_t priority) noexcept {
  ::SetThreadPriority(::GetCurrentThread(), priority);
}

void SleepMilliseconds(std::uint32_t milliseconds) noexcept {
  ::Sleep(milliseconds);
}

std::uint32_t AllocateFiberSlot(FiberDestructor destructor) noexcept {
  return ::FlsAlloc(destructor);
}

void FreeFiberSlot(std::uint32_t slot) noexcept {
  ::FlsFree(slot);
}

void* FiberValue(std::uint32_t slot) noexcept {
  return ::FlsGetValue(slot);
}

bool SetFiberValue(std::uint32_t slot, void* value) noexcept {
  return ::FlsSetValue(slot, value) != FALSE;
}

}  // namespace quastel::platform
