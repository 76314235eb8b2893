#include "display_text.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace quastel::client {
namespace {

TEST(HumanSize, Uses_the_unit_that_leaves_one_to_four_digits) {
  EXPECT_EQ(HumanSize(0), "0 B");
  EXPECT_EQ(HumanSize(1023), "1023 B");
  EXPECT_EQ(HumanSize(1024), "1.0 KiB");
  EXPECT_EQ(HumanSize(1536), "1.5 KiB");
  EXPECT_EQ(HumanSize(10485760), "10.0 MiB");
  EXPECT_EQ(HumanSize(1503238554), "1.4 GiB");
  EXPECT_EQ(HumanSize(std::uint64_t{3} << 40), "3.0 TiB");
  EXPECT_EQ(HumanSize(UINT64_MAX), "16.0 EiB");
}

TEST(HumanSize, Rounds_into_the_next_unit) {
  EXPECT_EQ(HumanSize(1048575), "1.0 MiB");
  EXPECT_EQ(HumanSize((std::uint64_t{1} << 40) - 1), "1.0 TiB");
  EXPECT_EQ(HumanSize((std::uint64_t{1} << 60) - 1), "1.0 EiB");
  EXPECT_EQ(HumanSize(1023 * 1024), "1,023.0 KiB");
}

TEST(GroupedNumber, Separates_thousands) {
  EXPECT_EQ(GroupedNumber(0), "0");
  EXPECT_EQ(GroupedNumber(999), "999");
  EXPECT_EQ(GroupedNumber(1000), "1,000");
  EXPECT_EQ(GroupedNumber(1234567), "1,234,567");
  EXPECT_EQ(GroupedNumber(UINT64_MAX), "18,446,744,073,709,551,615");
}

TEST(Counted, Speaks_of_one_and_of_many) {
  EXPECT_EQ(Counted(1, "file", "files"), "1 file");
  EXPECT_EQ(Counted(0, "file", "files"), "0 files");
  EXPECT_EQ(Counted(1000, "file", "files"), "1,000 files");
}

TEST(HumanDuration, Grows_with_the_time) {
  EXPECT_EQ(HumanDuration(999), "0 ms");
  EXPECT_EQ(HumanDuration(999999), "999 ms");
  EXPECT_EQ(HumanDuration(1000000), "1.0 s");
  EXPECT_EQ(HumanDuration(59990000), "59.9 s");
  EXPECT_EQ(HumanDuration(65000000), "1 min 05 s");
  EXPECT_EQ(HumanDuration(3600000000ULL + 3 * 60000000ULL), "1 h 03 min");
}

TEST(CellWidth, Knows_wide_and_combining_characters) {
  EXPECT_EQ(CellWidth(L"abc"), 3U);
  EXPECT_EQ(CellWidth(L"\x6587\x4EF6"), 4U);
  EXPECT_EQ(CellWidth(L"e\x0301"), 1U);
  EXPECT_EQ(CellWidth(L"\xD83C\xDFB5"), 2U);
  EXPECT_EQ(CellWidth(L"\x2705\x2B50"), 4U);
  EXPECT_EQ(CellWidth(L"\x2603\x05D0"), 2U);
}

TEST(FitMiddle, Keeps_what_fits) {
  EXPECT_EQ(FitMiddle(L"Q:\\videos\\a.mp4", 15), L"Q:\\videos\\a.mp4");
  EXPECT_EQ(FitMiddle(L"", 0), L"");
}

TEST(FitMiddle, Takes_the_middle_out_of_a_longer_text) {
  EXPECT_EQ(FitMiddle(L"Q:\\some\\long\\folder\\holiday.mp4", 20), L"Q:\\so...\\holiday.mp4");
  EXPECT_EQ(FitMiddle(L"abcdefgh", 4), L"...h");
  EXPECT_EQ(FitMiddle(L"abcdefgh", 3), L"...");
  EXPECT_EQ(FitMiddle(L"abcdefgh", 1), L".");
}

TEST(FitMiddle, Never_splits_a_pair_and_never_exceeds_the_room) {
  std::wstring text;
  for (int i = 0; i < 12; ++i) {
    text += i % 3 == 0 ? L"\xD83C\xDFB5" : (i % 3 == 1 ? L"\x6587" : L"e\x0301");
  }
  for (std::size_t cells = 0; cells <= CellWidth(text); ++cells) {
    const std::wstring fitted = FitMiddle(text, cells);
    EXPECT_LE(CellWidth(fitted), cells);
    for (std::size_t i = 0; i < fitted.size(); ++i) {
      const bool high = fitted[i] == 0xD83C;
      const bool followed = i + 1 < fitted.size() && fitted[i + 1] == 0xDFB5;
      EXPECT_EQ(high, followed) << cells;
    }
  }
}

TEST(Printable, Replaces_what_would_move_the_cursor) {
  EXPECT_EQ(Printable(L"a\nb\x1B[2J\x9Bz\x00E9"), L"a?b?[2J?z\x00E9");
}

TEST(Padding, Fills_on_either_side_and_never_cuts) {
  EXPECT_EQ(PadLeft("ab", 4), "  ab");
  EXPECT_EQ(PadRight("ab", 4), "ab  ");
  EXPECT_EQ(PadLeft("abcde", 4), "abcde");
  EXPECT_EQ(PadRight("abcde", 4), "abcde");
}

}  // namespace
}  // namespace quastel::client
