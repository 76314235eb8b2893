#include "wrap_help.h"

#include <algorithm>

namespace quastel::client {
namespace {

constexpr std::string_view kExampleBegin = "  quastel ";

// A narrower column of text than this is worse than none.
constexpr std::size_t kNarrowestText = 10;

// The part of a line that stays as it is: its indent, and the name in front of an explanation.
std::size_t FrontOf(std::string_view line) {
  const std::size_t indent = std::min(line.find_first_not_of(' '), line.size());
  const bool explains = indent > 0 && line.size() > kExplanationColumn &&
                        line[kExplanationColumn - 1] == ' ' && line[kExplanationColumn] != ' ';
  return explains ? kExplanationColumn : indent;
}

void AppendWrapped(std::string& out, std::string_view line, std::size_t width) {
  std::size_t column = FrontOf(line);
  const std::size_t indent =
      column + kNarrowestText <= width ? column : std::min(column, width / 4);
  out.append(line.substr(0, column));
  line.remove_prefix(column);
  bool begins = true;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(' '), line.size());
    if (!begins && column + 1 + end > width) {
      out.append("\n").append(indent, ' ');
      column = indent;
    } else if (!begins) {
      out.append(" ");
      ++column;
    }
    out.append(line.substr(0, end));
    column += end;
    begins = false;
    line.remove_prefix(std::min(end + 1, line.size()));
  }
}

}  // namespace

std::string WrapHelp(std::string_view text, std::size_t width) {
  std::string out;
  bool after_blank = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() && after_blank) {
      continue;
    }
    after_blank = line.empty();
    if (line.size() <= width || line.starts_with(kExampleBegin)) {
      out.append(line);
    } else {
      AppendWrapped(out, line, width);
    }
    out.append("\n");
  }
  return out;
}

}  // namespace quastel::client
