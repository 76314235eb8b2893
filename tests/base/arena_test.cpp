#include "base/arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quastel {
namespace {

TEST(Arena, Keeps_texts_when_what_they_were_copied_from_is_gone) {
  Arena arena;
  std::vector<std::string_view> kept;
  for (int i = 0; i < 20'000; ++i) {
    std::string text = "text " + std::to_string(i);
    kept.push_back(arena.Keep(std::string_view(text)));
    text.assign(text.size(), '#');
  }
  for (int i = 0; i < 20'000; ++i) {
    ASSERT_EQ(kept[static_cast<std::size_t>(i)], "text " + std::to_string(i));
  }
}

TEST(Arena, Keeps_texts_of_every_size_apart) {
  Arena arena;
  std::vector<std::string_view> kept;
  for (std::size_t size = 1; size < 200'000; size = size * 3 / 2 + 1) {
    kept.push_back(
        arena.Keep(std::string_view(std::string(size, static_cast<char>('a' + kept.size())))));
  }
  EXPECT_EQ(arena.Keep(std::string_view()), "");
  std::size_t size = 1;
  for (std::size_t i = 0; i < kept.size(); ++i, size = size * 3 / 2 + 1) {
    ASSERT_EQ(kept[i], std::string(size, static_cast<char>('a' + i)));
  }
}

TEST(Arena, Aligns_what_needs_it_whatever_came_before) {
  Arena arena;
  for (std::size_t before = 1; before < 40; ++before) {
    arena.Allocate<char>(before);
    const auto at = reinterpret_cast<std::uintptr_t>(arena.Allocate<std::uint64_t>(2));
    ASSERT_EQ(at % alignof(std::uint64_t), 0u) << before;
    arena.Allocate<char>(1);
    const auto shorter = reinterpret_cast<std::uintptr_t>(arena.Allocate<char16_t>(3));
    ASSERT_EQ(shorter % alignof(char16_t), 0u) << before;
  }
}

// Each piece is filled to its last byte: one that overlaps another one shows.
TEST(Arena, Pieces_of_any_size_and_alignment_do_not_overlap) {
  Arena arena;
  std::vector<std::pair<std::uint32_t*, std::size_t>> numbers;
  std::vector<std::pair<char*, std::size_t>> bytes;
  for (std::uint32_t i = 0; i < 3000; ++i) {
    const std::size_t count = i * 7 % 300;
    numbers.emplace_back(arena.Allocate<std::uint32_t>(count), count);
    std::fill_n(numbers.back().first, count, i);
    bytes.emplace_back(arena.Allocate<char>(count + 1), count + 1);
    std::fill_n(bytes.back().first, count + 1, static_cast<char>(i));
  }
  for (std::uint32_t i = 0; i < 3000; ++i) {
    for (std::size_t j = 0; j < numbers[i].second; ++j) {
      ASSERT_EQ(numbers[i].first[j], i);
    }
    for (std::size_t j = 0; j < bytes[i].second; ++j) {
      ASSERT_EQ(bytes[i].first[j], static_cast<char>(i));
    }
  }
}

TEST(Arena, What_it_keeps_stays_in_its_place_when_it_is_moved) {
  Arena arena;
  const std::string_view kept = arena.Keep(std::string_view("stays"));
  const Arena other = std::move(arena);
  EXPECT_EQ(kept, "stays");
}

}  // namespace
}  // namespace quastel
