#include "console.h"

#include <windows.h>

#include <algorithm>

#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr std::size_t kFlushAt = std::size_t{64} * 1024;
constexpr std::size_t kLongestConsoleWrite = std::size_t{8} * 1024;
constexpr std::size_t kUnknownWidth = 80;

// A printer or the null device is a character device too; only a console has a mode.
bool IsConsole(HANDLE handle) {
  DWORD mode = 0;
  return GetFileType(handle) == FILE_TYPE_CHAR && GetConsoleMode(handle, &mode) != 0;
}

bool IsHighSurrogate(wchar_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

}  // namespace

OutputStream::OutputStream(Which which)
    : handle_(GetStdHandle(which == Which::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE)),
      abandoned_(handle_ == nullptr || handle_ == INVALID_HANDLE_VALUE) {
  is_terminal_ = !abandoned_ && IsConsole(handle_);
}

void OutputStream::Write(std::string_view utf8) {
  if (abandoned_) {
    return;
  }
  pending_.append(utf8);
  if (pending_.size() >= kFlushAt) {
    Flush();
  }
}

void OutputStream::Flush() {
  if (!abandoned_ && !pending_.empty()) {
    if (is_terminal_) {
      FlushToConsole();
    } else {
      FlushToFile();
    }
  }
  pending_.clear();
}

std::size_t OutputStream::Width() const {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (!is_terminal_ || GetConsoleScreenBufferInfo(handle_, &info) == 0 ||
      info.srWindow.Right < info.srWindow.Left) {
    return kUnknownWidth;
  }
  return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left) + 1;
}

void OutputStream::FlushToConsole() {
  const std::wstring text = FromUtf8(pending_);
  for (std::size_t i = 0; i < text.size();) {
    std::size_t length = std::min(text.size() - i, kLongestConsoleWrite);
    if (i + length < text.size() && IsHighSurrogate(text[i + length - 1])) {
      --length;
    }
    DWORD written = 0;
    if (WriteConsoleW(handle_, text.data() + i, static_cast<DWORD>(length), &written, nullptr) ==
            0 ||
        written == 0) {
      Fail(GetLastError());
      return;
    }
    i += written;
  }
}

void OutputStream::FlushToFile() {
  for (std::size_t i = 0; i < pending_.size();) {
    DWORD written = 0;
    const auto length = static_cast<DWORD>(pending_.size() - i);
    if (WriteFile(handle_, pending_.data() + i, length, &written, nullptr) == 0) {
      Fail(GetLastError());
      return;
    }
    i += written;
  }
}

void OutputStream::Fail(unsigned long error) {
  Abandon();
  pending_.clear();
  if (error != ERROR_BROKEN_PIPE && error != ERROR_NO_DATA && error != ERROR_PIPE_NOT_CONNECTED) {
    throw UserError(ExitCode::kError,
                    "the output could not be written (Windows error " + std::to_string(error) + ")",
                    error == ERROR_DISK_FULL ? "the disk is full" : "");
  }
}

}  // namespace quastel::client
