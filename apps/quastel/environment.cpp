#include "environment.h"

#include <windows.h>

namespace quastel::client {

std::wstring EnvironmentVariable(const wchar_t* name) {
  std::wstring value(MAX_PATH, L'\0');
  for (;;) {
    // Answers the length without the terminator, or the size that it needs with it.
    const DWORD length =
        GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
    if (length < value.size()) {
      value.resize(length);
      return value;
    }
    value.resize(length);
  }
}

}  // namespace quastel::client
