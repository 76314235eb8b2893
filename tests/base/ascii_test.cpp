#include "base/ascii.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "support/text.h"

namespace quastel {
namespace {

TEST(Ascii, Folding_changes_the_26_capital_letters_and_no_other_unit) {
  int changed = 0;
  for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const Char c = static_cast<Char>(unit);
    const bool capital = unit >= 0x41 && unit <= 0x5A;
    EXPECT_EQ(FoldAscii(c), static_cast<Char>(capital ? unit + 32 : unit)) << unit;
    changed += FoldAscii(c) != c ? 1 : 0;
  }
  EXPECT_EQ(changed, 26);
}

TEST(Ascii, Exactly_52_units_are_letters) {
  int letters = 0;
  for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    const bool letter = (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z');
    EXPECT_EQ(IsAsciiLetter(static_cast<Char>(unit)), letter) << unit;
    letters += letter ? 1 : 0;
  }
  EXPECT_EQ(letters, 52);
}

TEST(Ascii, Texts_are_equal_whatever_the_case_of_their_ASCII_letters) {
  EXPECT_TRUE(EqualsFolded(u"Program Files (X86)", u"pROGRAM fILES (x86)"));
  EXPECT_TRUE(EqualsFolded(u"", u""));
}

TEST(Ascii, Letters_beyond_ASCII_keep_their_case) {
  EXPECT_FALSE(EqualsFolded(u"\u00C4", u"\u00E4"));
  EXPECT_FALSE(EqualsFolded(u"\u0416", u"\u0436"));
  EXPECT_FALSE(EqualsFolded(u"\uFF21", u"\uFF41"));
  EXPECT_FALSE(EqualsFolded(u"\u212A", u"k"));
}

TEST(Ascii, Units_beside_the_letters_differ_from_their_neighbours_32_above) {
  EXPECT_FALSE(EqualsFolded(u"@", u"`"));
  EXPECT_FALSE(EqualsFolded(u"[", u"{"));
}

TEST(Ascii, Texts_of_different_length_are_not_equal) {
  EXPECT_FALSE(EqualsFolded(u"abc", u"ab"));
  EXPECT_FALSE(EqualsFolded(u"", u"a"));
}

TEST(Ascii, A_prefix_is_found_whatever_its_case) {
  EXPECT_TRUE(StartsWithFolded(u"\\\\?\\unc\\server", u"\\\\?\\UNC\\"));
  EXPECT_TRUE(StartsWithFolded(u"abc", u""));
  EXPECT_TRUE(StartsWithFolded(u"abc", u"ABC"));
  EXPECT_FALSE(StartsWithFolded(u"ab", u"abc"));
  EXPECT_FALSE(StartsWithFolded(u"xbc", u"a"));
}

TEST(Ascii, Both_slashes_and_nothing_else_are_separators) {
  for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
    EXPECT_EQ(IsSeparator(static_cast<Char>(unit)), unit == '\\' || unit == '/') << unit;
  }
}

TEST(Ascii, The_last_separator_may_be_of_either_kind) {
  EXPECT_EQ(LastSeparator(u"a\\b/c"), 3u);
  EXPECT_EQ(LastSeparator(u"a/b\\c"), 3u);
  EXPECT_EQ(LastSeparator(u"/"), 0u);
  EXPECT_EQ(LastSeparator(u"name"), TextView::npos);
  EXPECT_EQ(LastSeparator(u""), TextView::npos);
}

TEST(Ascii, The_leaf_is_the_text_after_the_last_separator) {
  using support::Utf8;
  EXPECT_EQ(Utf8(LeafOf(u"C:\\a\\b.txt")), "b.txt");
  EXPECT_EQ(Utf8(LeafOf(u"C:\\a/b.txt")), "b.txt");
  EXPECT_EQ(Utf8(LeafOf(u"b.txt")), "b.txt");
  EXPECT_EQ(Utf8(LeafOf(u"C:\\a\\")), "");
  EXPECT_EQ(Utf8(LeafOf(u"")), "");
}

}  // namespace
}  // namespace quastel
