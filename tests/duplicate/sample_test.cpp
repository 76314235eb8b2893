#include "duplicate/sample.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "duplicate/machine.h"
#include "duplicate/open_record.h"
#include "faults/allocation_faults.h"
#include "platform/file_system.h"

namespace quastel::duplicate_tests {
namespace {

using faults::AllocationFaults;
using Lines = std::vector<std::string>;

constexpr std::uint64_t kCapacity = 301;
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();

// 300 digits for up to 150 bytes, zeros for those that are missing.
std::string Digits(std::string bytes) {
  bytes.resize(150, '\0');
  std::string out;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    out += "0123456789abcdef"[byte >> 4];
    out += "0123456789abcdef"[byte & 15];
  }
  return out;
}

// 50 bytes of the content from `begin` on, as far as it goes, then zeros.
std::string Slot(const std::string& content, std::uint64_t begin) {
  std::string slot = begin < content.size() ? content.substr(begin, 50) : std::string();
  slot.resize(50, '\0');
  return slot;
}

// The sample of a content for a size that somebody gave.
std::string SampleOf(const std::string& content, std::int64_t size) {
  if (size <= 150) {
    return Digits(content.substr(0, 150));
  }
  const auto given = static_cast<std::uint64_t>(size);
  return Digits(Slot(content, 0) + Slot(content, given / 2 - 25) + Slot(content, given - 50));
}

TextAnswer SampleAnswer(const Text& path, std::int64_t size, std::uint64_t capacity = kCapacity) {
  return AnswerOf(capacity, [&](char* out, std::uint64_t n) {
    return qs_duplicate_sample_hex(path.c_str(), size, out, n);
  });
}

class Sample : public HashingTest {
 protected:
  void AddPattern(std::uint64_t size) {
    content_ = Pattern(size, 1);
    machine_.AddFile(u"C:\\file", content_);
  }
  TextAnswer Expected(std::int64_t size) const {
    return Written(SampleOf(content_, size), kCapacity);
  }

  std::string content_;
};

TEST_F(Sample, A_file_of_150_bytes_is_read_whole_in_one_read) {
  AddPattern(150);
  Record();
  EXPECT_EQ(SampleAnswer(u"C:\\file", 150), Written(Digits(content_), kCapacity));
  const Lines calls = {"OpenFile C:\\file", "SeekTo 0", "ReadFrom 150", "CloseFile"};
  EXPECT_EQ(CallsIn(machine_), calls);
}

TEST_F(Sample, A_file_of_151_bytes_is_sampled_in_three_parts_the_middle_one_from_50) {
  AddPattern(151);
  Record();
  EXPECT_EQ(
      SampleAnswer(u"C:\\file", 151),
      Written(Digits(content_.substr(0, 50) + content_.substr(50, 50) + content_.substr(101, 50)),
              kCapacity));
  const Lines calls = {"OpenFile C:\\file", "SeekTo 0",   "ReadFrom 50", "SeekTo 50",
                       "ReadFrom 50",       "SeekTo 101", "ReadFrom 50", "CloseFile"};
  EXPECT_EQ(CallsIn(machine_), calls);
}

TEST_F(Sample, Of_every_size_is_the_model_s) {
  for (const std::uint64_t size :
       {0u,   1u,   2u,   49u,  50u,  51u,  75u,  99u,   100u,    149u,
        150u, 151u, 152u, 153u, 199u, 200u, 201u, 4096u, 10'001u, 1'048'577u}) {
    AddPattern(size);
    const auto given = static_cast<std::int64_t>(size);
    EXPECT_EQ(SampleAnswer(u"C:\\file", given), Expected(given)) << size;
  }
}

TEST_F(Sample, Half_of_an_odd_size_is_rounded_down) {
  AddPattern(2001);
  Record();
  EXPECT_EQ(SampleAnswer(u"C:\\file", 2001), Expected(2001));
  const Lines calls = {"OpenFile C:\\file", "SeekTo 0",    "ReadFrom 50", "SeekTo 975",
                       "ReadFrom 50",       "SeekTo 1951", "ReadFrom 50", "CloseFile"};
  EXPECT_EQ(CallsIn(machine_), calls);
}

TEST_F(Sample, An_empty_file_gives_300_zeros) {
  machine_.AddFile(u"C:\\file", "");
  EXPECT_EQ(SampleAnswer(u"C:\\file", 0), Written(std::string(300, '0'), kCapacity));
}

TEST_F(Sample, A_size_of_0_still_reads_what_the_file_has) {
  machine_.AddFile(u"C:\\file", "ten bytes!");
  Record();
  EXPECT_EQ(SampleAnswer(u"C:\\file", 0),
            Written("74656e20627974657321" + std::string(280, '0'), kCapacity));
  const Lines calls = {"OpenFile C:\\file", "SeekTo 0", "ReadFrom 150", "CloseFile"};
  EXPECT_EQ(CallsIn(machine_), calls);
}

TEST_F(Sample, A_small_size_reads_150_bytes_of_a_larger_file) {
  AddPattern(1000);
  for (const std::int64_t size : {0, 1, 149, 150}) {
    EXPECT_EQ(SampleAnswer(u"C:\\file", size), Expected(size)) << size;
    EXPECT_EQ(Expected(size), Written(Digits(content_.substr(0, 150)), kCapacity));
  }
}

TEST_F(Sample, A_file_that_shrank_gives_short_reads_and_zeros) {
  for (const std::uint64_t there : {0u, 1u, 30u, 50u, 60u, 480u, 500u, 951u, 999u}) {
    AddPattern(there);
    EXPECT_EQ(SampleAnswer(u"C:\\file", 1000), Expected(1000)) << there;
  }
  AddPattern(100);
  EXPECT_EQ(SampleAnswer(u"C:\\file", 150), Expected(150));
}

TEST_F(Sample, A_file_that_shrinks_between_the_reads_gives_no_error) {
  AddPattern(1000);
  BeforeCall(machine_, Call::kReadFrom, 2,
             [this] { machine_.SetContent(u"C:\\file", content_.substr(0, 490)); });
  EXPECT_EQ(SampleAnswer(u"C:\\file", 1000),
            Written(Digits(Slot(content_, 0) + Slot(content_.substr(0, 490), 475)), kCapacity));
}

TEST_F(Sample, The_largest_size_reads_beyond_the_end) {
  AddPattern(200);
  EXPECT_EQ(SampleAnswer(u"C:\\file", kLargest), Expected(kLargest));
  machine_.AddSizedFile(u"C:\\huge", static_cast<std::uint64_t>(kLargest), 7);
  EXPECT_EQ(SampleAnswer(u"C:\\huge", kLargest),
            Written(Digits(Pattern(50, 7) + Pattern(50, 7, kLargest / 2 - 25) +
                           Pattern(50, 7, static_cast<std::uint64_t>(kLargest) - 50)),
                    kCapacity));
}

TEST_F(Sample, Opens_once_with_every_sharing_and_no_hint) {
  AddPattern(1000);
  OpenRecord opens;
  EXPECT_EQ(SampleAnswer(u"C:\\file", 1000).status, QS_OK);
  const std::vector<OpenCall> expected = {
      {"C:\\file", 0x80000000, 7, platform::Disposition::kOpenExisting, 0x80}};
  EXPECT_EQ(opens.calls(), expected);
}

TEST_F(Sample, Others_may_delete_the_file_meanwhile) {
  AddPattern(1000);
  BeforeCall(machine_, Call::kReadFrom, 1,
             [] { EXPECT_EQ(platform::RemoveFile(u"C:\\file"), Error::kNone); });
  EXPECT_EQ(SampleAnswer(u"C:\\file", 1000), Expected(1000));
}

TEST_F(Sample, A_capacity_of_301_is_enough_and_one_of_300_is_not) {
  AddPattern(10);
  const std::string digits = SampleOf(content_, 10);
  for (const std::uint64_t capacity : {0u, 1u, 150u, 300u}) {
    EXPECT_EQ(SampleAnswer(u"C:\\file", 10, capacity), Untouched(QS_BUFFER_TOO_SMALL, capacity));
  }
  for (const std::uint64_t capacity : {301u, 302u, 384u}) {
    EXPECT_EQ(SampleAnswer(u"C:\\file", 10, capacity), Written(digits, capacity));
  }
  EXPECT_EQ(qs_duplicate_sample_hex(u"C:\\file", 10, nullptr, 301), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(qs_duplicate_sample_hex(u"C:\\file", 10, nullptr, 0), QS_BUFFER_TOO_SMALL);
}

TEST_F(Sample, A_missing_path_comes_first_the_output_second_a_negative_size_last) {
  Record();
  const auto without_path = [](std::int64_t size, std::uint64_t capacity) {
    return AnswerOf(capacity, [&](char* out, std::uint64_t n) {
      return qs_duplicate_sample_hex(nullptr, size, out, n);
    });
  };
  EXPECT_EQ(without_path(10, 301), Untouched(QS_INVALID_ARGUMENT, 301));
  EXPECT_EQ(without_path(10, 300), Untouched(QS_INVALID_ARGUMENT, 300));
  EXPECT_EQ(without_path(-1, 300), Untouched(QS_INVALID_ARGUMENT, 300));
  EXPECT_EQ(qs_duplicate_sample_hex(nullptr, -1, nullptr, 0), QS_INVALID_ARGUMENT);
  EXPECT_EQ(SampleAnswer(u"C:\\file", -1, 300), Untouched(QS_BUFFER_TOO_SMALL, 300));
  EXPECT_EQ(qs_duplicate_sample_hex(u"C:\\file", -1, nullptr, 301), QS_BUFFER_TOO_SMALL);
  EXPECT_EQ(SampleAnswer(u"C:\\file", -1), Untouched(QS_INVALID_ARGUMENT, 301));
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(Sample, A_negative_size_is_refused_before_the_file_is_opened) {
  AddPattern(10);
  Record();
  for (const std::int64_t size : {std::int64_t{-1}, std::int64_t{-150}, kSmallest}) {
    EXPECT_EQ(SampleAnswer(u"C:\\file", size), Untouched(QS_INVALID_ARGUMENT, kCapacity)) << size;
  }
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(Sample, What_cannot_be_opened_fails) {
  machine_.AddFolder(u"C:\\folder");
  AddPattern(10);
  machine_.Lock(u"C:\\file");
  for (const Text path : {u"C:\\missing", u"C:\\folder", u"C:\\file", u""}) {
    EXPECT_EQ(SampleAnswer(path, 10), Untouched(QS_FAILED, kCapacity)) << Utf8(path);
  }
  machine_.Unlock(u"C:\\file");
  machine_.Lock(u"C:\\file", platform::kShareRead);
  EXPECT_EQ(SampleAnswer(u"C:\\file", 10), Expected(10));
  machine_.Unlock(u"C:\\file");
}

TEST_F(Sample, Every_open_seek_and_read_that_fails_is_status_3_and_closes_the_file) {
  AddPattern(1000);
  for (const auto& [size, calls] :
       std::vector<std::pair<std::int64_t, std::uint64_t>>{{150, 3}, {1000, 7}}) {
    for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
      std::uint64_t nth = 1;
      for (; nth < 50; ++nth) {
        machine_.ClearFaults();
        machine_.FailAnyCall(nth, repeat);
        const TextAnswer answer = SampleAnswer(u"C:\\file", size);
        if (machine_.faults_injected() == 0) {
          EXPECT_EQ(answer, Expected(size));
          break;
        }
        EXPECT_EQ(answer, Untouched(QS_FAILED, kCapacity)) << size << ", call " << nth;
        EXPECT_EQ(machine_.open_handles(), 0u);
      }
      EXPECT_EQ(nth, calls + 1) << "bytes: " << size;
    }
  }
}

TEST_F(Sample, Each_of_the_reads_and_of_the_seeks_may_be_the_one_that_fails) {
  AddPattern(1000);
  for (const Call kind : {Call::kReadFrom, Call::kSeekTo}) {
    for (std::uint64_t nth = 1; nth <= 3; ++nth) {
      machine_.ClearFaults();
      machine_.FailCall(kind, nth);
      EXPECT_EQ(SampleAnswer(u"C:\\file", 1000), Untouched(QS_FAILED, kCapacity)) << nth;
      EXPECT_EQ(machine_.faults_injected(), 1u);
      EXPECT_EQ(machine_.open_handles(), 0u);
    }
  }
}

TEST_F(Sample, Every_allocation_that_fails_gives_status_3_and_leaves_no_handle) {
  AddPattern(1000);
  bool ended = false;
  for (std::uint64_t nth = 1; nth < 100 && !ended; ++nth) {
    char out[301] = {'#'};
    qs_status status = QS_OK;
    {
      const AllocationFaults fault(nth, Repeat::kOnce);
      status = qs_duplicate_sample_hex(u"C:\\file", 1000, out, 301);
      ended = fault.injected() == 0;
    }
    EXPECT_EQ(status, ended ? QS_OK : QS_FAILED) << nth;
    EXPECT_EQ(out[0] == '#', !ended) << nth;
    EXPECT_EQ(machine_.open_handles(), 0u) << nth;
  }
  EXPECT_TRUE(ended);
}

TEST_F(Sample, A_long_path_is_opened_in_its_extended_form) {
  const Text path = support::NestedTo(300, u"C:\\deep");
  machine_.AddFile(path, "abc");
  Record();
  EXPECT_EQ(SampleAnswer(path, 3), Written(SampleOf("abc", 3), kCapacity));
  EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, u"\\\\?\\" + path), 1u);
}

TEST_F(Sample, The_internal_call_writes_its_text_only_on_success) {
  AddPattern(10);
  std::string text = "before";
  EXPECT_EQ(duplicate::SampleFile(u"C:\\missing", 10, text), QS_FAILED);
  EXPECT_EQ(text, "before");
  machine_.FailCall(Call::kReadFrom, 1);
  EXPECT_EQ(duplicate::SampleFile(u"C:\\file", 10, text), QS_FAILED);
  EXPECT_EQ(text, "before");
  EXPECT_EQ(duplicate::SampleFile(u"C:\\file", 10, text), QS_OK);
  EXPECT_EQ(text, SampleOf(content_, 10));
}

}  // namespace
}  // namespace quastel::duplicate_tests
