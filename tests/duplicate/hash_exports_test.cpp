// The three hashing exports: arguments, order of checks, output.

#include <limits>

#include "duplicate/machine.h"
#include "duplicate/textbook_xxh32.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();

class HashExports : public HashingTest {
 protected:
  HashExports() { machine_.AddFile(u"C:\\a", "abc"); }

  // 0x32D153FF, the least significant byte first.
  const std::string abc_ = "ff53d132";
};

TEST_F(HashExports, A_file_gives_its_eight_digits_and_a_NUL) {
  EXPECT_EQ(HashAnswer(u"C:\\a"), Written(abc_, kHashCapacity));
  EXPECT_EQ(AnswerOf(kHashCapacity,
                     [](char* out, std::uint64_t capacity) {
                       return qs_xxhash32_file(u"C:\\a", out, capacity);
                     }),
            Written(abc_, kHashCapacity));
}

TEST_F(HashExports, Bytes_in_memory_give_the_same_text_as_a_file) {
  EXPECT_EQ(AnswerOf(kHashCapacity,
                     [](char* out, std::uint64_t capacity) {
                       return qs_xxhash32_hex("abc", 3, out, capacity);
                     }),
            Written(abc_, kHashCapacity));
}

TEST_F(HashExports, An_empty_file_hashes_to_055dcc02) {
  machine_.AddFile(u"C:\\empty", "");
  EXPECT_EQ(HashAnswer(u"C:\\empty"), Written("055dcc02", kHashCapacity));
}

TEST_F(HashExports, No_bytes_are_valid_with_and_without_a_pointer) {
  for (const void* data : {static_cast<const void*>(nullptr), static_cast<const void*>("x")}) {
    EXPECT_EQ(AnswerOf(kHashCapacity,
                       [&](char* out, std::uint64_t capacity) {
                         return qs_xxhash32_hex(data, 0, out, capacity);
                       }),
              Written("055dcc02", kHashCapacity));
  }
}

TEST_F(HashExports, A_capacity_of_9_is_enough_and_one_of_8_is_not) {
  for (std::uint64_t capacity = 0; capacity <= 12; ++capacity) {
    const TextAnswer expected =
        capacity < 9 ? Untouched(QS_BUFFER_TOO_SMALL, capacity) : Written(abc_, capacity);
    EXPECT_EQ(
        AnswerOf(capacity,
                 [](char* out, std::uint64_t n) { return qs_xxhash32_file(u"C:\\a", out, n); }),
        expected);
    EXPECT_EQ(AnswerOf(capacity,
                       [](char* out, std::uint64_t n) {
                         return qs_xxhash32_file_cancelable(u"C:\\a", out, n, nullptr);
                       }),
              expected);
    EXPECT_EQ(AnswerOf(capacity, [](char* out,
                                    std::uint64_t n) { return qs_xxhash32_hex("abc", 3, out, n); }),
              expected);
  }
}

TEST_F(HashExports, A_missing_output_is_too_small_whatever_its_capacity) {
  for (const std::uint64_t capacity : {std::uint64_t{0}, std::uint64_t{9}, kHuge}) {
    EXPECT_EQ(qs_xxhash32_file(u"C:\\a", nullptr, capacity), QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(qs_xxhash32_file_cancelable(u"C:\\a", nullptr, capacity, nullptr),
              QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(qs_xxhash32_hex("abc", 3, nullptr, capacity), QS_BUFFER_TOO_SMALL);
  }
}

TEST_F(HashExports, A_missing_path_is_invalid_also_with_a_buffer_that_is_too_small) {
  for (const std::uint64_t capacity : {0u, 8u, 9u}) {
    EXPECT_EQ(AnswerOf(capacity, [](char* out,
                                    std::uint64_t n) { return qs_xxhash32_file(nullptr, out, n); }),
              Untouched(QS_INVALID_ARGUMENT, capacity));
    EXPECT_EQ(AnswerOf(capacity,
                       [](char* out, std::uint64_t n) {
                         return qs_xxhash32_file_cancelable(nullptr, out, n, nullptr);
                       }),
              Untouched(QS_INVALID_ARGUMENT, capacity));
  }
  EXPECT_EQ(qs_xxhash32_file(nullptr, nullptr, 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_xxhash32_file_cancelable(nullptr, nullptr, 0, nullptr), QS_INVALID_ARGUMENT);
}

TEST_F(HashExports, Missing_bytes_are_invalid_but_the_output_is_looked_at_first) {
  EXPECT_EQ(
      AnswerOf(9, [](char* out, std::uint64_t n) { return qs_xxhash32_hex(nullptr, 1, out, n); }),
      Untouched(QS_INVALID_ARGUMENT, 9));
  EXPECT_EQ(AnswerOf(9, [](char* out,
                           std::uint64_t n) { return qs_xxhash32_hex(nullptr, kHuge, out, n); }),
            Untouched(QS_INVALID_ARGUMENT, 9));
  EXPECT_EQ(
      AnswerOf(8, [](char* out, std::uint64_t n) { return qs_xxhash32_hex(nullptr, 1, out, n); }),
      Untouched(QS_BUFFER_TOO_SMALL, 8));
  EXPECT_EQ(qs_xxhash32_hex(nullptr, 1, nullptr, 9), QS_BUFFER_TOO_SMALL);
}

TEST_F(HashExports, Arguments_are_checked_before_the_file_is_opened_and_before_the_cancel_flag) {
  Record();
  std::uint32_t cancel = 1;
  char out[9] = {};
  EXPECT_EQ(qs_xxhash32_file_cancelable(nullptr, out, 9, &cancel), QS_INVALID_ARGUMENT);
  EXPECT_EQ(qs_xxhash32_file_cancelable(u"C:\\a", nullptr, 9, &cancel), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(qs_xxhash32_file_cancelable(u"C:\\a", out, 8, &cancel), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(qs_xxhash32_file_cancelable(u"C:\\missing", out, 8, &cancel), QS_BUFFER_TOO_SMALL);
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(HashExports, Hashing_memory_asks_the_system_for_nothing) {
  Record();
  const std::string data = Pattern(100'000);
  EXPECT_EQ(AnswerOf(9,
                     [&](char* out, std::uint64_t n) {
                       return qs_xxhash32_hex(data.data(), data.size(), out, n);
                     }),
            Written(TextbookText(data), 9));
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(HashExports, An_empty_path_cannot_be_opened) {
  EXPECT_EQ(HashAnswer(u""), Untouched(QS_FAILED, kHashCapacity));
}

}  // namespace
}  // namespace quastel::duplicate_tests
