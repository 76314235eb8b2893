#include "frame/text_output.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "support/named_case.h"
#include "support/text.h"

namespace quastel {
namespace {

constexpr std::uint64_t kUnset = 0xABABABABABABABAB;

struct Case : support::NamedCase {
  const char* text;
  bool has_buffer;
  std::uint64_t capacity;
  qs_status status;
};

constexpr Case kCases[] = {
    {{"Null_buffer"}, "abc", false, 0, QS_BUFFER_TOO_SMALL},
    {{"Null_buffer_with_a_large_capacity"}, "abc", false, 100, QS_BUFFER_TOO_SMALL},
    {{"Zero_capacity"}, "abc", true, 0, QS_BUFFER_TOO_SMALL},
    {{"Capacity_one"}, "abc", true, 1, QS_BUFFER_TOO_SMALL},
    {{"One_short"}, "abc", true, 3, QS_BUFFER_TOO_SMALL},
    {{"Exact"}, "abc", true, 4, QS_OK},
    {{"One_more"}, "abc", true, 5, QS_OK},
    {{"Large"}, "abc", true, UINT64_MAX, QS_OK},
    {{"Empty_text_without_a_buffer"}, "", false, 0, QS_BUFFER_TOO_SMALL},
    {{"Empty_text_with_zero_capacity"}, "", true, 0, QS_BUFFER_TOO_SMALL},
    {{"Empty_text_with_capacity_one"}, "", true, 1, QS_OK},
};

class DeliverTest : public ::testing::TestWithParam<Case> {};

template <typename C>
void Check(const Case& row, std::basic_string_view<C> text) {
  constexpr C kUntouched = 0x5A;
  for (const bool wants_needed : {true, false}) {
    std::array<C, 8> buffer;
    buffer.fill(kUntouched);
    std::uint64_t needed = kUnset;
    EXPECT_EQ(DeliverCharacters<C>(text, row.has_buffer ? buffer.data() : nullptr, row.capacity,
                                   wants_needed ? &needed : nullptr),
              row.status);
    EXPECT_EQ(needed, wants_needed ? text.size() + 1 : kUnset);

    std::array<C, 8> expected;
    expected.fill(kUntouched);
    if (row.status == QS_OK) {
      std::copy(text.begin(), text.end(), expected.begin());
      expected.at(text.size()) = C{};
    }
    EXPECT_EQ(buffer, expected) << "nothing but the text and its terminator is written";
  }
}

TEST_P(DeliverTest, Of_wide_text) {
  const Text text = support::Wide(GetParam().text);
  Check<Char>(GetParam(), text);
}

TEST_P(DeliverTest, Of_narrow_text) {
  Check<char>(GetParam(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(TextOutput, DeliverTest, ::testing::ValuesIn(kCases), support::CaseName());

TEST(TextOutput, A_text_with_a_NUL_inside_is_delivered_whole) {
  const Text text = {Char{'a'}, 0, Char{'b'}, 0};
  std::array<Char, 6> buffer;
  buffer.fill(Char{'#'});
  std::uint64_t needed = 0;
  EXPECT_EQ(DeliverText(text, buffer.data(), buffer.size(), &needed), QS_OK);
  EXPECT_EQ(needed, 5u);
  EXPECT_EQ(buffer, (std::array<Char, 6>{Char{'a'}, 0, Char{'b'}, 0, 0, Char{'#'}}));
}

}  // namespace
}  // namespace quastel
