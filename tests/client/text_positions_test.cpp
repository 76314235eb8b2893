#include "text_positions.h"

#include <gtest/gtest.h>

#include <string>

namespace quastel::client {
namespace {

TextPosition At(std::wstring_view text, std::size_t offset) {
  return TextPositions(text).At(offset);
}

TEST(TextPositions, Count_lines_and_columns_from_one) {
  EXPECT_EQ(At(L"", 0), (TextPosition{1, 1}));
  EXPECT_EQ(At(L"ab\ncd", 0), (TextPosition{1, 1}));
  EXPECT_EQ(At(L"ab\ncd", 1), (TextPosition{1, 2}));
  EXPECT_EQ(At(L"ab\ncd", 3), (TextPosition{2, 1}));
  EXPECT_EQ(At(L"ab\ncd", 5), (TextPosition{2, 3}));
}

TEST(TextPositions, Know_all_three_line_ends) {
  EXPECT_EQ(At(L"a\r\nb", 3), (TextPosition{2, 1}));
  EXPECT_EQ(At(L"a\rb", 2), (TextPosition{2, 1}));
  EXPECT_EQ(At(L"a\n\nb", 3), (TextPosition{3, 1}));
  EXPECT_EQ(At(L"a\n\rb", 3), (TextPosition{3, 1}));
  EXPECT_EQ(At(L"a\r\n", 3), (TextPosition{2, 1}));
  // A line end belongs to its line.
  EXPECT_EQ(At(L"a\r\nb", 2), (TextPosition{1, 3}));
}

TEST(TextPositions, Count_a_surrogate_pair_as_one_character) {
  EXPECT_EQ(At(L"\xD83C\xDFB5x", 2), (TextPosition{1, 2}));
  EXPECT_EQ(At(L"\xD83C\xDFB5x", 3), (TextPosition{1, 3}));
  // Halves without their other half count by themselves.
  EXPECT_EQ(At(L"\xDFB5\xD83Cx", 2), (TextPosition{1, 3}));
}

TEST(PositionText, Reads_as_people_say_it) {
  EXPECT_EQ(PositionText({3, 14}), "line 3, column 14");
}

}  // namespace
}  // namespace quastel::client
