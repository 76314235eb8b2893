// The process and its surroundings: environment, processors, text conversion, the loaded module.

#ifndef QUASTEL_PLATFORM_PROCESS_H_
#define QUASTEL_PLATFORM_PROCESS_H_

#include <cstdint>

#include "base/text.h"
#include "platform/error.h"

namespace quastel::platform {

// GetEnvironmentVariableW: the length without its terminator; the capacity that is needed when the
// buffer is too short; 0 when the variable is absent or empty.
[[nodiscard]] std::uint32_t EnvironmentVariable(const Char* name, Char* buffer,
                                                std::uint32_t capacity) noexcept;

// The number of logical processors; 0 when the system does not say.
[[nodiscard]] std::uint32_t ProcessorCount() noexcept;

// MultiByteToWideChar with CP_UTF8 and MB_ERR_INVALID_CHARS. With a null `out` and capacity 0 the
// units needed are answered and nothing is written.
Result<std::uint32_t> DecodeUtf8(const char* bytes, std::uint32_t size, Char* out,
                                 std::uint32_t capacity) noexcept;

// towlower of the C runtime, with the locale as it is when the process starts.
[[nodiscard]] Char FoldWide(Char c) noexcept;

// DisableThreadLibraryCalls.
void DisableThreadNotifications(void* module) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_PROCESS_H_
