#include "colour.h"

#include <windows.h>

#include "environment.h"

namespace quastel::client {
namespace {

constexpr WORD kForeground =
    FOREGROUND_RED | FOREGROUND_GREEN | FOREGROUND_BLUE | FOREGROUND_INTENSITY;
constexpr unsigned kBackgroundShift = 4;

bool IsWanted() {
  return EnvironmentVariable(L"NO_COLOR").empty() && EnvironmentVariable(L"TERM") != L"dumb";
}

WORD Foreground(Tone tone) {
  switch (tone) {
    case Tone::kError:
      return FOREGROUND_RED;
    case Tone::kRemark:
      return FOREGROUND_GREEN | FOREGROUND_BLUE;
    case Tone::kHeading:
      break;
  }
  return 0;
}

// `now` with another foreground, or as it is where that could not be read.
WORD Toned(WORD now, Tone tone) {
  WORD foreground = Foreground(tone);
  if (foreground == 0) {
    foreground = now & kForeground;
  }
  // Bright letters are for a dark background.
  const bool dark = (now & BACKGROUND_INTENSITY) == 0;
  foreground = static_cast<WORD>(dark ? foreground | FOREGROUND_INTENSITY
                                      : foreground & ~FOREGROUND_INTENSITY);
  const bool readable = foreground != ((now >> kBackgroundShift) & kForeground);
  return readable ? static_cast<WORD>((now & ~kForeground) | foreground) : now;
}

// The screen that both standard outputs show themselves on when they are terminals. Its colours are
// set by calls and not by escape sequences, which a console shows as they are unless it was put
// into a mode of its own, for everybody.
class Screen {
 public:
  Screen()
      : handle_(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                            nullptr)) {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    known_ = handle_ != INVALID_HANDLE_VALUE && GetConsoleScreenBufferInfo(handle_, &info) != 0;
    before_ = info.wAttributes;
  }
  ~Screen() {
    if (known_) {
      SetConsoleTextAttribute(handle_, before_);
    }
    if (handle_ != INVALID_HANDLE_VALUE) {
      CloseHandle(handle_);
    }
  }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;

  void Set(Tone tone) {
    if (known_) {
      SetConsoleTextAttribute(handle_, Toned(before_, tone));
    }
  }

 private:
  HANDLE handle_;
  bool known_ = false;
  WORD before_ = 0;
};

}  // namespace

void WriteToned(OutputStream& stream, std::string_view text, Tone tone) {
  if (!stream.IsTerminal() || !IsWanted()) {
    stream.Write(text);
    return;
  }
  // What was collected before goes out in the colour that it was written in.
  stream.Flush();
  Screen screen;
  screen.Set(tone);
  stream.Write(text);
  stream.Flush();
}

}  // namespace quastel::client
