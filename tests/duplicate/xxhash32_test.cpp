#include "duplicate/xxhash32.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "duplicate/textbook_xxh32.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::HashBytes;
using duplicate::XxHash32;

std::string RandomBytes(std::size_t size, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::string out(size, '\0');
  std::generate(out.begin(), out.end(), [&] { return static_cast<char>(random() & 0xFF); });
  return out;
}

std::uint32_t Hash(std::string_view data) {
  return HashBytes(data.data(), data.size());
}

// The buffer of the algorithm's first published test values.
std::string FirstTestBuffer() {
  std::string out;
  std::uint32_t generator = 2654435761u;
  for (int i = 0; i < 101; ++i, generator *= generator) {
    out += static_cast<char>(generator >> 24);
  }
  return out;
}

// The buffer of the later ones.
std::string SecondTestBuffer() {
  std::string out;
  std::uint64_t generator = 2654435761u;
  for (int i = 0; i < 222; ++i, generator *= 11400714785074694797u) {
    out += static_cast<char>(generator >> 56);
  }
  return out;
}

struct KnownAnswer {
  std::string input;
  std::uint32_t hash;
};

std::vector<KnownAnswer> KnownAnswers() {
  const std::string first = FirstTestBuffer();
  const std::string second = SecondTestBuffer();
  return {
      {"", 0x02CC5D05},
      {first.substr(0, 1), 0xB85CBEE5},
      {first.substr(0, 14), 0xE5AA0AB4},
      {first, 0x1F1AA412},
      {second.substr(0, 1), 0xCF65B03E},
      {second.substr(0, 14), 0x1208E7E2},
      {second, 0x5BD11DBD},
      {"a", 0x550D7456},
      {"as", 0x9D5A0464},
      {"asd", 0x3D83552B},
      {"asdf", 0x5E702C32},
      {"abc", 0x32D153FF},
      {"Nobody inspects the spammish repetition", 0xE2293B2F},
      {"Call me Ishmael. Some years ago--never mind how long precisely-", 0x6F320359},
  };
}

TEST(XxHash32, Gives_the_published_test_values) {
  for (const KnownAnswer& known : KnownAnswers()) {
    EXPECT_EQ(Hash(known.input), known.hash) << known.input.size() << " bytes";
    XxHash32 stream;
    stream.Update(known.input.data(), known.input.size());
    EXPECT_EQ(stream.Digest(), known.hash) << known.input.size() << " bytes";
  }
}

TEST(XxHash32, The_textbook_of_these_tests_gives_the_published_test_values) {
  for (const KnownAnswer& known : KnownAnswers()) {
    EXPECT_EQ(TextbookHash(known.input), known.hash) << known.input.size() << " bytes";
  }
}

TEST(XxHash32, No_bytes_hash_alike_with_and_without_a_pointer) {
  EXPECT_EQ(HashBytes(nullptr, 0), 0x02CC5D05u);
  EXPECT_EQ(HashBytes("x", 0), 0x02CC5D05u);
  EXPECT_EQ(XxHash32().Digest(), 0x02CC5D05u);
  XxHash32 stream;
  stream.Update(nullptr, 0);
  EXPECT_EQ(stream.Digest(), 0x02CC5D05u);
}

TEST(XxHash32, Every_length_up_to_1000_is_the_textbook_s) {
  const std::string data = RandomBytes(1000, 1);
  for (std::size_t length = 0; length <= data.size(); ++length) {
    const std::string_view part = std::string_view(data).substr(0, length);
    const std::uint32_t expected = TextbookHash(part);
    ASSERT_EQ(Hash(part), expected) << length;
    XxHash32 stream;
    stream.Update(part.data(), part.size());
    ASSERT_EQ(stream.Digest(), expected) << length;
  }
}

TEST(XxHash32, Every_alignment_gives_the_same) {
  const std::string data = RandomBytes(400, 2);
  alignas(64) char place[64 + 400];
  for (std::size_t length : {0u, 1u, 15u, 16u, 17u, 63u, 64u, 65u, 127u, 128u, 129u, 300u, 400u}) {
    const std::uint32_t expected = TextbookHash(std::string_view(data).substr(0, length));
    for (std::size_t shift = 0; shift < 64; ++shift) {
      std::copy_n(data.data(), length, place + shift);
      ASSERT_EQ(HashBytes(place + shift, length), expected) << length << " bytes at " << shift;
    }
  }
}

// A byte beyond would be outside of the block of memory, which the address sanitizer sees.
TEST(XxHash32, Reads_no_byte_beyond_the_input) {
  const std::string data = RandomBytes(400, 9);
  for (std::size_t length = 0; length <= data.size(); ++length) {
    const std::vector<char> exact(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(length));
    ASSERT_EQ(HashBytes(exact.data(), length),
              TextbookHash(std::string_view(data).substr(0, length)))
        << length;
  }
}

TEST(XxHash32, Sizes_around_the_boundaries_of_stripes_and_blocks) {
  const std::string data = RandomBytes(1'048'576 + 65, 3);
  std::vector<std::size_t> sizes;
  for (const std::size_t unit : {16u, 64u}) {
    for (std::size_t n = 1; n <= 40; ++n) {
      sizes.insert(sizes.end(), {n * unit - 1, n * unit, n * unit + 1});
    }
  }
  for (const std::size_t middle : {4096u, 65'536u, 1'048'576u}) {
    for (const std::size_t beyond : {1u, 3u, 4u, 7u, 15u, 16u, 17u, 63u, 64u, 65u}) {
      sizes.insert(sizes.end(), {middle - beyond, middle, middle + beyond});
    }
  }
  for (const std::size_t size : sizes) {
    const std::string_view part = std::string_view(data).substr(0, size);
    ASSERT_EQ(Hash(part), TextbookHash(part)) << size;
  }
}

TEST(XxHash32, Two_pieces_hash_like_one_wherever_the_cut_is) {
  const std::string data = RandomBytes(200, 4);
  for (std::size_t length = 0; length <= data.size(); ++length) {
    const std::uint32_t expected = TextbookHash(std::string_view(data).substr(0, length));
    for (std::size_t cut = 0; cut <= length; ++cut) {
      XxHash32 stream;
      stream.Update(data.data(), cut);
      stream.Update(data.data() + cut, length - cut);
      ASSERT_EQ(stream.Digest(), expected) << length << " bytes, cut at " << cut;
    }
  }
}

TEST(XxHash32, Byte_by_byte_hashes_like_one) {
  const std::string data = RandomBytes(1000, 5);
  XxHash32 stream;
  for (std::size_t i = 0; i < data.size(); ++i) {
    ASSERT_EQ(stream.Digest(), TextbookHash(std::string_view(data).substr(0, i))) << i;
    stream.Update(&data[i], 1);
  }
  EXPECT_EQ(stream.Digest(), TextbookHash(data));
}

TEST(XxHash32, Random_pieces_hash_like_one) {
  const std::string data = RandomBytes(10'000, 6);
  const std::uint32_t expected = TextbookHash(data);
  std::mt19937 random(7);
  for (int round = 0; round < 400; ++round) {
    const std::size_t largest = std::vector<std::size_t>{3, 20, 70, 300, 5000}[random() % 5];
    XxHash32 stream;
    std::vector<std::size_t> pieces;
    for (std::size_t at = 0; at < data.size();) {
      const std::size_t piece = std::min<std::size_t>(random() % (largest + 1), data.size() - at);
      stream.Update(data.data() + at, piece);
      at += piece;
      pieces.push_back(piece);
    }
    ASSERT_EQ(stream.Digest(), expected) << ::testing::PrintToString(pieces);
  }
}

TEST(XxHash32, A_digest_changes_nothing) {
  const std::string data = RandomBytes(77, 8);
  XxHash32 stream;
  stream.Update(data.data(), 33);
  EXPECT_EQ(stream.Digest(), stream.Digest());
  stream.Update(data.data() + 33, 44);
  EXPECT_EQ(stream.Digest(), TextbookHash(data));
}

// The length counts modulo 2^32, but a long input stays a long one when its length wraps to 0 or to
// less than a stripe. The values are those of zeros, computed apart.
TEST(XxHash32, Four_gibibytes_of_zeros_and_five_more) {
  const std::string zeros(1'048'576, '\0');
  XxHash32 stream;
  for (int i = 0; i < 4096; ++i) {
    stream.Update(zeros.data(), zeros.size());
  }
  EXPECT_EQ(stream.Digest(), 0x35B93941u);
  stream.Update(zeros.data(), 5);
  EXPECT_EQ(stream.Digest(), 0x8EA3CB21u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
