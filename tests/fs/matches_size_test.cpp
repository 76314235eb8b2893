#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "fs/matchers.h"
#include "quastel_core.h"
#include "support/named_case.h"

namespace quastel {
namespace {

constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

// The answers of modes 1, 2 and 3.
struct SizeCase : support::NamedCase {
  std::int64_t size;
  std::int32_t above_gib;
  std::int32_t between;
  std::int32_t below_half;
};

constexpr SizeCase kSizeCases[] = {
    {{"Least"}, kSmallest, 0, 0, 1},
    {{"Minus_one"}, -1, 0, 0, 1},
    {{"Zero"}, 0, 0, 0, 1},
    {{"One_below_512_MiB"}, 536870911, 0, 0, 1},
    {{"Exactly_512_MiB_is_in_no_class"}, 536870912, 0, 0, 0},
    {{"One_above_512_MiB"}, 536870913, 0, 1, 0},
    {{"One_below_1_GiB"}, 1073741823, 0, 1, 0},
    {{"Exactly_1_GiB_is_in_no_class"}, 1073741824, 0, 0, 0},
    {{"One_above_1_GiB"}, 1073741825, 1, 0, 0},
    {{"Beyond_32_bits"}, 4294967296, 1, 0, 0},
    {{"Beyond_32_bits_with_a_small_low_half"}, 4294967297, 1, 0, 0},
    {{"Largest"}, kLargest, 1, 0, 0},
};

class MatchesSizeTest : public ::testing::TestWithParam<SizeCase> {};

TEST_P(MatchesSizeTest, Mode_0_matches_always) {
  EXPECT_EQ(qs_matches_size(GetParam().size, 0), 1);
}

TEST_P(MatchesSizeTest, Mode_1_matches_more_than_1_GiB) {
  EXPECT_EQ(qs_matches_size(GetParam().size, 1), GetParam().above_gib);
}

TEST_P(MatchesSizeTest, Mode_2_matches_between_512_MiB_and_1_GiB) {
  EXPECT_EQ(qs_matches_size(GetParam().size, 2), GetParam().between);
}

TEST_P(MatchesSizeTest, Mode_3_matches_less_than_512_MiB) {
  EXPECT_EQ(qs_matches_size(GetParam().size, 3), GetParam().below_half);
}

TEST_P(MatchesSizeTest, Any_other_mode_matches_always) {
  for (const std::uint32_t mode : {4u, 5u, 100u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(qs_matches_size(GetParam().size, mode), 1) << mode;
    EXPECT_TRUE(MatchesSize(GetParam().size, mode)) << mode;
  }
}

INSTANTIATE_TEST_SUITE_P(MatchesSize, MatchesSizeTest, ::testing::ValuesIn(kSizeCases),
                         support::CaseName());

}  // namespace
}  // namespace quastel
