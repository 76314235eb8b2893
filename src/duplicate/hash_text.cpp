#include "duplicate/hash_text.h"

#include "base/little_endian.h"

namespace quastel::duplicate {

std::string HexText(std::span<const unsigned char> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

std::string HashText(std::uint32_t hash) {
  unsigned char bytes[4];
  StoreLittleEndian(hash, bytes);
  return HexText(bytes);
}

}  // namespace quastel::duplicate
