#include "text.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

constexpr wchar_t kHigh = 0xD83C;
constexpr wchar_t kLow = 0xDFB5;

TEST(Text, Every_length_of_a_character_survives_both_ways) {
  const std::wstring wide = {L'a', 0x00E9, 0x6587, kHigh, kLow, L'z'};
  const std::string bytes = "a\xC3\xA9\xE6\x96\x87\xF0\x9F\x8E\xB5z";
  EXPECT_EQ(ToUtf8(wide), bytes);
  EXPECT_EQ(ToReversibleUtf8(wide), bytes);
  EXPECT_EQ(FromUtf8(bytes), wide);
  EXPECT_TRUE(IsWellFormed(wide));
}

TEST(Text, An_unpaired_surrogate_is_replaced_in_outputs) {
  const std::string expected = "a\xEF\xBF\xBDz";
  for (const std::wstring& wide :
       {std::wstring{L'a', kHigh, L'z'}, std::wstring{L'a', kLow, L'z'}}) {
    EXPECT_FALSE(IsWellFormed(wide));
    EXPECT_EQ(ToUtf8(wide), expected);
  }
  EXPECT_EQ(ToUtf8(std::wstring{kLow, kHigh}), "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(ToUtf8(std::wstring{kHigh, kHigh, kLow}), "\xEF\xBF\xBD\xF0\x9F\x8E\xB5");
}

TEST(Text, An_unpaired_surrogate_survives_the_reversible_form) {
  for (const std::wstring& wide :
       {std::wstring{kHigh}, std::wstring{kLow}, std::wstring{kLow, kHigh, L'x', kHigh}}) {
    EXPECT_EQ(FromUtf8(ToReversibleUtf8(wide)), wide);
  }
}

TEST(Text, Bytes_that_are_no_utf8_are_replaced_one_by_one) {
  EXPECT_EQ(FromUtf8("a\xFFz"), L"a\xFFFDz");
  EXPECT_EQ(FromUtf8("\x80"), L"\xFFFD");
  EXPECT_EQ(FromUtf8("\xE6\x96"), L"\xFFFD\xFFFD");
  EXPECT_EQ(FromUtf8("\xC0\xAF"), L"\xFFFD\xFFFD");
  EXPECT_EQ(FromUtf8("\xE0\x80\xAF"), L"\xFFFD\xFFFD\xFFFD");
  EXPECT_EQ(FromUtf8("\xF4\x90\x80\x80"), L"\xFFFD\xFFFD\xFFFD\xFFFD");
  EXPECT_EQ(FromUtf8("\xC3(").substr(1), L"(");
}

}  // namespace
}  // namespace quastel::client
