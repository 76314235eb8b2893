#include "byte_size.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

TEST(ParseByteSize, Understands_plain_numbers_and_units) {
  EXPECT_EQ(ParseByteSize("0"), 0U);
  EXPECT_EQ(ParseByteSize("4096"), 4096U);
  EXPECT_EQ(ParseByteSize("10K"), 10240U);
  EXPECT_EQ(ParseByteSize("5m"), 5U << 20);
  EXPECT_EQ(ParseByteSize("1G"), 1U << 30);
  EXPECT_EQ(ParseByteSize("2T"), 2ULL << 40);
}

TEST(ParseByteSize, Refuses_what_is_no_size) {
  for (const char* text : {"", "K", "big", "-1", "+1", "1.5M", "1KB", "1 K", " 1", "0x10", "1KK"}) {
    EXPECT_FALSE(ParseByteSize(text)) << text;
  }
}

TEST(ParseByteSize, Refuses_more_than_63_bits) {
  EXPECT_EQ(ParseByteSize("9223372036854775807"), 9223372036854775807ULL);
  EXPECT_FALSE(ParseByteSize("9223372036854775808"));
  EXPECT_EQ(ParseByteSize("8388607T"), 8388607ULL << 40);
  EXPECT_FALSE(ParseByteSize("8388608T"));
  EXPECT_FALSE(ParseByteSize("99999999999999999999"));
}

}  // namespace
}  // namespace quastel::client
