#include "nearest_word.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

const std::vector<std::string> kCommands = {"large", "duplicates", "junk", "version"};

TEST(NearestWord, Finds_what_a_typing_mistake_meant) {
  EXPECT_EQ(NearestWord("larg", kCommands), "large");
  EXPECT_EQ(NearestWord("vresion", kCommands), "version");
  EXPECT_EQ(NearestWord("dupplicate", kCommands), "duplicates");
}

TEST(NearestWord, Finds_what_a_beginning_meant) {
  EXPECT_EQ(NearestWord("dup", kCommands), "duplicates");
}

TEST(NearestWord, Finds_nothing_in_another_word) {
  EXPECT_EQ(NearestWord("bogus", kCommands), "");
  EXPECT_EQ(NearestWord("", kCommands), "");
  EXPECT_EQ(NearestWord("x", kCommands), "");
}

}  // namespace
}  // namespace quastel::client
