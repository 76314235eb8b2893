#include "base/common_prefix.h"

#include <gtest/gtest.h>

namespace quastel {
namespace {

// Of every length around the step of four, with the difference at every place.
TEST(CommonPrefix, Ends_at_the_first_difference) {
  for (std::size_t length = 0; length <= 13; ++length) {
    const Text text(length, Char{'x'});
    EXPECT_EQ(CommonPrefixLength(text, text), length);
    for (std::size_t place = 0; place < length; ++place) {
      Text other = text;
      other[place] = Char{'y'};
      EXPECT_EQ(CommonPrefixLength(text, other), place) << length;
      EXPECT_EQ(CommonPrefixLength(other, text), place) << length;
      EXPECT_FALSE(IsSameText(text, other));
      EXPECT_TRUE(ComesBefore(text, other));
      EXPECT_FALSE(ComesBefore(other, text));
    }
  }
}

TEST(CommonPrefix, Of_a_text_and_its_beginning_is_the_beginning) {
  const Text text = u"0123456789";
  for (std::size_t length = 0; length < text.size(); ++length) {
    const TextView beginning = TextView(text).substr(0, length);
    EXPECT_EQ(CommonPrefixLength(text, beginning), length);
    EXPECT_EQ(CommonPrefixLength(beginning, text), length);
    EXPECT_FALSE(IsSameText(text, beginning));
    EXPECT_TRUE(ComesBefore(beginning, text));
    EXPECT_FALSE(ComesBefore(text, beginning));
  }
}

TEST(CommonPrefix, A_text_is_itself_wherever_it_lies_and_not_before_itself) {
  const Text text = u"0123456789";
  const Text copy = Text(u"...") + text;
  EXPECT_TRUE(IsSameText(text, TextView(copy).substr(3)));
  EXPECT_FALSE(ComesBefore(text, TextView(copy).substr(3)));
  EXPECT_TRUE(IsSameText({}, {}));
  EXPECT_FALSE(ComesBefore({}, {}));
}

TEST(CommonPrefix, A_text_ends_in_each_of_its_endings_and_in_nothing_else) {
  const Text text = u"0123456789";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    EXPECT_TRUE(EndsInText(text, TextView(text).substr(length))) << length;
    EXPECT_EQ(EndsInText(text, TextView(text).substr(0, length)), length == 0 || length == 10);
  }
  EXPECT_FALSE(EndsInText(text, u"x0123456789"));
  EXPECT_FALSE(EndsInText({}, u"0"));
  EXPECT_TRUE(EndsInText({}, {}));
}

TEST(CommonPrefix, Both_bytes_of_a_unit_count) {
  EXPECT_EQ(CommonPrefixLength(u"aaaa\u0161", u"aaaa\u0061"), 4u);
  EXPECT_TRUE(ComesBefore(u"aaa\u00FF", u"aaa\u0100"));
  EXPECT_TRUE(ComesBefore(u"aaa\u00FF", u"aaa\uFF00"));
}

}  // namespace
}  // namespace quastel
