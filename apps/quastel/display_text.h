#ifndef QUASTEL_APPS_QUASTEL_DISPLAY_TEXT_H_
#define QUASTEL_APPS_QUASTEL_DISPLAY_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quastel::client {

// "512 B", "1.4 GiB": one decimal, binary units.
std::string HumanSize(std::uint64_t bytes);

// "1,234,567".
std::string GroupedNumber(std::uint64_t number);

// "1,234 files", "1 file".
std::string Counted(std::uint64_t number, std::string_view singular, std::string_view plural);

// "27 ms", "3.4 s", "2 min 05 s", "1 h 03 min".
std::string HumanDuration(std::uint64_t microseconds);

// The columns that the text takes at a terminal.
std::size_t CellWidth(std::wstring_view text);

// The text within `cells` columns; a longer one loses its middle, because the start of a path tells
// where the scan is and its end tells at what.
std::wstring FitMiddle(std::wstring_view text, std::size_t cells);

// A name must not move the cursor: control characters become "?".
std::wstring Printable(std::wstring_view text);

std::string PadLeft(std::string_view text, std::size_t width);
std::string PadRight(std::string_view text, std::size_t width);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_DISPLAY_TEXT_H_
