#include <gtest/gtest.h>

#include <string>

#include "quastel_core.h"
#include "real_tree.h"
#include "text_query.h"

namespace quastel::dll_test {
namespace {

std::wstring Normalize(const std::wstring& path) {
  return QueryText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_normalize_path(path.c_str(), out, capacity, needed);
  });
}

std::wstring Combine(const wchar_t* base, const wchar_t* relative) {
  return QueryText([&](qs_char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_path_combine(base, relative, out, capacity, needed);
  });
}

TEST(Paths, A_short_path_stays_as_it_is) {
  EXPECT_EQ(L"C:/a\\..\\b\\", Normalize(L"C:/a\\..\\b\\"));
  EXPECT_EQ(L"", Normalize(L""));
}

TEST(Paths, The_long_form_begins_at_248_units) {
  const std::wstring below = L"C:\\" + std::wstring(244, L'a');
  ASSERT_EQ(247u, below.size());
  EXPECT_EQ(below, Normalize(below));
  EXPECT_EQ(L"\\\\?\\" + below + L"a", Normalize(below + L"a"));
}

TEST(Paths, The_long_form_is_absolute_without_dots) {
  const std::wstring tail(250, L'b');
  EXPECT_EQ(L"\\\\?\\C:\\" + tail, Normalize(L"C:/x/../" + tail));
  EXPECT_EQ(L"\\\\?\\UNC\\srv\\share\\" + tail, Normalize(L"\\\\srv\\share\\" + tail));
}

TEST(Paths, A_buffer_of_the_exact_size_is_enough_and_one_less_stays_untouched) {
  std::uint64_t needed = 0;
  wchar_t buffer[8] = L"???????";
  EXPECT_EQ(QS_BUFFER_TOO_SMALL, qs_normalize_path(L"C:\\ab", buffer, 5, &needed));
  EXPECT_EQ(6u, needed);
  EXPECT_STREQ(L"???????", buffer);
  EXPECT_EQ(QS_OK, qs_normalize_path(L"C:\\ab", buffer, 6, nullptr));
  EXPECT_STREQ(L"C:\\ab", buffer);
}

TEST(Paths, A_null_path_is_an_invalid_argument) {
  wchar_t buffer[8];
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_normalize_path(nullptr, buffer, 8, nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_path_combine(nullptr, L"a", buffer, 8, nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_path_combine(L"a", nullptr, buffer, 8, nullptr));
}

TEST(Paths, Combining_puts_one_separator_between) {
  EXPECT_EQ(L"C:\\a\\b", Combine(L"C:\\a/", L"b"));
  EXPECT_EQ(L"C:\\x", Combine(L"C:\\", L"x"));
  EXPECT_EQ(L"b", Combine(L"", L"b"));
  EXPECT_EQ(L"C:\\dir\\", Combine(L"C:\\dir\\", L""));
}

TEST(Paths, Combining_with_an_absolute_path_gives_that_path) {
  EXPECT_EQ(L"\\\\b", Combine(L"C:\\a", L"\\\\b"));
  EXPECT_EQ(L"D:x", Combine(L"C:\\a", L"D:x"));
  EXPECT_EQ(L"/x", Combine(L"C:\\a", L"/x"));
}

TEST(Paths, Containing_is_an_exact_substring) {
  EXPECT_EQ(1, qs_path_contains(L"C:\\Temp\\x", L"Temp"));
  EXPECT_EQ(0, qs_path_contains(L"C:\\Temp\\x", L"temp"));
  EXPECT_EQ(1, qs_path_contains(L"C:\\Temp\\x", nullptr));
  EXPECT_EQ(0, qs_path_contains(nullptr, L"temp"));
}

TEST(Paths, The_same_folder_in_another_spelling_is_the_same) {
  EXPECT_EQ(1, qs_is_in_same_directory(L"C:\\A\\x.txt", L"c:/a/y.txt"));
  EXPECT_EQ(1, qs_is_in_same_directory(L"C:\\x", L"C:\\"));
  EXPECT_EQ(0, qs_is_in_same_directory(L"C:\\a\\x", L"C:\\b\\x"));
}

TEST(Paths, Only_a_real_folder_exists_as_a_directory) {
  const RealTree tree;
  tree.AddFile(L"file.txt", "x");
  EXPECT_EQ(1, qs_directory_exists(tree.root().c_str()));
  EXPECT_EQ(1, qs_directory_exists(L"C:\\"));
  EXPECT_EQ(0, qs_directory_exists(tree.Path(L"file.txt").c_str()));
  EXPECT_EQ(0, qs_directory_exists(tree.Path(L"missing").c_str()));
  EXPECT_EQ(0, qs_directory_exists(nullptr));
}

TEST(Paths, A_link_to_a_folder_does_not_exist_as_a_directory) {
  const RealTree scratch;
  const std::wstring tree = LinkedTree(scratch);
  EXPECT_EQ(1, qs_directory_exists((tree + L"\\real").c_str()));
  EXPECT_EQ(0, qs_directory_exists((tree + L"\\link").c_str()));
}

}  // namespace
}  // namespace quastel::dll_test
