#include "base/text.h"

#include <gtest/gtest.h>

#include "support/text.h"

namespace quastel {
namespace {

using support::Utf8;

TEST(Text, A_null_pointer_reads_as_the_empty_text) {
  EXPECT_EQ(ViewOf(nullptr).size(), 0u);
}

TEST(Text, A_view_ends_at_the_terminator) {
  const Char buffer[] = {Char{'a'}, Char{'b'}, 0, Char{'c'}, 0};
  EXPECT_EQ(Utf8(ViewOf(buffer)), "ab");
  EXPECT_EQ(ViewOf(QS_TEXT("")).size(), 0u);
}

TEST(Text, A_view_refers_to_the_caller_s_units) {
  const Char buffer[] = {Char{'a'}, 0};
  EXPECT_EQ(ViewOf(buffer).data(), buffer);
}

TEST(Text, The_literal_macro_spells_ASCII_in_the_library_s_units) {
  const TextView literal = QS_TEXT("C:\\");
  ASSERT_EQ(literal.size(), 3u);
  EXPECT_EQ(literal[0], Char{'C'});
  EXPECT_EQ(literal[2], Char{'\\'});
}

TEST(PrintedText, Different_texts_never_print_alike) {
  EXPECT_EQ(Utf8(u"a\u00E4\u20AC\U0001F600"), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  const Char lone_high[] = {0xD83D, Char{'x'}, 0};
  EXPECT_EQ(Utf8(lone_high), "<d83d>x");
  const Char lone_low[] = {0xDE00, 0};
  EXPECT_EQ(Utf8(lone_low), "<de00>");
}

TEST(PrintedText, A_nested_path_has_the_asked_length_and_no_separator_at_its_end) {
  for (std::size_t length = 5; length < 700; ++length) {
    const Text path = support::NestedTo(length, u"C:");
    ASSERT_EQ(path.size(), length);
    ASSERT_NE(path.back(), Char{'\\'}) << length;
  }
}

}  // namespace
}  // namespace quastel
