// Integers in little-endian byte order, as files and hash texts carry them.

#ifndef QUASTEL_BASE_LITTLE_ENDIAN_H_
#define QUASTEL_BASE_LITTLE_ENDIAN_H_

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>

namespace quastel {

static_assert(std::endian::native == std::endian::little, "bytes are copied as they lie");

template <std::unsigned_integral T>
constexpr T LoadLittleEndian(const unsigned char* bytes) {
  std::array<unsigned char, sizeof(T)> raw = {};
  std::copy_n(bytes, sizeof(T), raw.begin());
  return std::bit_cast<T>(raw);
}

template <std::unsigned_integral T>
constexpr void StoreLittleEndian(T value, unsigned char* bytes) {
  const auto raw = std::bit_cast<std::array<unsigned char, sizeof(T)>>(value);
  std::copy_n(raw.begin(), sizeof(T), bytes);
}

}  // namespace quastel

#endif  // QUASTEL_BASE_LITTLE_ENDIAN_H_
