// Integers in little-endian byte order, as files and hash texts carry them.

#ifndef QUASTEL_BASE_LITTLE_ENDIAN_H_
#define QUASTEL_BASE_LITTLE_ENDIAN_H_

#include <concepts>
#include <cstddef>

namespace quastel {

template <std::unsigned_integral T>
constexpr T LoadLittleEndian(const unsigned char* bytes) {
  T value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | static_cast<T>(T{bytes[i]} << (8 * i)));
  }
  return value;
}

template <std::unsigned_integral T>
constexpr void StoreLittleEndian(T value, unsigned char* bytes) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes[i] = static_cast<unsigned char>(value >> (8 * i));
  }
}

}  // namespace quastel

#endif  // QUASTEL_BASE_LITTLE_ENDIAN_H_
