#include "script_json.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

TEST(ScriptJson, Nothing_ends_the_element_or_begins_a_comment_in_it) {
  const Json value = {"</script><script>", "<!-- <script", "]]>", "&amp;"};
  const std::string text = JsonForScript(value);
  EXPECT_EQ(text.find_first_of("<>&"), std::string::npos) << text;
  EXPECT_EQ(Json::parse(text), value);
}

TEST(ScriptJson, Separators_of_lines_are_escaped) {
  // Their neighbours are not.
  const Json value = {"a\u2028b\u2029", "\u2027 \u202A"};
  const std::string text = JsonForScript(value);
  EXPECT_EQ(text, "[\"a\\u2028b\\u2029\",\"\u2027 \u202A\"]");
  EXPECT_EQ(Json::parse(text), value);
}

TEST(ScriptJson, Control_characters_and_quotation_marks_are_escaped) {
  const Json value = {std::string("\x01\n\"\\", 4)};
  EXPECT_EQ(JsonForScript(value), R"(["\u0001\n\"\\"])");
}

}  // namespace
}  // namespace quastel::client
