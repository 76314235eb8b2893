// The system's own headers, as every file of this backend sees them, and what all of them share.

#ifndef QUASTEL_PLATFORM_WIN32_WINDOWS_API_H_
#define QUASTEL_PLATFORM_WIN32_WINDOWS_API_H_

#ifndef UNICODE
#define UNICODE
#endif
#ifndef _UNICODE
#define _UNICODE  // NOLINT(bugprone-reserved-identifier): the name is the system's.
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif

#include <windows.h>

#include <cstdint>

#include "platform/error.h"
#include "platform/handle.h"

namespace quastel::platform {

// The number that a failed call has left. To be called on the line of the failing call. A failure
// that left no number must not read as a success above the seam.
inline Error FailureOfLastCall() noexcept {
  const DWORD number = ::GetLastError();
  return static_cast<Error>(number != ERROR_SUCCESS ? number : DWORD{ERROR_GEN_FAILURE});
}

inline Error ErrorUnless(BOOL succeeded) noexcept {
  return succeeded != FALSE ? Error::kNone : FailureOfLastCall();
}

// Keeps the calling thread's last error over a cleanup.
class LastErrorKeeper {
 public:
  LastErrorKeeper() noexcept : number_(::GetLastError()) {}
  ~LastErrorKeeper() { ::SetLastError(number_); }
  LastErrorKeeper(const LastErrorKeeper&) = delete;
  LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

 private:
  const DWORD number_;
};

inline HANDLE ToSystemHandle(RawHandle raw) noexcept {
  return reinterpret_cast<HANDLE>(raw);
}

inline RawHandle ToRawHandle(void* handle) noexcept {
  return reinterpret_cast<RawHandle>(handle);
}

constexpr std::uint64_t JoinHalves(std::uint32_t high, std::uint32_t low) noexcept {
  return std::uint64_t{high} << 32 | low;
}

constexpr std::uint64_t ToTicks(const FILETIME& time) noexcept {
  return JoinHalves(time.dwHighDateTime, time.dwLowDateTime);
}

constexpr FILETIME ToSystemFileTime(std::uint64_t ticks) noexcept {
  return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_WIN32_WINDOWS_API_H_
