// Replacing text.

#ifndef QUASTEL_BASE_REPLACE_H_
#define QUASTEL_BASE_REPLACE_H_

#include <cstddef>

#include "base/text.h"

namespace quastel {

// Every occurrence of `pattern` (not empty) in one pass from left to right; what was inserted is
// not looked at again.
inline Text ReplaceAll(TextView text, TextView pattern, TextView replacement) {
  Text result;
  std::size_t position = 0;
  for (std::size_t found = 0; (found = text.find(pattern, position)) != TextView::npos;
       position = found + pattern.size()) {
    result.append(text, position, found - position).append(replacement);
  }
  return result.append(text.substr(position));
}

}  // namespace quastel

#endif  // QUASTEL_BASE_REPLACE_H_
