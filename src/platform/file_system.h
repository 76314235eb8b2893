// Names, attributes, removal: the system's path functions, one call for one call.
//
// Paths are passed as they are, NUL-terminated; whoever calls has chosen the long-path form.

#ifndef QUASTEL_PLATFORM_FILE_SYSTEM_H_
#define QUASTEL_PLATFORM_FILE_SYSTEM_H_

#include <cstdint>

#include "base/text.h"
#include "platform/attributes.h"
#include "platform/error.h"

namespace quastel::platform {

// GetFullPathNameW: the length written without its terminator; when the buffer is null or too
// short, the capacity that is needed, terminator included; 0 after a failure.
[[nodiscard]] std::uint32_t FullPathName(const Char* path, std::uint32_t capacity,
                                         Char* buffer) noexcept;

// GetFileAttributesW.
Result<Attributes> QueryAttributes(const Char* path) noexcept;

struct FileFacts {
  Attributes attributes = 0;
  std::uint64_t size = 0;
  std::uint64_t last_write = 0;  // FILETIME, UTC
};

// GetFileAttributesExW with GetFileExInfoStandard.
Result<FileFacts> QueryFileFacts(const Char* path) noexcept;

// DeleteFileW.
[[nodiscard]] Error RemoveFile(const Char* path) noexcept;

// RemoveDirectoryW.
[[nodiscard]] Error RemoveFolder(const Char* path) noexcept;

inline constexpr std::uint32_t kMoveReplaceExisting = 0x1;
inline constexpr std::uint32_t kMoveWriteThrough = 0x8;

// MoveFileExW.
[[nodiscard]] Error RenameFile(const Char* from, const Char* to, std::uint32_t flags) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_FILE_SYSTEM_H_
