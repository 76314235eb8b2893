#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "quastel_core.h"
#include "real_tree.h"

namespace quastel::dll_test {
namespace {

std::string HashOf(const std::string& bytes) {
  char text[9] = {};
  EXPECT_EQ(QS_OK, qs_xxhash32_hex(bytes.data(), bytes.size(), text, sizeof(text)));
  return text;
}

TEST(Hash, The_empty_input_has_its_known_digits_least_significant_byte_first) {
  EXPECT_EQ("055dcc02", HashOf(""));
  char text[9] = {};
  EXPECT_EQ(QS_OK, qs_xxhash32_hex(nullptr, 0, text, sizeof(text)));
  EXPECT_STREQ("055dcc02", text);
}

TEST(Hash, A_file_hashes_as_its_bytes_do_across_the_reads) {
  const RealTree tree;
  std::string content(1'048'576 + 7, '\0');
  for (std::size_t i = 0; i < content.size(); ++i) {
    content[i] = static_cast<char>(i * 31 + i / 251);
  }
  tree.AddFile(L"file.bin", content);
  char text[9] = {};
  ASSERT_EQ(QS_OK, qs_xxhash32_file(tree.Path(L"file.bin").c_str(), text, sizeof(text)));
  EXPECT_EQ(HashOf(content), text);
}

TEST(Hash, A_flag_that_is_set_at_entry_cancels_without_a_result) {
  const RealTree tree;
  tree.AddFile(L"file.txt", "x");
  char text[9] = "12345678";
  std::uint32_t cancel = 7;
  EXPECT_EQ(QS_CANCELLED, qs_xxhash32_file_cancelable(tree.Path(L"file.txt").c_str(), text,
                                                      sizeof(text), &cancel));
  EXPECT_STREQ("12345678", text);
  EXPECT_EQ(7u, cancel);
}

TEST(Hash, Missing_files_and_missing_arguments_have_their_own_statuses) {
  const RealTree tree;
  char text[9] = "12345678";
  EXPECT_EQ(QS_FAILED, qs_xxhash32_file(tree.Path(L"no").c_str(), text, sizeof(text)));
  EXPECT_EQ(QS_FAILED, qs_xxhash32_file(tree.root().c_str(), text, sizeof(text)));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_xxhash32_file(nullptr, nullptr, 0));
  EXPECT_EQ(QS_BUFFER_TOO_SMALL, qs_xxhash32_file(L"x", text, 8));
  EXPECT_EQ(QS_BUFFER_TOO_SMALL, qs_xxhash32_hex(nullptr, 1, text, 8));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_xxhash32_hex(nullptr, 1, text, 9));
  EXPECT_STREQ("12345678", text);
}

TEST(Sample, It_holds_the_start_the_middle_and_the_end) {
  const RealTree tree;
  std::string content(1000, '.');
  content.replace(0, 50, 50, 'a');
  content.replace(475, 50, 50, 'b');
  content.replace(950, 50, 50, 'c');
  tree.AddFile(L"file.bin", content);
  char text[301] = {};
  ASSERT_EQ(QS_OK, qs_duplicate_sample_hex(tree.Path(L"file.bin").c_str(), 1000, text, 301));
  std::string expected;
  for (const char* digits : {"61", "62", "63"}) {
    for (int i = 0; i < 50; ++i) {
      expected += digits;
    }
  }
  EXPECT_EQ(expected, text);
}

TEST(Sample, Keys_join_their_parts_with_single_spaces) {
  char key[64] = {};
  std::uint64_t needed = 0;
  ASSERT_EQ(QS_OK, qs_duplicate_sample_group_key(-7, "ab", key, sizeof(key), &needed));
  EXPECT_STREQ("-7 ab", key);
  EXPECT_EQ(6u, needed);
  ASSERT_EQ(QS_OK, qs_duplicate_hash_group_key("4096 ab", "055dcc02", key, sizeof(key), nullptr));
  EXPECT_STREQ("4096 ab 055dcc02", key);
}

}  // namespace
}  // namespace quastel::dll_test
