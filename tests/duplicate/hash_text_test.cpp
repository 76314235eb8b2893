#include "duplicate/hash_text.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "duplicate/textbook_xxh32.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::HashText;
using duplicate::HexText;

TEST(HashText, The_least_significant_byte_comes_first) {
  EXPECT_EQ(HashText(0x12345678), "78563412");
  EXPECT_EQ(HashText(0x02CC5D05), "055dcc02");
  EXPECT_EQ(HashText(1), "01000000");
  EXPECT_EQ(HashText(0x10000000), "00000010");
}

TEST(HashText, Has_eight_lower_case_digits_whatever_the_value) {
  EXPECT_EQ(HashText(0), "00000000");
  EXPECT_EQ(HashText(0xFFFFFFFF), "ffffffff");
  EXPECT_EQ(HashText(0xABCDEF0A), "0aefcdab");
  std::mt19937 random(1);
  for (int i = 0; i < 1000; ++i) {
    const auto hash = static_cast<std::uint32_t>(random());
    ASSERT_EQ(HashText(hash), TextbookDigits(hash)) << hash;
  }
}

TEST(HexText, Has_two_digits_for_each_byte_the_high_half_first) {
  EXPECT_EQ(HexText({}), "");
  const std::vector<unsigned char> bytes = {0x00, 0x01, 0x0F, 0x10, 0x9A, 0xA9, 0xF0, 0xFF};
  EXPECT_EQ(HexText(bytes), "00010f109aa9f0ff");
}

}  // namespace
}  // namespace quastel::duplicate_tests
