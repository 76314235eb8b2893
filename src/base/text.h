// The one character and string type of the library.
//
// qs_char is wchar_t on Windows and char16_t elsewhere: 16 bits in both builds, so lengths, limits
// and file formats mean the same on the host, where nearly all tests run.

#ifndef QUASTEL_BASE_TEXT_H_
#define QUASTEL_BASE_TEXT_H_

#include <string>
#include <string_view>

#include "quastel_core.h"

namespace quastel {

using Char = qs_char;
using Text = std::basic_string<Char>;
using TextView = std::basic_string_view<Char>;

static_assert(sizeof(Char) == 2, "text is UTF-16 in every build");

// A null pointer from a caller reads as the empty text.
inline TextView ViewOf(const Char* text) {
  return text == nullptr ? TextView() : TextView(text);
}

}  // namespace quastel

// Spells an ASCII literal in the library's character type.
#if defined(_WIN32)
#define QS_TEXT(literal) L##literal
#else
#define QS_TEXT(literal) u##literal
#endif

#endif  // QUASTEL_BASE_TEXT_H_
