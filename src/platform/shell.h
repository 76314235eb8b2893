// The shell and COM, step by step, so that every step of a recycling can fail in a test.

#ifndef QUASTEL_PLATFORM_SHELL_H_
#define QUASTEL_PLATFORM_SHELL_H_

#include <cstdint>

#include "base/text.h"
#include "platform/error.h"
#include "platform/handle.h"

namespace quastel::platform {

// SHCreateDirectoryExW without window and security attributes; creates missing parents as well.
[[nodiscard]] Error CreateFolderTree(const Char* path) noexcept;

struct ShellOperationResult {
  std::int32_t code = 0;  // 0 for success
  bool aborted = false;
};

// SHFileOperationW with FO_DELETE, no owner window and no destination. `paths` ends in two NULs.
[[nodiscard]] ShellOperationResult ShellDelete(const Char* paths, std::uint16_t flags) noexcept;

using ComResult = std::uint32_t;  // HRESULT
inline constexpr ComResult kComOk = 0;
inline constexpr ComResult kComAlreadyInitialized = 1;  // S_FALSE: a success
inline constexpr ComResult kComChangedMode = 0x80010106;

constexpr bool ComSucceeded(ComResult result) {
  return (result & 0x80000000u) == 0;
}

// CoInitializeEx with COINIT_APARTMENTTHREADED, and CoUninitialize.
[[nodiscard]] ComResult InitializeCom() noexcept;
void UninitializeCom() noexcept;

struct ComPolicy {
  static constexpr RawHandle kInvalid = 0;
  static void Close(RawHandle raw) noexcept;  // IUnknown::Release
};
using FileOperation = UniqueHandle<ComPolicy>;  // IFileOperation
using ShellItem = UniqueHandle<ComPolicy>;      // IShellItem

// CoCreateInstance of CLSID_FileOperation in this process.
[[nodiscard]] ComResult CreateFileOperation(FileOperation& operation) noexcept;

// SHCreateItemFromParsingName without a bind context.
[[nodiscard]] ComResult CreateShellItem(const Char* path, ShellItem& item) noexcept;

// IFileOperation::SetOperationFlags, DeleteItem without a sink, PerformOperations and
// GetAnyOperationsAborted.
[[nodiscard]] ComResult SetOperationFlags(const FileOperation& operation,
                                          std::uint32_t flags) noexcept;
[[nodiscard]] ComResult MarkForDeletion(const FileOperation& operation,
                                        const ShellItem& item) noexcept;
[[nodiscard]] ComResult PerformOperations(const FileOperation& operation) noexcept;
[[nodiscard]] ComResult QueryOperationsAborted(const FileOperation& operation,
                                               bool& aborted) noexcept;

}  // namespace quastel::platform

#endif  // QUASTEL_PLATFORM_SHELL_H_
