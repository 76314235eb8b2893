// Comparison that folds the ASCII letters and nothing else.
//
// Paths are compared this way everywhere: the answer must not depend on the locale of the process
// that loaded the library, and a protected folder must never be missed because of one.

#ifndef QUASTEL_BASE_ASCII_H_
#define QUASTEL_BASE_ASCII_H_

#include <cstddef>

#include "base/text.h"

namespace quastel {

constexpr Char FoldAscii(Char c) {
  return c >= Char{'A'} && c <= Char{'Z'} ? static_cast<Char>(c + 32) : c;
}

constexpr bool IsAsciiLetter(Char c) {
  const Char folded = FoldAscii(c);
  return folded >= Char{'a'} && folded <= Char{'z'};
}

constexpr bool EqualsFolded(TextView a, TextView b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (FoldAscii(a[i]) != FoldAscii(b[i])) {
      return false;
    }
  }
  return true;
}

constexpr bool StartsWithFolded(TextView text, TextView prefix) {
  return text.size() >= prefix.size() && EqualsFolded(text.substr(0, prefix.size()), prefix);
}

constexpr bool IsSeparator(Char c) {
  return c == Char{'\\'} || c == Char{'/'};
}

// The index of the last "\" or "/", or TextView::npos.
constexpr std::size_t LastSeparator(TextView path) {
  for (std::size_t i = path.size(); i > 0; --i) {
    if (IsSeparator(path[i - 1])) {
      return i - 1;
    }
  }
  return TextView::npos;
}

// The text after the last separator: empty when the path ends in one, the whole path without any.
constexpr TextView LeafOf(TextView path) {
  const std::size_t last = LastSeparator(path);
  return last == TextView::npos ? path : path.substr(last + 1);
}

}  // namespace quastel

#endif  // QUASTEL_BASE_ASCII_H_
