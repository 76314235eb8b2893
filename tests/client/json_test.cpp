#include "json.h"

#include <gtest/gtest.h>

#include <limits>

namespace quastel::client {
namespace {

TEST(Json, Members_keep_the_order_in_which_they_were_set_first) {
  Json json;
  json.Set("b", 1);
  json.Set("a", 2);
  json.Set("b", 3);
  EXPECT_EQ(json.Text(), R"({"b":3,"a":2})");
}

TEST(Json, A_member_that_was_removed_is_gone) {
  Json json;
  json.Set("a", 1);
  json.Set("b", 2);
  json.Remove("a");
  EXPECT_EQ(json.Text(), R"({"b":2})");
}

TEST(Json, Each_type_is_written_as_what_it_is) {
  EXPECT_EQ(Json().Text(), "null");
  EXPECT_EQ(Json(nullptr).Text(), "null");
  EXPECT_EQ(Json(true).Text(), "true");
  EXPECT_EQ(Json(-1).Text(), "-1");
  EXPECT_EQ(Json(7u).Text(), "7");
  EXPECT_EQ(Json("x").Text(), R"("x")");
  EXPECT_EQ(Json(std::string("\"\\\n\x01\x7F")).Text(), "\"\\\"\\\\\\n\\u0001\x7F\"");
}

TEST(Json, Numbers_of_64_bits_stay_exact) {
  EXPECT_EQ(Json(std::numeric_limits<std::uint64_t>::max()).Text(), "18446744073709551615");
  EXPECT_EQ(Json(std::numeric_limits<std::int64_t>::min()).Text(), "-9223372036854775808");
}

TEST(Json, A_list_holds_what_was_given_and_what_was_appended) {
  Json list = Json::List("a", Json::List(), Json());
  list.Append(1);
  list.AppendAllOf(Json::List(2, 3));
  EXPECT_EQ(list.Text(), R"(["a",[],null,1,2,3])");
}

TEST(Json, A_copy_is_a_value_of_its_own) {
  const Json list = Json::List(1);
  Json copy = list;
  copy.Append(2);
  EXPECT_EQ(list.Text(), "[1]");
  copy = list;
  EXPECT_EQ(copy.Text(), "[1]");
}

TEST(Json, Is_indented_by_two_spaces) {
  Json json;
  json.Set("list", Json::List(1, 2));
  json.Set("empty", Json::List());
  EXPECT_EQ(json.IndentedText(), "{\n  \"list\": [\n    1,\n    2\n  ],\n  \"empty\": []\n}");
}

}  // namespace
}  // namespace quastel::client
