#include "platform/process.h"

#include <cwctype>

#include "platform/win32/windows_api.h"

namespace quastel::platform {

std::uint32_t EnvironmentVariable(const Char* name, Char* buffer, std::uint32_t capacity) noexcept {
  return ::GetEnvironmentVariableW(name, buffer, capacity);
}

std::uint32_t ProcessorCount() noexcept {
  return ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
}

Result<std::uint32_t> DecodeUtf8(const char* bytes, std::uint32_t size, Char* out,
                                 std::uint32_t capacity) noexcept {
  const int units = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes,
                                          static_cast<int>(size), out, static_cast<int>(capacity));
  if (units == 0) {
    return FailureOfLastCall();
  }
  return static_cast<std::uint32_t>(units);
}

Char FoldWide(Char c) noexcept {
  return static_cast<Char>(std::towlower(c));
}

void DisableThreadNotifications(void* module) noexcept {
  ::DisableThreadLibraryCalls(static_cast<HMODULE>(module));
}

}  // namespace quastel::platform
