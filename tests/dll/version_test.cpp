#include <gtest/gtest.h>

#include "quastel_core.h"

TEST(Version, Is_the_version_of_the_project) {
  EXPECT_STREQ(QUASTEL_TEST_VERSION, qs_version());
}

TEST(Version, Is_the_same_pointer_every_time) {
  EXPECT_EQ(qs_version(), qs_version());
}
