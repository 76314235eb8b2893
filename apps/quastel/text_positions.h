#ifndef QUASTEL_APPS_QUASTEL_TEXT_POSITIONS_H_
#define QUASTEL_APPS_QUASTEL_TEXT_POSITIONS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quastel::client {

// Both count from 1, as editors show them.
struct TextPosition {
  std::size_t line = 1;
  std::size_t column = 1;  // in characters; a tab is one

  friend bool operator==(const TextPosition&, const TextPosition&) = default;
};

// "line 3, column 14"
std::string PositionText(const TextPosition& position);

// Finds the line and column of places in a text. "\n", "\r\n" and a "\r" alone end a line.
class TextPositions {
 public:
  // `text` must live as long.
  explicit TextPositions(std::wstring_view text);

  // `offset` counts units and may be the end of the text.
  TextPosition At(std::size_t offset) const;

 private:
  std::wstring_view text_;
  std::vector<std::size_t> line_starts_;
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_TEXT_POSITIONS_H_
