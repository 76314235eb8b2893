// Open files: CreateFileW and what works on its handle.

#ifndef QUASTEL_PLATFORM_FILE_H_
#define QUASTEL_PLATFORM_FILE_H_

#include <cstdint>

#include "base/text.h"
#include "platform/attributes.h"
#include "platform/error.h"
#include "platform/handle.h"

namespace quastel::platform {

struct FilePolicy {
  static constexpr RawHandle kInvalid = -1;
  static void Close(RawHandle raw) noexcept;
};
using FileHandle = UniqueHandle<FilePolicy>;

inline constexpr std::uint32_t kAccessQuery = 0;
inline constexpr std::uint32_t kAccessRead = 0x80000000;
inline constexpr std::uint32_t kAccessWrite = 0x40000000;

inline constexpr std::uint32_t kShareRead = 0x1;
inline constexpr std::uint32_t kShareWrite = 0x2;
inline constexpr std::uint32_t kShareDelete = 0x4;
inline constexpr std::uint32_t kShareAll = kShareRead | kShareWrite | kShareDelete;

enum class Disposition : std::uint32_t {
  kCreateNew = 1,
  kCreateAlways = 2,
  kOpenExisting = 3,
};

inline constexpr std::uint32_t kFlagSequentialScan = 0x08000000;

// CreateFileW without security attributes and template. `flags` joins attributes and flags. Opens
// devices such as \\.\C: as well.
Result<FileHandle> OpenFile(const Char* path, std::uint32_t access, std::uint32_t share,
                            Disposition disposition, std::uint32_t flags) noexcept;

// ReadFile, synchronous: the bytes read, 0 at the end of the file.
Result<std::uint32_t> ReadFrom(const FileHandle& file, void* buffer, std::uint32_t size) noexcept;

// WriteFile, synchronous: the bytes written.
Result<std::uint32_t> WriteTo(const FileHandle& file, const void* data,
                              std::uint32_t size) noexcept;

// SetFilePointerEx from the beginning.
[[nodiscard]] Error SeekTo(const FileHandle& file, std::int64_t offset) noexcept;

// GetFileSizeEx.
Result<std::int64_t> QuerySize(const FileHandle& file) noexcept;

// FlushFileBuffers.
[[nodiscard]] Error FlushFile(const FileHandle& file) noexcept;

// CloseHandle for callers that must know whether it worked; the handle is given up either way.
[[nodiscard]] Error CloseFile(FileHandle file) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_FILE_H_
