#ifndef QUASTEL_APPS_QUASTEL_BYTE_SIZE_H_
#define QUASTEL_APPS_QUASTEL_BYTE_SIZE_H_

#include <cstdint>
#include <optional>
#include <string_view>

namespace quastel::client {

// The number of bytes that a person typed: "4096", "10K", "5M", "1G", "2T", with units of 1024 in
// either case. Nothing for any other text, and for a number that needs more than 63 bits.
std::optional<std::uint64_t> ParseByteSize(std::string_view text);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_BYTE_SIZE_H_
