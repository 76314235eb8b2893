#include "messages.h"

#include <cstddef>
#include <string>

#include "colour.h"

namespace quastel::client {
namespace {

void PrintLines(OutputStream& err, std::string_view kind, Tone tone, std::string_view lines) {
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    err.Write("quastel: ");
    WriteToned(err, kind, tone);
    err.Write(std::string(" ").append(lines.substr(0, end)).append("\n"));
    lines = end == std::string_view::npos ? std::string_view() : lines.substr(end + 1);
  }
}

}  // namespace

void PrintError(Console& console, std::string_view message, std::string_view hint) {
  PrintLines(console.err, "error:", Tone::kError, message);
  PrintLines(console.err, "hint:", Tone::kRemark, hint);
  console.err.Flush();
}

void PrintNote(Console& console, std::string_view message) {
  PrintLines(console.err, "note:", Tone::kRemark, message);
  console.err.Flush();
}

}  // namespace quastel::client
