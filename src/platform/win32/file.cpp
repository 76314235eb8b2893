#include "platform/file.h"

#include "platform/win32/windows_api.h"

namespace quastel::platform {

void FilePolicy::Close(RawHandle raw) noexcept {
  const LastErrorKeeper keeper;
  ::CloseHandle(ToSystemHandle(raw));
}

Result<FileHandle> OpenFile(const Char* path, std::uint32_t access, std::uint32_t share,
                            Disposition disposition, std::uint32_t flags) noexcept {
  const HANDLE file =
      ::CreateFileW(path, access, share, nullptr, static_cast<DWORD>(disposition), flags, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return FailureOfLastCall();
  }
  return FileHandle(ToRawHandle(file));
}

Result<std::uint32_t> ReadFrom(const FileHandle& file, void* buffer, std::uint32_t size) noexcept {
  DWORD read = 0;
  if (::ReadFile(ToSystemHandle(file.raw()), buffer, size, &read, nullptr) == FALSE) {
    return FailureOfLastCall();
  }
  return std::uint32_t{read};
}

Result<std::uint32_t> WriteTo(const FileHandle& file, const void* data,
                              std::uint32_t size) noexcept {
  DWORD written = 0;
  if (::WriteFile(ToSystemHandle(file.raw()), data, size, &written, nullptr) == FALSE) {
    return FailureOfLastCall();
  }
  return std::uint32_t{written};
}

Error SeekTo(const FileHandle& file, std::int64_t offset) noexcept {
  LARGE_INTEGER distance;
  distance.QuadPart = offset;
  return ErrorUnless(::SetFilePointerEx(ToSystemHandle(file.raw()), distance, nullptr, FILE_BEGIN));
}

Result<std::int64_t> QuerySize(const FileHandle& file) noexcept {
  LARGE_INTEGER size;
  if (::GetFileSizeEx(ToSystemHandle(file.raw()), &size) == FALSE) {
    return FailureOfLastCall();
  }
  return std::int64_t{size.QuadPart};
}

Error FlushFile(const FileHandle& file) noexcept {
  return ErrorUnless(::FlushFileBuffers(ToSystemHandle(file.raw())));
}

Error CloseFile(FileHandle file) noexcept {
  return ErrorUnless(::CloseHandle(ToSystemHandle(file.Release())));
}

}  // namespace quastel::platform
