#include "duplicate/xxhash32.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/little_endian.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define QUASTEL_XXHASH_SSE2 1
#endif

namespace quastel::duplicate {
namespace {

constexpr std::uint32_t kPrime1 = 2654435761u;
constexpr std::uint32_t kPrime2 = 2246822519u;
constexpr std::uint32_t kPrime3 = 3266489917u;
constexpr std::uint32_t kPrime4 = 668265263u;
constexpr std::uint32_t kPrime5 = 374761393u;

constexpr std::size_t kStripe = 16;

using Lanes = std::array<std::uint32_t, 4>;

std::uint32_t Load32(const unsigned char* bytes) {
  return LoadLittleEndian<std::uint32_t>(bytes);
}

// Keeps four values in general registers: left alone, GCC packs the lanes into one vector, and the
// multiplication of SSE2 makes the chain more than twice as long.
inline void PinToRegisters([[maybe_unused]] std::uint32_t& a, [[maybe_unused]] std::uint32_t& b,
                           [[maybe_unused]] std::uint32_t& c, [[maybe_unused]] std::uint32_t& d) {
#if defined(__GNUC__)
  asm("" : "+r"(a), "+r"(b), "+r"(c), "+r"(d));
#endif
}

inline std::uint32_t Round(std::uint32_t lane, std::uint32_t product) {
  return std::rotl(lane + product, 13) * kPrime1;
}

void ConsumeStripe(Lanes& lanes, const unsigned char* bytes) {
  for (std::size_t i = 0; i < lanes.size(); ++i) {
    lanes[i] = Round(lanes[i], Load32(bytes + 4 * i) * kPrime2);
  }
}

#if defined(QUASTEL_XXHASH_SSE2)

// A stripe costs eight multiplications. The four of the input depend on nothing, so SSE2 makes them
// one block ahead and leaves only the four of the recurrence to the scalar unit.
constexpr std::size_t kStripesInBlock = 4;
constexpr std::size_t kBlock = kStripesInBlock * kStripe;

// The products of one block. SSE2 multiplies two of four numbers at a time into 64 bits each; the
// low halves are what counts, and reading them costs less than packing them.
struct alignas(16) BlockProducts {
  std::uint32_t even[kStripesInBlock][4];  // lanes 0 and 2 in [0] and [2]
  std::uint32_t odd[kStripesInBlock][4];   // lanes 1 and 3 in [0] and [2]
};

inline void MultiplyStripe(const unsigned char* bytes, BlockProducts& products, std::size_t i) {
  const __m128i prime = _mm_set1_epi32(static_cast<int>(kPrime2));
  const __m128i input = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i * kStripe));
  _mm_store_si128(reinterpret_cast<__m128i*>(products.even[i]), _mm_mul_epu32(input, prime));
  _mm_store_si128(reinterpret_cast<__m128i*>(products.odd[i]),
                  _mm_mul_epu32(_mm_srli_epi64(input, 32), prime));
}

// Written out four times: at -O2 the loop would not be unrolled.
inline void MultiplyBlock(const unsigned char* bytes, BlockProducts& products) {
  MultiplyStripe(bytes, products, 0);
  MultiplyStripe(bytes, products, 1);
  MultiplyStripe(bytes, products, 2);
  MultiplyStripe(bytes, products, 3);
}

inline void AdvanceStripe(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c, std::uint32_t& d,
                          const BlockProducts& products, std::size_t i) {
  a = Round(a, products.even[i][0]);
  b = Round(b, products.odd[i][0]);
  c = Round(c, products.even[i][2]);
  d = Round(d, products.odd[i][2]);
  PinToRegisters(a, b, c, d);
}

// Consumes whole blocks and answers how many bytes that were.
std::size_t ConsumeBlocks(Lanes& lanes, const unsigned char* bytes, std::size_t size) {
  const std::size_t blocks = size / kBlock;
  if (blocks == 0) {
    return 0;
  }
  BlockProducts products[2];
  MultiplyBlock(bytes, products[0]);
  auto a = lanes[0];
  auto b = lanes[1];
  auto c = lanes[2];
  auto d = lanes[3];
  for (std::size_t block = 0; block < blocks; ++block) {
    if (block + 1 < blocks) {
      MultiplyBlock(bytes + (block + 1) * kBlock, products[(block + 1) & 1]);
    }
    const BlockProducts& current = products[block & 1];
    AdvanceStripe(a, b, c, d, current, 0);
    AdvanceStripe(a, b, c, d, current, 1);
    AdvanceStripe(a, b, c, d, current, 2);
    AdvanceStripe(a, b, c, d, current, 3);
  }
  lanes = {a, b, c, d};
  return blocks * kBlock;
}

#else

std::size_t ConsumeBlocks(Lanes&, const unsigned char*, std::size_t) {
  return 0;
}

#endif

// Consumes all whole stripes and answers how many bytes that were.
std::size_t ConsumeStripes(Lanes& lanes, const unsigned char* bytes, std::size_t size) {
  std::size_t done = ConsumeBlocks(lanes, bytes, size);
  for (; size - done >= kStripe; done += kStripe) {
    ConsumeStripe(lanes, bytes + done);
  }
  return done;
}

}  // namespace

void XxHash32::Update(const void* data, std::size_t size) noexcept {
  const auto* bytes = static_cast<const unsigned char*>(data);
  total_ += size;
  if (pending_size_ > 0) {
    const std::size_t taken = std::min(size, kStripe - pending_size_);
    std::copy_n(bytes, taken, pending_.data() + pending_size_);
    pending_size_ += taken;
    bytes += taken;
    size -= taken;
    if (pending_size_ < kStripe) {
      return;
    }
    ConsumeStripe(lanes_, pending_.data());
    pending_size_ = 0;
  }
  const std::size_t done = ConsumeStripes(lanes_, bytes, size);
  pending_size_ = size - done;
  std::copy_n(bytes + done, pending_size_, pending_.data());
}

std::uint32_t XxHash32::Digest() const noexcept {
  // lanes_[2] starts as the seed, which is what a short input hashes from.
  std::uint32_t hash = total_ < kStripe ? lanes_[2] + kPrime5
                                        : std::rotl(lanes_[0], 1) + std::rotl(lanes_[1], 7) +
                                              std::rotl(lanes_[2], 12) + std::rotl(lanes_[3], 18);
  hash += static_cast<std::uint32_t>(total_);
  std::size_t i = 0;
  for (; pending_size_ - i >= 4; i += 4) {
    hash = std::rotl(hash + Load32(pending_.data() + i) * kPrime3, 17) * kPrime4;
  }
  for (; i < pending_size_; ++i) {
    hash = std::rotl(hash + pending_[i] * kPrime5, 11) * kPrime1;
  }
  hash = (hash ^ hash >> 15) * kPrime2;
  hash = (hash ^ hash >> 13) * kPrime3;
  return hash ^ hash >> 16;
}

std::uint32_t HashBytes(const void* data, std::size_t size) noexcept {
  XxHash32 hash;
  hash.Update(data, size);
  return hash.Digest();
}

}  // namespace quastel::duplicate
