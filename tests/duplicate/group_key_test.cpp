// The two keys that files are grouped by.

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "duplicate/machine.h"
#include "duplicate/sample.h"
#include "faults/allocation_faults.h"

namespace quastel::duplicate_tests {
namespace {

using faults::AllocationFaults;

constexpr std::uint64_t kUnset = 0xABABABABABABABAB;
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

// Asks for a key in every way that a caller may; `call` takes output, capacity and needed.
template <typename Call>
void ExpectKey(const std::string& key, Call&& call) {
  const std::uint64_t needed = key.size() + 1;
  for (std::uint64_t capacity = 0; capacity < needed + 3; ++capacity) {
    if (capacity > 3 && capacity + 3 < needed) {
      continue;
    }
    const TextAnswer expected =
        capacity < needed ? Untouched(QS_BUFFER_TOO_SMALL, capacity) : Written(key, capacity);
    std::uint64_t length = kUnset;
    EXPECT_EQ(AnswerOf(capacity, [&](char* out, std::uint64_t n) { return call(out, n, &length); }),
              expected);
    EXPECT_EQ(length, needed) << capacity;
    EXPECT_EQ(AnswerOf(capacity, [&](char* out, std::uint64_t n) { return call(out, n, nullptr); }),
              expected);
  }
  for (const std::uint64_t capacity :
       {std::uint64_t{0}, needed, std::numeric_limits<std::uint64_t>::max()}) {
    std::uint64_t length = kUnset;
    EXPECT_EQ(call(nullptr, capacity, &length), QS_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, needed);
    EXPECT_EQ(call(nullptr, capacity, nullptr), QS_BUFFER_TOO_SMALL);
  }
}

void ExpectSampleKey(std::int64_t size, const std::string& sample, const std::string& key) {
  SCOPED_TRACE(key);
  EXPECT_EQ(duplicate::SampleGroupKey(size, sample), key);
  ExpectKey(key, [&](char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_duplicate_sample_group_key(size, sample.c_str(), out, capacity, needed);
  });
}

void ExpectHashKey(const std::string& sample_key, const std::string& hash, const std::string& key) {
  SCOPED_TRACE(key);
  EXPECT_EQ(duplicate::HashGroupKey(sample_key, hash), key);
  ExpectKey(key, [&](char* out, std::uint64_t capacity, std::uint64_t* needed) {
    return qs_duplicate_hash_group_key(sample_key.c_str(), hash.c_str(), out, capacity, needed);
  });
}

TEST(SampleGroupKey, Joins_size_and_sample_by_a_space) {
  ExpectSampleKey(4096, "S", "4096 S");
  ExpectSampleKey(0, "055dcc02", "0 055dcc02");
  ExpectSampleKey(151, "055dcc02|055dcc02", "151 055dcc02|055dcc02");
}

TEST(SampleGroupKey, Size_minus_7_and_sample_ab_need_6_characters) {
  ExpectSampleKey(-7, "ab", "-7 ab");
  std::uint64_t needed = 0;
  char out[6] = {};
  EXPECT_EQ(qs_duplicate_sample_group_key(-7, "ab", out, 6, &needed), QS_OK);
  EXPECT_STREQ(out, "-7 ab");
  EXPECT_EQ(needed, 6u);
}

TEST(SampleGroupKey, The_extreme_sizes) {
  ExpectSampleKey(kLargest, "x", "9223372036854775807 x");
  ExpectSampleKey(kSmallest, "x", "-9223372036854775808 x");
}

TEST(SampleGroupKey, An_empty_sample_leaves_the_space) {
  ExpectSampleKey(5, "", "5 ");
}

TEST(SampleGroupKey, The_longest_one_fits_into_384_characters) {
  const std::string sample(300, 'f');
  ExpectSampleKey(kSmallest, sample, "-9223372036854775808 " + sample);
  std::uint64_t needed = 0;
  char out[384];
  EXPECT_EQ(qs_duplicate_sample_group_key(kSmallest, sample.c_str(), out, sizeof out, &needed),
            QS_OK);
  EXPECT_EQ(needed, 322u);
}

TEST(SampleGroupKey, A_missing_sample_is_invalid_whatever_the_output) {
  for (const std::uint64_t capacity : {0u, 100u}) {
    std::uint64_t needed = kUnset;
    EXPECT_EQ(AnswerOf(capacity,
                       [&](char* out, std::uint64_t n) {
                         return qs_duplicate_sample_group_key(1, nullptr, out, n, &needed);
                       }),
              Untouched(QS_INVALID_ARGUMENT, capacity));
    EXPECT_EQ(needed, kUnset);
  }
  EXPECT_EQ(qs_duplicate_sample_group_key(1, nullptr, nullptr, 0, nullptr), QS_INVALID_ARGUMENT);
}

TEST(HashGroupKey, Joins_sample_key_and_hash_by_a_space) {
  ExpectHashKey("4096 S", "055dcc02", "4096 S 055dcc02");
}

TEST(HashGroupKey, Empty_texts_leave_the_space) {
  ExpectHashKey("", "", " ");
  ExpectHashKey("4096 S", "", "4096 S ");
  ExpectHashKey("", "055dcc02", " 055dcc02");
}

TEST(HashGroupKey, The_longest_one_fits_into_512_characters) {
  const std::string sample_key = duplicate::SampleGroupKey(kSmallest, std::string(300, 'f'));
  std::uint64_t needed = 0;
  char out[512];
  EXPECT_EQ(qs_duplicate_hash_group_key(sample_key.c_str(), "055dcc02", out, sizeof out, &needed),
            QS_OK);
  EXPECT_EQ(needed, 331u);
  EXPECT_EQ(out, sample_key + " 055dcc02");
}

TEST(HashGroupKey, A_missing_text_is_invalid_whatever_the_output) {
  for (const auto& [key, hash] : std::vector<std::pair<const char*, const char*>>{
           {nullptr, "h"}, {"k", nullptr}, {nullptr, nullptr}}) {
    for (const std::uint64_t capacity : {0u, 100u}) {
      std::uint64_t needed = kUnset;
      EXPECT_EQ(AnswerOf(capacity,
                         [&, key = key, hash = hash](char* out, std::uint64_t n) {
                           return qs_duplicate_hash_group_key(key, hash, out, n, &needed);
                         }),
                Untouched(QS_INVALID_ARGUMENT, capacity));
      EXPECT_EQ(needed, kUnset);
    }
    EXPECT_EQ(qs_duplicate_hash_group_key(key, hash, nullptr, 0, nullptr), QS_INVALID_ARGUMENT);
  }
}

TEST(GroupKeys, Longer_texts_than_the_scan_has_are_keyed_whole) {
  const std::string sample(5000, 'a');
  ExpectSampleKey(1, sample, "1 " + sample);
  ExpectHashKey(sample, sample, sample + " " + sample);
}

TEST(GroupKeys, No_memory_is_status_3_and_stores_nothing) {
  const std::string sample(300, 'f');
  for (const bool hash_key : {false, true}) {
    bool ended = false;
    for (std::uint64_t nth = 1; nth < 50 && !ended; ++nth) {
      char out[512] = {'#'};
      std::uint64_t needed = kUnset;
      qs_status status = QS_OK;
      {
        const AllocationFaults fault(nth, Repeat::kOnce);
        status = hash_key ? qs_duplicate_hash_group_key(sample.c_str(), "h", out, 512, &needed)
                          : qs_duplicate_sample_group_key(7, sample.c_str(), out, 512, &needed);
        ended = fault.injected() == 0;
      }
      EXPECT_EQ(status, ended ? QS_OK : QS_FAILED) << nth;
      EXPECT_EQ(out[0] == '#', !ended) << nth;
      EXPECT_EQ(needed == kUnset, !ended) << nth;
    }
    EXPECT_TRUE(ended);
  }
}

TEST(GroupKeys, A_caller_s_own_keys_are_those_of_the_scan) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\a", "ten bytes!");
  char sample[301];
  char hash[9];
  char sample_key[384];
  char hash_key[512];
  ASSERT_EQ(qs_duplicate_sample_hex(u"C:\\a", 10, sample, sizeof sample), QS_OK);
  ASSERT_EQ(qs_xxhash32_file(u"C:\\a", hash, sizeof hash), QS_OK);
  ASSERT_EQ(qs_duplicate_sample_group_key(10, sample, sample_key, sizeof sample_key, nullptr),
            QS_OK);
  ASSERT_EQ(qs_duplicate_hash_group_key(sample_key, hash, hash_key, sizeof hash_key, nullptr),
            QS_OK);
  EXPECT_EQ(hash_key, duplicate::HashGroupKey(duplicate::SampleGroupKey(10, sample), hash));
  EXPECT_EQ(std::string(hash_key).substr(0, 24), "10 74656e20627974657321" + std::string("0"));
}

}  // namespace
}  // namespace quastel::duplicate_tests
