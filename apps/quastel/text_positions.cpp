#include "text_positions.h"

#include <algorithm>

namespace quastel::client {
namespace {

// The second half of a surrogate pair is no character of its own.
bool ContinuesCharacter(std::wstring_view text, std::size_t i) {
  return i > 0 && text[i] >= 0xDC00 && text[i] <= 0xDFFF && text[i - 1] >= 0xD800 &&
         text[i - 1] <= 0xDBFF;
}

}  // namespace

std::string PositionText(const TextPosition& position) {
  return "line " + std::to_string(position.line) + ", column " + std::to_string(position.column);
}

TextPositions::TextPositions(std::wstring_view text) : text_(text), line_starts_{0} {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool ends_in_two = text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n';
    if (text[i] == L'\n' || (text[i] == L'\r' && !ends_in_two)) {
      line_starts_.push_back(i + 1);
    }
  }
}

TextPosition TextPositions::At(std::size_t offset) const {
  const auto next = std::upper_bound(line_starts_.begin(), line_starts_.end(), offset);
  TextPosition position;
  position.line = static_cast<std::size_t>(next - line_starts_.begin());
  for (std::size_t i = *(next - 1); i < offset; ++i) {
    position.column += ContinuesCharacter(text_, i) ? 0U : 1U;
  }
  return position;
}

}  // namespace quastel::client
