#include "hash_digits.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

TEST(StandardDigits, Puts_the_last_byte_first_and_keeps_its_digits_in_order) {
  EXPECT_EQ(StandardDigits("055dcc02"), "02cc5d05");
  EXPECT_EQ(StandardDigits("78563412"), "12345678");
}

}  // namespace
}  // namespace quastel::client
