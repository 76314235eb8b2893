#ifndef QUASTEL_APPS_QUASTEL_CONSOLE_H_
#define QUASTEL_APPS_QUASTEL_CONSOLE_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace quastel::client {

// One of the two standard outputs, written as UTF-8. A file or a pipe gets the bytes as they are,
// with "\n" line ends on every system; a console gets UTF-16, so that it shows every name whatever
// code page it stands at.
class OutputStream {
 public:
  enum class Which { kOutput, kError };

  explicit OutputStream(Which which);
  OutputStream(const OutputStream&) = delete;
  OutputStream& operator=(const OutputStream&) = delete;

  // Collects; `utf8` must not begin or end inside a character.
  void Write(std::string_view utf8);

  // Throws UserError when the bytes cannot be written. That the reader of a pipe went away is no
  // error: the rest of the output is dropped, as it has nobody to go to.
  void Flush();

  bool IsTerminal() const { return is_terminal_; }

  // The columns of the terminal's window, asked anew because a window can be resized; 80 when that
  // is not known.
  std::size_t Width() const;

  // After this, everything goes nowhere, Flush() cannot fail.
  void Abandon() { abandoned_ = true; }

 private:
  void FlushToConsole();
  void FlushToFile();
  void Fail(unsigned long error);

  void* handle_;
  bool is_terminal_ = false;
  bool abandoned_;
  std::string pending_;
};

struct Console {
  OutputStream out{OutputStream::Which::kOutput};
  OutputStream err{OutputStream::Which::kError};
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CONSOLE_H_
