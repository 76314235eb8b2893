#include <windows.h>
// After windows.h, on which it depends.
#include <shellapi.h>

#include <exception>
#include <string>
#include <vector>

#include "arguments.h"
#include "console.h"
#include "messages.h"
#include "user_error.h"

namespace quastel::client {
namespace {

// From the command line itself: the arguments of main() are in a code page that cannot hold every
// name, and some compilers' startup code replaces wildcards in them.
std::vector<std::wstring> Arguments() {
  int count = 0;
  wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::wstring> arguments;
  if (words != nullptr) {
    arguments.assign(words + (count > 0 ? 1 : 0), words + count);
    LocalFree(words);
  }
  return arguments;
}

ExitCode Run(Console& console) {
  try {
    return ParseArguments(Arguments())(console);
  } catch (const UserError& error) {
    PrintError(console, error.what(), error.hint());
    return error.code();
  } catch (const std::exception& error) {
    PrintError(console, error.what(), "");
    return ExitCode::kError;
  }
}

}  // namespace
}  // namespace quastel::client

int main() {
  quastel::client::Console console;
  try {
    return static_cast<int>(quastel::client::Run(console));
  } catch (const std::exception&) {
    // Standard error itself failed: the exit code is all that is left to say.
    return static_cast<int>(quastel::client::ExitCode::kError);
  }
}
