#include "path_text.h"

#include <gtest/gtest.h>

namespace quastel::client {
namespace {

TEST(TidyPath, Folds_the_separator_that_follows_a_root) {
  EXPECT_EQ(TidyPath(L"Q:\\\\x"), L"Q:\\x");
  EXPECT_EQ(TidyPath(L"Q:\\a\\\\b"), L"Q:\\a\\b");
  EXPECT_EQ(TidyPath(L"Q:/\\x"), L"Q:/x");
  EXPECT_EQ(TidyPath(L"Q:\\x"), L"Q:\\x");
  EXPECT_EQ(TidyPath(L""), L"");
}

TEST(TidyPath, Keeps_the_beginning_of_network_and_extended_paths) {
  EXPECT_EQ(TidyPath(L"\\\\server\\share\\\\x"), L"\\\\server\\share\\x");
  EXPECT_EQ(TidyPath(L"\\\\?\\Q:\\\\x"), L"\\\\?\\Q:\\x");
}

TEST(WithoutExtendedPrefix, Shows_the_path_that_people_know) {
  EXPECT_EQ(WithoutExtendedPrefix(L"\\\\?\\Q:\\x"), L"Q:\\x");
  EXPECT_EQ(WithoutExtendedPrefix(L"\\\\?\\UNC\\server\\share"), L"\\\\server\\share");
  EXPECT_EQ(WithoutExtendedPrefix(L"\\\\server\\share"), L"\\\\server\\share");
  EXPECT_EQ(WithoutExtendedPrefix(L"Q:\\x"), L"Q:\\x");
}

TEST(FolderOf, Is_the_text_before_the_last_separator) {
  EXPECT_EQ(FolderOf(L"Q:\\a\\b"), L"Q:\\a");
  EXPECT_EQ(FolderOf(L"Q:\\a/b"), L"Q:\\a");
  EXPECT_EQ(FolderOf(L"Q:\\b"), L"Q:");
  EXPECT_EQ(FolderOf(L"b"), L"");
}

}  // namespace
}  // namespace quastel::client
