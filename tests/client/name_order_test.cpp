#include "name_order.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

TEST(IsPathBefore, Does_not_look_at_case_unless_all_else_is_equal) {
  EXPECT_TRUE(IsPathBefore(L"Q:\\a", L"Q:\\B"));
  EXPECT_FALSE(IsPathBefore(L"Q:\\B", L"Q:\\a"));
  EXPECT_TRUE(IsPathBefore(L"Q:\\A", L"Q:\\a"));
  EXPECT_FALSE(IsPathBefore(L"Q:\\a", L"Q:\\A"));
  EXPECT_FALSE(IsPathBefore(L"Q:\\a", L"Q:\\a"));
}

TEST(IsPathBefore, Puts_long_paths_where_people_look_for_them) {
  EXPECT_TRUE(IsPathBefore(L"\\\\?\\Q:\\a", L"Q:\\b"));
  EXPECT_TRUE(IsPathBefore(L"Q:\\a", L"\\\\?\\Q:\\b"));
  EXPECT_TRUE(IsPathBefore(L"\\\\?\\UNC\\server\\share\\a", L"\\\\server\\share\\b"));
  EXPECT_FALSE(IsPathBefore(L"\\\\?\\UNC\\server\\share\\b", L"\\\\server\\share\\a"));
}

}  // namespace
}  // namespace quastel::client
