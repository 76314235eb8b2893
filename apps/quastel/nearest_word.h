#ifndef QUASTEL_APPS_QUASTEL_NEAREST_WORD_H_
#define QUASTEL_APPS_QUASTEL_NEAREST_WORD_H_

#include <string>
#include <string_view>
#include <vector>

namespace quastel::client {

// The candidate that `word` most likely was meant to be, or empty when none is close.
std::string NearestWord(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_NEAREST_WORD_H_
