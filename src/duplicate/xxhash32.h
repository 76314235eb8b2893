// XXH32, the published 32-bit xxHash, with seed 0.

#ifndef QUASTEL_DUPLICATE_XXHASH32_H_
#define QUASTEL_DUPLICATE_XXHASH32_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace quastel::duplicate {

// A running hash: the bytes may come in pieces of any size, the result is that of the whole.
class XxHash32 {
 public:
  void Update(const void* data, std::size_t size) noexcept;
  std::uint32_t Digest() const noexcept;

 private:
  static constexpr std::size_t kStripe = 16;
  static constexpr std::uint32_t kPrime1 = 2654435761u;
  static constexpr std::uint32_t kPrime2 = 2246822519u;

  // The four accumulators, started from seed 0; arithmetic wraps.
  std::array<std::uint32_t, 4> lanes_ = {kPrime1 + kPrime2, kPrime2, 0, 0u - kPrime1};
  std::array<unsigned char, kStripe> pending_ = {};  // the bytes of an unfinished stripe
  std::size_t pending_size_ = 0;
  std::uint64_t total_ = 0;
};

// The hash of bytes in memory.
std::uint32_t HashBytes(const void* data, std::size_t size) noexcept;

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_XXHASH32_H_
