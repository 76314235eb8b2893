#include "hash_digits.h"

#include <cstddef>

namespace quastel::client {

std::string StandardDigits(std::string_view digits) {
  std::string standard;
  for (std::size_t end = digits.size(); end >= 2; end -= 2) {
    standard.append(digits.substr(end - 2, 2));
  }
  return standard;
}

}  // namespace quastel::client
