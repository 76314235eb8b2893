#include <gtest/gtest.h>

#include "quastel_core.h"

namespace quastel {
namespace {

TEST(Version, The_version_is_0_4_0) {
  EXPECT_STREQ(qs_version(), "0.4.0");
}

TEST(Version, Every_call_answers_the_same_pointer) {
  const char* const first = qs_version();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(qs_version(), first);
    EXPECT_STREQ(qs_version(), "0.4.0");
  }
}

}  // namespace
}  // namespace quastel
