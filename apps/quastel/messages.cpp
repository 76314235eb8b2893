#include "messages.h"

#include <cstddef>
#include <string>

namespace quastel::client {
namespace {

void PrintLines(OutputStream& err, std::string_view prefix, std::string_view lines) {
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    err.Write(std::string(prefix).append(lines.substr(0, end)).append("\n"));
    lines = end == std::string_view::npos ? std::string_view() : lines.substr(end + 1);
  }
}

}  // namespace

void PrintError(Console& console, std::string_view message, std::string_view hint) {
  PrintLines(console.err, "quastel: error: ", message);
  PrintLines(console.err, "quastel: hint: ", hint);
  console.err.Flush();
}

void PrintNote(Console& console, std::string_view message) {
  PrintLines(console.err, "quastel: note: ", message);
  console.err.Flush();
}

}  // namespace quastel::client
