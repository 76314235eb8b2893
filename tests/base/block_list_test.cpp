#include "base/block_list.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace quastel {
namespace {

TEST(BlockList, Without_elements_is_empty) {
  const BlockList<int> list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0u);
}

TEST(BlockList, Gives_each_element_back_by_its_index) {
  BlockList<std::size_t> list;
  constexpr std::size_t kCount = 100'000;
  for (std::size_t i = 0; i < kCount; ++i) {
    list.push_back(i * 3);
    ASSERT_EQ(list.size(), i + 1);
    ASSERT_EQ(list.back(), i * 3);
  }
  EXPECT_FALSE(list.empty());
  for (std::size_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(list[i], i * 3);
  }
}

TEST(BlockList, Leaves_elements_in_their_place_while_it_grows) {
  BlockList<int> list;
  list.push_back(7);
  int* const first = &list[0];
  for (int i = 0; i < 50'000; ++i) {
    list.push_back(i);
  }
  EXPECT_EQ(&list[0], first);
  *first = 8;
  EXPECT_EQ(list[0], 8);
}

}  // namespace
}  // namespace quastel
