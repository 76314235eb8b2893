// XXH32 with seed 0, step by step as it was published: slow, and plainly right.

#ifndef QUASTEL_TESTS_DUPLICATE_TEXTBOOK_XXH32_H_
#define QUASTEL_TESTS_DUPLICATE_TEXTBOOK_XXH32_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quastel::duplicate_tests {

inline std::uint32_t TextbookHash(std::string_view input) {
  constexpr std::uint32_t kPrime1 = 0x9E3779B1;
  constexpr std::uint32_t kPrime2 = 0x85EBCA77;
  constexpr std::uint32_t kPrime3 = 0xC2B2AE3D;
  constexpr std::uint32_t kPrime4 = 0x27D4EB2F;
  constexpr std::uint32_t kPrime5 = 0x165667B1;

  const auto byte = [&](std::size_t at) {
    return std::uint32_t{static_cast<unsigned char>(input[at])};
  };
  const auto word = [&](std::size_t at) {
    return byte(at) | byte(at + 1) << 8 | byte(at + 2) << 16 | byte(at + 3) << 24;
  };

  // Steps 1 to 3: the accumulators, the stripes, the convergence.
  std::size_t at = 0;
  std::uint32_t hash = kPrime5;
  if (input.size() >= 16) {
    std::uint32_t accumulators[4] = {kPrime1 + kPrime2, kPrime2, 0, 0u - kPrime1};
    for (; at + 16 <= input.size(); at += 16) {
      for (std::size_t lane = 0; lane < 4; ++lane) {
        accumulators[lane] += word(at + 4 * lane) * kPrime2;
        accumulators[lane] = std::rotl(accumulators[lane], 13) * kPrime1;
      }
    }
    hash = std::rotl(accumulators[0], 1) + std::rotl(accumulators[1], 7) +
           std::rotl(accumulators[2], 12) + std::rotl(accumulators[3], 18);
  }
  // Step 4: the length.
  hash += static_cast<std::uint32_t>(input.size());
  // Step 5: what is left.
  for (; at + 4 <= input.size(); at += 4) {
    hash = std::rotl(hash + word(at) * kPrime3, 17) * kPrime4;
  }
  for (; at < input.size(); ++at) {
    hash = std::rotl(hash + byte(at) * kPrime5, 11) * kPrime1;
  }
  // Step 6: the final mix.
  hash = (hash ^ hash >> 15) * kPrime2;
  hash = (hash ^ hash >> 13) * kPrime3;
  return hash ^ hash >> 16;
}

// Eight digits, the least significant byte first, the high half of each byte first.
inline std::string TextbookDigits(std::uint32_t hash) {
  std::string out;
  for (int i = 0; i < 4; ++i, hash >>= 8) {
    out += "0123456789abcdef"[hash >> 4 & 15];
    out += "0123456789abcdef"[hash & 15];
  }
  return out;
}

inline std::string TextbookText(std::string_view input) {
  return TextbookDigits(TextbookHash(input));
}

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_TEXTBOOK_XXH32_H_
