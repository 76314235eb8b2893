// Text for test failures: UTF-8, so that an expectation can be read where it failed.

#ifndef QUASTEL_TESTS_SUPPORT_TEXT_H_
#define QUASTEL_TESTS_SUPPORT_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace quastel::support {

// UTF-8; an unpaired surrogate becomes <dddd>, so that two different texts never look equal.
inline std::string Utf8(TextView text) {
  std::string out;
  const auto tail = [&out](std::uint32_t code, int shift) {
    out += static_cast<char>(0x80u | ((code >> shift) & 0x3Fu));
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t code = text[i];
    const bool high = code >= 0xD800 && code < 0xDC00;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
      ++i;
      code = 0x10000u + ((code - 0xD800u) << 10) + (std::uint32_t{text[i]} - 0xDC00u);
    }
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0u | (code >> 6));
      tail(code, 0);
    } else if (code >= 0xD800 && code < 0xE000) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "<%04x>", static_cast<unsigned>(code));
      out += escaped;
    } else if (code < 0x10000) {
      out += static_cast<char>(0xE0u | (code >> 12));
      tail(code, 6);
      tail(code, 0);
    } else {
      out += static_cast<char>(0xF0u | (code >> 18));
      tail(code, 12);
      tail(code, 6);
      tail(code, 0);
    }
  }
  return out;
}

inline std::vector<std::string> Utf8(const std::vector<Text>& texts) {
  std::vector<std::string> out;
  for (const Text& text : texts) {
    out.push_back(Utf8(text));
  }
  return out;
}

// The library's text for ASCII.
inline Text Wide(std::string_view ascii) {
  return Text(ascii.begin(), ascii.end());
}

inline Text Repeated(std::size_t count, Char c) {
  return Text(count, c);
}

// `start` and as many letters as make `length` units.
inline Text PaddedTo(std::size_t length, Text start) {
  start.resize(length, Char{'x'});
  return start;
}

// A path below `folder` of exactly `length` units, in folders of at most 60 units.
inline Text NestedTo(std::size_t length, Text folder) {
  std::size_t in_name = 60;
  while (folder.size() < length) {
    // The last two units are one name: a path must not end in its separator.
    if (in_name == 60 && folder.size() + 1 < length) {
      folder += Char{'\\'};
      in_name = 0;
    } else {
      folder += Char{'n'};
      ++in_name;
    }
  }
  return folder;
}

}  // namespace quastel::support

#endif  // QUASTEL_TESTS_SUPPORT_TEXT_H_
