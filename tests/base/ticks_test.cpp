#include "base/ticks.h"

#include <gtest/gtest.h>

namespace quastel {
namespace {

TEST(Ticks, The_system_s_time_begins_1600_years_of_days_after_the_first) {
  // 1600 years: 365 days each, a leap day every fourth year, but only 4 in each 4 full centuries.
  constexpr std::uint64_t kDays = 1600 * 365 + 1600 / 4 - 1600 / 100 + 1600 / 400;
  constexpr std::uint64_t kTicksInADay = std::uint64_t{24} * 60 * 60 * 10'000'000;
  EXPECT_EQ(kTicksAt1601, kDays * kTicksInADay);
  EXPECT_EQ(kTicksAt1601, 504911232000000000u);
}

}  // namespace
}  // namespace quastel
