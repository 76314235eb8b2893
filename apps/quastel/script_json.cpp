#include "script_json.h"

#include <cstddef>

namespace quastel::client {

std::string JsonForScript(const Json& value) {
  const std::string text = value.Text();
  std::string out;
  out.reserve(text.size() + text.size() / 16);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    // These stand within strings alone, where any character may be given by its number. Without
    // them nothing ends the element or begins a comment in it.
    if (c == '<') {
      out += "\\u003c";
    } else if (c == '>') {
      out += "\\u003e";
    } else if (c == '&') {
      out += "\\u0026";
    } else if (text.compare(i, 3, "\xE2\x80\xA8") == 0 || text.compare(i, 3, "\xE2\x80\xA9") == 0) {
      // The line and the paragraph separator end a line of some readers.
      out += text[i + 2] == '\xA8' ? "\\u2028" : "\\u2029";
      i += 2;
    } else {
      out.push_back(c);
    }
  }
  return out;
}

}  // namespace quastel::client
