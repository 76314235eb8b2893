#include "script_json.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace quastel::client {
namespace {

TEST(ScriptJson, Nothing_ends_the_element_or_begins_a_comment_in_it) {
  const std::string text =
      JsonForScript(Json::List("</script><script>", "<!-- <script", "]]>", "&amp;"));
  EXPECT_EQ(text.find_first_of("<>&"), std::string::npos) << text;
  EXPECT_EQ(nlohmann::json::parse(text),
            nlohmann::json::array({"</script><script>", "<!-- <script", "]]>", "&amp;"}));
}

TEST(ScriptJson, Separators_of_lines_are_escaped) {
  // Their neighbours are not.
  const std::string text = JsonForScript(Json::List("a\u2028b\u2029", "\u2027 \u202A"));
  EXPECT_EQ(text, "[\"a\\u2028b\\u2029\",\"\u2027 \u202A\"]");
  EXPECT_EQ(nlohmann::json::parse(text),
            nlohmann::json::array({"a\u2028b\u2029", "\u2027 \u202A"}));
}

TEST(ScriptJson, Control_characters_and_quotation_marks_are_escaped) {
  EXPECT_EQ(JsonForScript(Json::List("\x01\n\"\\")), R"(["\u0001\n\"\\"])");
}

}  // namespace
}  // namespace quastel::client
