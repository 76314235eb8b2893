// The caller-buffer protocol of every export that returns text.

#ifndef QUASTEL_FRAME_TEXT_OUTPUT_H_
#define QUASTEL_FRAME_TEXT_OUTPUT_H_

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "base/text.h"

namespace quastel {

// Stores the capacity that `text` needs, terminator included, whenever `needed` is given; then
// copies the text and its terminator, or writes nothing when they do not fit. Never truncates.
template <typename C>
qs_status DeliverCharacters(std::basic_string_view<C> text, C* buffer, std::uint64_t capacity,
                            std::uint64_t* needed) noexcept {
  const std::uint64_t required = std::uint64_t{text.size()} + 1;
  if (needed != nullptr) {
    *needed = required;
  }
  if (buffer == nullptr || capacity < required) {
    return QS_BUFFER_TOO_SMALL;
  }
  *std::copy(text.begin(), text.end(), buffer) = C{};
  return QS_OK;
}

inline qs_status DeliverText(TextView text, Char* buffer, std::uint64_t capacity,
                             std::uint64_t* needed) noexcept {
  return DeliverCharacters<Char>(text, buffer, capacity, needed);
}

}  // namespace quastel

#endif  // QUASTEL_FRAME_TEXT_OUTPUT_H_
