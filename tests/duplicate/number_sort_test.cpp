#include "duplicate/number_sort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace quastel::duplicate_tests {
namespace {

using duplicate::NumberedEntry;
using duplicate::SortByNumber;

TEST(NumberSort, Of_none_or_one_changes_nothing) {
  std::vector<NumberedEntry> entries;
  SortByNumber(entries);
  EXPECT_TRUE(entries.empty());
  entries.push_back({7, 3});
  SortByNumber(entries);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].number, 7u);
  EXPECT_EQ(entries[0].index, 3u);
}

// As a stable sort does it, for numbers that differ in every byte, in one and in none.
TEST(NumberSort, Orders_by_number_and_keeps_the_order_of_equals) {
  std::mt19937_64 random(1);
  for (const std::uint64_t bits :
       {~std::uint64_t{0}, std::uint64_t{0xFF}, std::uint64_t{0xFF00'0000'0000'0000},
        std::uint64_t{0x0100'0000'0000'0001}, std::uint64_t{0x3'0000'0300}, std::uint64_t{0}}) {
    SCOPED_TRACE(bits);
    std::vector<NumberedEntry> entries;
    for (std::uint32_t i = 0; i < 1000; ++i) {
      entries.push_back({(random() & bits) | 0x10, i});
    }
    std::vector<NumberedEntry> expected = entries;
    std::stable_sort(
        expected.begin(), expected.end(),
        [](const NumberedEntry& a, const NumberedEntry& b) { return a.number < b.number; });
    SortByNumber(entries);
    ASSERT_EQ(entries.size(), expected.size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
      ASSERT_EQ(entries[i].number, expected[i].number) << i;
      ASSERT_EQ(entries[i].index, expected[i].index) << i;
    }
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
