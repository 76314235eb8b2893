#include "platform/shell.h"

#include "platform/win32/windows_api.h"
// Need the types of windows.h.
#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shobjidl.h>

namespace quastel::platform {

namespace {

IFileOperation* ToSystem(const FileOperation& operation) noexcept {
  return reinterpret_cast<IFileOperation*>(operation.raw());
}

ComResult ToComResult(HRESULT result) noexcept {
  return static_cast<ComResult>(result);
}

}  // namespace

Error CreateFolderTree(const Char* path) noexcept {
  return static_cast<Error>(::SHCreateDirectoryExW(nullptr, path, nullptr));
}

ShellOperationResult ShellDelete(const Char* paths, std::uint16_t flags) noexcept {
  SHFILEOPSTRUCTW operation{};
  operation.wFunc = FO_DELETE;
  operation.pFrom = paths;
  operation.fFlags = flags;
  ShellOperationResult result;
  result.code = ::SHFileOperationW(&operation);
  result.aborted = operation.fAnyOperationsAborted != FALSE;
  return result;
}

ComResult InitializeCom() noexcept {
  return ToComResult(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
}

void UninitializeCom() noexcept {
  ::CoUninitialize();
}

void ComPolicy::Close(RawHandle raw) noexcept {
  const LastErrorKeeper keeper;
  reinterpret_cast<IUnknown*>(raw)->Release();
}

ComResult CreateFileOperation(FileOperation& operation) noexcept {
  void* created = nullptr;
  const HRESULT result = ::CoCreateInstance(CLSID_FileOperation, nullptr, CLSCTX_INPROC_SERVER,
                                            IID_IFileOperation, &created);
  operation.Reset(SUCCEEDED(result) ? ToRawHandle(created) : ComPolicy::kInvalid);
  return ToComResult(result);
}

ComResult CreateShellItem(const Char* path, ShellItem& item) noexcept {
  void* created = nullptr;
  const HRESULT result = ::SHCreateItemFromParsingName(path, nullptr, IID_IShellItem, &created);
  item.Reset(SUCCEEDED(result) ? ToRawHandle(created) : ComPolicy::kInvalid);
  return ToComResult(result);
}

ComResult SetOperationFlags(const FileOperation& operation, std::uint32_t flags) noexcept {
  return ToComResult(ToSystem(operation)->SetOperationFlags(flags));
}

ComResult MarkForDeletion(const FileOperation& operation, const ShellItem& item) noexcept {
  return ToComResult(
      ToSystem(operation)->DeleteItem(reinterpret_cast<IShellItem*>(item.raw()), nullptr));
}

ComResult PerformOperations(const FileOperation& operation) noexcept {
  return ToComResult(ToSystem(operation)->PerformOperations());
}

ComResult QueryOperationsAborted(const FileOperation& operation, bool& aborted) noexcept {
  BOOL any = FALSE;
  const HRESULT result = ToSystem(operation)->GetAnyOperationsAborted(&any);
  aborted = any != FALSE;
  return ToComResult(result);
}

}  // namespace quastel::platform
