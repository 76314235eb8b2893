#ifndef QUASTEL_APPS_QUASTEL_HASH_DIGITS_H_
#define QUASTEL_APPS_QUASTEL_HASH_DIGITS_H_

#include <string>
#include <string_view>

namespace quastel::client {

// The library writes a hash with its least significant byte first. This is the order in which other
// tools print it: "055dcc02" becomes "02cc5d05".
std::string StandardDigits(std::string_view digits);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_HASH_DIGITS_H_
