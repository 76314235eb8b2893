#include "file_hashes.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <utility>

#include "path_text.h"

namespace quastel::client {
namespace {

// The library says only that it failed. Opening the file as it does tells why.
PathComplaint WhyNotHashed(const std::wstring& path) {
  const HANDLE file = CreateFileW(SystemForm(path).c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return WhyNotFound(path, path, GetLastError(), "the files");
  }
  CloseHandle(file);
  return {Quoted(path) + " cannot be read", "it may be locked or damaged in part; try again"};
}

qs_status HashFile(FileHash& file, std::uint32_t* cancel) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(SystemForm(file.path).c_str(), GetFileExInfoStandard, &data) != 0) {
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
      file.complaint = {Quoted(file.path) + " is a folder, not a file", "name the files in it"};
      return QS_FAILED;
    }
    file.size = (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  }
  std::array<char, 9> digits = {};
  const qs_status status =
      qs_xxhash32_file_cancelable(file.path.c_str(), digits.data(), digits.size(), cancel);
  if (status == QS_OK) {
    file.digits = digits.data();
  } else if (status != QS_CANCELLED) {
    file.complaint = WhyNotHashed(file.path);
  }
  return status;
}

}  // namespace

FileHashes::~FileHashes() {
  Cancel();
  work_.Finish();
}

void FileHashes::Start() {
  work_.Start([this] { return HashAll(); });
}

void FileHashes::Cancel() {
  std::atomic_ref<std::uint32_t>(cancel_).store(1);
}

std::vector<FileHash> FileHashes::TakeFinished() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(finished_, {});
}

std::wstring FileHashes::CurrentPath() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return current_path_;
}

qs_status FileHashes::HashAll() {
  for (const std::wstring& path : files_) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      current_path_ = path;
    }
    FileHash file;
    file.path = path;
    if (std::atomic_ref<std::uint32_t>(cancel_).load() != 0 ||
        HashFile(file, &cancel_) == QS_CANCELLED) {
      return QS_CANCELLED;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    finished_.push_back(std::move(file));
  }
  return QS_OK;
}

}  // namespace quastel::client
