#include "wrap_help.h"

#include <gtest/gtest.h>

#include <string>

namespace quastel::client {
namespace {

TEST(WrapHelp, Keeps_what_fits) {
  EXPECT_EQ(WrapHelp("Usage: quastel\n\nOptions:\n", 80), "Usage: quastel\n\nOptions:\n");
  EXPECT_EQ(WrapHelp("twelve chars", 12), "twelve chars\n");
  EXPECT_EQ(WrapHelp("", 80), "");
}

TEST(WrapHelp, Goes_on_below_the_beginning_of_an_explanation) {
  const std::string room(kExplanationColumn, ' ');
  EXPECT_EQ(WrapHelp("  --html FILE                 Also make a page for a browser\n", 46),
            "  --html FILE                 Also make a page\n" + room + "for a browser\n");
  EXPECT_EQ(WrapHelp(room + "Also make a page for a browser\n", 46),
            room + "Also make a page\n" + room + "for a browser\n");
  // One blank is left between a name of 29 columns and its explanation.
  EXPECT_EQ(WrapHelp("  --from REPORT.json REQUIRED A report of large files\n", 44),
            "  --from REPORT.json REQUIRED A report of\n" + room + "large files\n");
}

TEST(WrapHelp, Gives_up_the_column_in_a_window_that_is_too_narrow) {
  EXPECT_EQ(WrapHelp("  --top N                     List only the first N rows\n", 36),
            "  --top N                     List\n         only the first N rows\n");
}

TEST(WrapHelp, Breaks_other_lines_at_their_own_indent) {
  EXPECT_EQ(WrapHelp("one two three four", 9), "one two\nthree\nfour\n");
  EXPECT_EQ(WrapHelp("  one two three", 9), "  one two\n  three\n");
}

TEST(WrapHelp, Leaves_a_word_whole_that_is_longer_than_a_line) {
  EXPECT_EQ(WrapHelp("a incomprehensibilities b", 10), "a\nincomprehensibilities\nb\n");
}

TEST(WrapHelp, Leaves_examples_whole) {
  EXPECT_EQ(WrapHelp("  quastel large D:\\ --top 20\n", 12), "  quastel large D:\\ --top 20\n");
}

TEST(WrapHelp, Leaves_one_of_several_blank_lines) {
  EXPECT_EQ(WrapHelp("a\n\n\n\nb\n\nc\n", 80), "a\n\nb\n\nc\n");
}

TEST(WrapHelp, Ends_at_any_width) {
  for (std::size_t width = 0; width < 5; ++width) {
    EXPECT_NE(WrapHelp("  --top N                     List only the first N rows\n", width), "");
  }
}

}  // namespace
}  // namespace quastel::client
