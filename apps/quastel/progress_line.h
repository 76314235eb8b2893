#ifndef QUASTEL_APPS_QUASTEL_PROGRESS_LINE_H_
#define QUASTEL_APPS_QUASTEL_PROGRESS_LINE_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "console.h"

namespace quastel::client {

// The stage from an interrupt on.
inline constexpr const char* kCancellingStage = "Cancelling";

struct Progress {
  std::string stage;
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
  std::uint64_t elapsed_us = 0;
  std::wstring path;
  // What `files` counts, and whether `bytes` is shown.
  const char* singular = "file";
  const char* plural = "files";
  bool sizes = true;
};

// One line on standard error that is drawn over itself, by carriage returns and spaces alone. Where
// standard error is no terminal, nothing is ever written.
class ProgressLine {
 public:
  explicit ProgressLine(OutputStream& stream) : stream_(stream) {}
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  bool IsShown() const { return stream_.IsTerminal(); }
  void Draw(const Progress& progress);
  void Erase();

 private:
  OutputStream& stream_;
  std::size_t drawn_cells_ = 0;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_PROGRESS_LINE_H_
