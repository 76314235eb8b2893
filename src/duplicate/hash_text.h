// Hashes as text: eight lower-case hexadecimal digits, the least significant byte first.
//
// The usual printing of XXH32 has the bytes the other way round. Cache files and group keys of
// every version carry these digits, so the order stays.

#ifndef QUASTEL_DUPLICATE_HASH_TEXT_H_
#define QUASTEL_DUPLICATE_HASH_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace quastel::duplicate {

inline constexpr std::size_t kHashTextLength = 8;

// Between the head hash and the tail hash of a complete sample.
inline constexpr char kTailMark = '|';

// Two digits for each byte, high nibble first.
std::string HexText(std::span<const unsigned char> bytes);

std::string HashText(std::uint32_t hash);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_HASH_TEXT_H_
