// Threads: start, join, priority, sleep, and storage that goes away with its thread.

#ifndef QUASTEL_PLATFORM_THREAD_H_
#define QUASTEL_PLATFORM_THREAD_H_

#include <cstdint>

#include "platform/error.h"
#include "platform/handle.h"

namespace quastel::platform {

struct ThreadPolicy {
  static constexpr RawHandle kInvalid = 0;
  static void Close(RawHandle raw) noexcept;  // the thread itself runs on
};
using ThreadHandle = UniqueHandle<ThreadPolicy>;

using ThreadEntry = void (*)(void* argument) noexcept;

// _beginthreadex.
Result<ThreadHandle> StartThread(ThreadEntry entry, void* argument) noexcept;

// WaitForSingleObject without a limit.
void JoinThread(const ThreadHandle& thread) noexcept;

inline constexpr std::int32_t kPriorityNormal = 0;
inline constexpr std::int32_t kPriorityError = 0x7FFFFFFF;

// GetThreadPriority of the calling thread; kPriorityError when it fails.
[[nodiscard]] std::int32_t CurrentThreadPriority() noexcept;

// SetThreadPriority of the calling thread.
void SetCurrentThreadPriority(std::int32_t priority) noexcept;

// Sleep; 0 gives up the rest of the time slice.
void SleepMilliseconds(std::uint32_t milliseconds) noexcept;

using FiberDestructor = void (*)(void* value);
inline constexpr std::uint32_t kNoFiberSlot = 0xFFFFFFFF;

// FlsAlloc, FlsFree, FlsGetValue, FlsSetValue. The destructor runs for each thread that ends with a
// non-null value, and for every thread's value when the slot is freed.
[[nodiscard]] std::uint32_t AllocateFiberSlot(FiberDestructor destructor) noexcept;
void FreeFiberSlot(std::uint32_t slot) noexcept;
[[nodiscard]] void* FiberValue(std::uint32_t slot) noexcept;
[[nodiscard]] bool SetFiberValue(std::uint32_t slot, void* value) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_THREAD_H_
