#include "time_text.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

constexpr std::uint64_t kTicksTo1601 = 504911232000000000ULL;

TEST(TimeText, Reads_ticks_as_local_time) {
  // 2024-02-29 17:04:09
  constexpr std::uint64_t kTicks = 638448230490000000ULL;
  EXPECT_EQ(LocalMinuteText(kTicks), "2024-02-29 17:04");
  EXPECT_EQ(LocalIsoText(kTicks), "2024-02-29T17:04:09");
  EXPECT_EQ(LocalIsoText(kTicksTo1601), "1601-01-01T00:00:00");
}

TEST(TimeText, Says_nothing_of_ticks_that_are_no_date) {
  EXPECT_FALSE(LocalIsoText(0));
  EXPECT_FALSE(LocalMinuteText(kTicksTo1601 - 1));
  EXPECT_FALSE(LocalMinuteText(UINT64_MAX));
}

}  // namespace
}  // namespace quastel::client
