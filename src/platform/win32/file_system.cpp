#include "platform/file_system.h"

#include "platform/win32/windows_api.h"

namespace quastel::platform {

std::uint32_t FullPathName(const Char* path, std::uint32_t capacity, Char* buffer) noexcept {
  return ::GetFullPathNameW(path, capacity, buffer, nullptr);
}

Result<Attributes> QueryAttributes(const Char* path) noexcept {
  const DWORD attributes = ::GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return FailureOfLastCall();
  }
  return Attributes{attributes};
}

Result<FileFacts> QueryFileFacts(const Char* path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (::GetFileAttributesExW(path, GetFileExInfoStandard, &data) == FALSE) {
    return FailureOfLastCall();
  }
  FileFacts facts;
  facts.attributes = data.dwFileAttributes;
  facts.size = JoinHalves(data.nFileSizeHigh, data.nFileSizeLow);
  facts.last_write = ToTicks(data.ftLastWriteTime);
  return facts;
}

Error RemoveFile(const Char* path) noexcept {
  return ErrorUnless(::DeleteFileW(path));
}

Error RemoveFolder(const Char* path) noexcept {
  return ErrorUnless(::RemoveDirectoryW(path));
}

Error RenameFile(const Char* from, const Char* to, std::uint32_t flags) noexcept {
  return ErrorUnless(::MoveFileExW(from, to, flags));
}

}  // namespace quastel::platform
