#include "new_file.h"

#include <windows.h>

#include <cstddef>
#include <utility>

#include "path_complaint.h"
#include "path_text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr std::size_t kWriteAt = std::size_t{1} << 20;

// A colon behind that of the drive would name a stream of another file.
bool NamesAStream(const std::wstring& path) {
  const std::size_t name = path.find_last_of(L"\\/");
  return path.find(L':', name == std::wstring::npos ? 2 : name) != std::wstring::npos;
}

[[noreturn]] void ThrowRefusal(const std::wstring& path, DWORD error) {
  const std::string shown = Quoted(WithoutExtendedPrefix(path));
  const DWORD attributes = GetFileAttributesW(SystemForm(path).c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    throw UserError(ExitCode::kError, shown + " is a folder", "name a new file in it");
  }
  if (attributes != INVALID_FILE_ATTRIBUTES || error == ERROR_FILE_EXISTS ||
      error == ERROR_ALREADY_EXISTS) {
    throw UserError(ExitCode::kError, shown + " is there already",
                    "nothing is overwritten: name a new file, or remove that one first");
  }
  switch (error) {
    case ERROR_PATH_NOT_FOUND:
      throw UserError(ExitCode::kError, "the folder of " + shown + " does not exist",
                      "check the spelling, and that the drive is there");
    case ERROR_INVALID_NAME:
    case ERROR_FILE_NOT_FOUND:
    case ERROR_BAD_PATHNAME:
      throw UserError(ExitCode::kError, shown + " is no name for a file",
                      "a name cannot hold any of < > : \" / \\ | ? *");
    case ERROR_ACCESS_DENIED:
      throw UserError(ExitCode::kError, shown + " cannot be written (Windows error 5)",
                      "this account may not write there");
    default:
      throw UserError(ExitCode::kError,
                      shown + " cannot be written (Windows error " + std::to_string(error) + ")",
                      error == ERROR_DISK_FULL ? "the disk is full" : "");
  }
}

bool SetGoesAway(HANDLE file, bool goes_away) {
  FILE_DISPOSITION_INFO disposition = {};
  disposition.DeleteFile = goes_away ? TRUE : FALSE;
  return SetFileInformationByHandle(file, FileDispositionInfo, &disposition, sizeof disposition) !=
         FALSE;
}

}  // namespace

NewFile::NewFile(std::wstring path) : path_(std::move(path)) {
  if (NamesAStream(WithoutExtendedPrefix(path_))) {
    ThrowRefusal(path_, ERROR_INVALID_NAME);
  }
  HANDLE file = CreateFileW(SystemForm(path_).c_str(), GENERIC_WRITE | DELETE, 0, nullptr,
                            CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    ThrowRefusal(path_, GetLastError());
  }
  // A printer or the null device can be opened too.
  if (GetFileType(file) != FILE_TYPE_DISK || !SetGoesAway(file, true)) {
    CloseHandle(file);
    ThrowRefusal(path_, ERROR_INVALID_NAME);
  }
  handle_ = file;
}

NewFile::~NewFile() {
  if (handle_ != nullptr) {
    CloseHandle(handle_);
  }
}

void NewFile::Write(std::string_view bytes) {
  pending_.append(bytes);
  if (pending_.size() >= kWriteAt) {
    Flush();
  }
}

void NewFile::Keep() {
  Flush();
  if (!SetGoesAway(handle_, false)) {
    ThrowRefusal(path_, GetLastError());
  }
  CloseHandle(handle_);
  handle_ = nullptr;
}

void NewFile::Flush() {
  for (std::size_t i = 0; i < pending_.size();) {
    DWORD written = 0;
    const auto length = static_cast<DWORD>(pending_.size() - i);
    if (WriteFile(handle_, pending_.data() + i, length, &written, nullptr) == FALSE) {
      const DWORD error = GetLastError();
      throw UserError(ExitCode::kError,
                      Quoted(WithoutExtendedPrefix(path_)) +
                          " could not be written (Windows error " + std::to_string(error) + ")",
                      error == ERROR_DISK_FULL ? "the disk is full" : "");
    }
    i += written;
  }
  pending_.clear();
}

void RequireNewFile(const std::wstring& path) {
  const NewFile file(path);
}

}  // namespace quastel::client
