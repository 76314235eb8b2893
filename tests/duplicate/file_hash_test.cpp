// Hashing a whole file: how it is opened and read, and what the reads deliver.

#include "duplicate/file_hash.h"

#include <thread>
#include <vector>

#include "duplicate/machine.h"
#include "duplicate/open_record.h"
#include "duplicate/textbook_xxh32.h"
#include "platform/file_system.h"

namespace quastel::duplicate_tests {
namespace {

using Lines = std::vector<std::string>;

class FileHash : public HashingTest {
 protected:
  // The calls of hashing a file that takes this many reads, the empty one at its end included.
  static Lines CallsWithReads(std::size_t reads) {
    Lines out = {"OpenFile C:\\file"};
    out.insert(out.end(), reads, "ReadFrom 1048576");
    out.push_back("CloseFile");
    return out;
  }

  static TextAnswer TextOf(std::string_view content) {
    return Written(TextbookText(content), kHashCapacity);
  }
};

TEST_F(FileHash, Opens_once_with_every_sharing_and_the_hint_for_sequential_reading) {
  machine_.AddFile(u"C:\\file", "abc");
  OpenRecord opens;
  EXPECT_EQ(HashAnswer(u"C:\\file").status, QS_OK);
  const std::vector<OpenCall> expected = {
      {"C:\\file", 0x80000000, 7, platform::Disposition::kOpenExisting, 0x08000080}};
  EXPECT_EQ(opens.calls(), expected);
}

TEST_F(FileHash, Others_may_read_write_and_delete_the_file_meanwhile) {
  machine_.AddFile(u"C:\\file", "abc");
  int tried = 0;
  BeforeCall(machine_, Call::kReadFrom, 1, [&] {
    for (const std::uint32_t access : {platform::kAccessRead, platform::kAccessWrite}) {
      EXPECT_TRUE(platform::OpenFile(u"C:\\file", access, platform::kShareAll,
                                     platform::Disposition::kOpenExisting, 0)
                      .ok());
      ++tried;
    }
    EXPECT_EQ(platform::RemoveFile(u"C:\\file"), Error::kNone);
  });
  EXPECT_EQ(HashAnswer(u"C:\\file").status, QS_OK);
  EXPECT_EQ(tried, 2);
}

TEST_F(FileHash, Reads_one_MiB_at_a_time_until_a_read_is_empty_and_nothing_else) {
  for (const auto& [size, reads] : std::vector<std::pair<std::uint64_t, std::size_t>>{
           {0, 1},
           {1, 2},
           {kMebibyte - 1, 2},
           {kMebibyte, 2},
           {kMebibyte + 1, 3},
           {kMebibyte + 7, 3},
           {3 * kMebibyte, 4},
       }) {
    machine_.AddSizedFile(u"C:\\file", size, 5);
    Record();
    EXPECT_EQ(HashAnswer(u"C:\\file"), TextOf(Pattern(size, 5))) << size;
    EXPECT_EQ(CallsIn(machine_), CallsWithReads(reads)) << size;
  }
}

TEST_F(FileHash, A_MiB_and_seven_bytes_give_the_text_of_the_same_bytes_in_memory) {
  const std::string content = Pattern(kMebibyte + 7, 9);
  machine_.AddFile(u"C:\\file", content);
  const TextAnswer in_memory = AnswerOf(kHashCapacity, [&](char* out, std::uint64_t n) {
    return qs_xxhash32_hex(content.data(), content.size(), out, n);
  });
  EXPECT_EQ(in_memory.status, QS_OK);
  EXPECT_EQ(HashAnswer(u"C:\\file"), in_memory);
  EXPECT_EQ(HashAnswer(u"C:\\file"), TextOf(content));
}

TEST_F(FileHash, Sizes_around_a_read_and_a_stripe) {
  for (const std::uint64_t middle : {std::uint64_t{16}, std::uint64_t{64}, kMebibyte}) {
    for (const std::uint64_t beyond : {0u, 1u, 4u, 15u, 16u}) {
      for (const std::uint64_t size : {middle - beyond, middle + beyond}) {
        machine_.AddSizedFile(u"C:\\file", size, 2);
        ASSERT_EQ(HashAnswer(u"C:\\file"), TextOf(Pattern(size, 2))) << size;
      }
    }
  }
}

TEST_F(FileHash, Does_not_ask_for_the_size_a_file_that_shrinks_is_hashed_as_far_as_it_goes) {
  machine_.AddSizedFile(u"C:\\file", 2 * kMebibyte + 5, 3);
  BeforeCall(machine_, Call::kReadFrom, 2,
             [this] { machine_.SetContent(u"C:\\file", Pattern(kMebibyte + 10, 3)); });
  EXPECT_EQ(HashAnswer(u"C:\\file"), TextOf(Pattern(kMebibyte + 10, 3)));
  EXPECT_EQ(machine_.CallCount(Call::kQuerySize), 0u);
}

TEST_F(FileHash, What_is_appended_before_the_end_is_reached_counts) {
  machine_.AddSizedFile(u"C:\\file", 100, 3);
  BeforeCall(machine_, Call::kReadFrom, 2,
             [this] { machine_.SetContent(u"C:\\file", Pattern(250, 3)); });
  EXPECT_EQ(HashAnswer(u"C:\\file"), TextOf(Pattern(250, 3)));
}

TEST_F(FileHash, A_short_read_in_the_middle_is_continued_at_any_offset) {
  // The file grows between the reads, so the second read begins within a stripe.
  const std::string whole = Pattern(kMebibyte + 333, 8);
  for (const std::size_t first : {1u, 3u, 15u, 17u, 63u, 65u, 1000u}) {
    machine_.AddFile(u"C:\\file", whole.substr(0, first));
    BeforeCall(machine_, Call::kReadFrom, 2, [&] { machine_.SetContent(u"C:\\file", whole); });
    EXPECT_EQ(HashAnswer(u"C:\\file"), TextOf(whole)) << first;
  }
}

TEST_F(FileHash, A_flag_that_is_set_at_entry_cancels_after_the_open_without_reading) {
  machine_.AddFile(u"C:\\file", "abc");
  Record();
  std::uint32_t cancel = 1;
  EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), Untouched(QS_CANCELLED, kHashCapacity));
  EXPECT_EQ(CallsIn(machine_), CallsWithReads(0));
  EXPECT_EQ(cancel, 1u);
}

TEST_F(FileHash, Any_value_but_0_cancels_and_stays) {
  machine_.AddFile(u"C:\\file", "abc");
  for (const std::uint32_t value : {2u, 0x100u, 0x80000000u, 0xFFFFFFFFu}) {
    std::uint32_t cancel = value;
    EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), Untouched(QS_CANCELLED, kHashCapacity));
    EXPECT_EQ(cancel, value);
  }
  std::uint32_t cancel = 0;
  EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), TextOf("abc"));
  EXPECT_EQ(cancel, 0u);
}

TEST_F(FileHash, The_flag_may_lie_in_memory_that_cannot_be_written) {
  machine_.AddFile(u"C:\\file", "abc");
  static const std::uint32_t not_cancelled = 0;
  EXPECT_EQ(HashAnswer(u"C:\\file", const_cast<std::uint32_t*>(&not_cancelled)), TextOf("abc"));
  static const std::uint32_t cancelled = 1;
  EXPECT_EQ(HashAnswer(u"C:\\file", const_cast<std::uint32_t*>(&cancelled)),
            Untouched(QS_CANCELLED, kHashCapacity));
}

TEST_F(FileHash, A_file_that_cannot_be_opened_fails_even_when_cancelled) {
  std::uint32_t cancel = 1;
  EXPECT_EQ(HashAnswer(u"C:\\missing", &cancel), Untouched(QS_FAILED, kHashCapacity));
}

TEST_F(FileHash, A_cancel_during_a_read_is_seen_right_after_it) {
  machine_.AddSizedFile(u"C:\\file", 3 * kMebibyte + 1);
  for (std::size_t nth = 1; nth <= 4; ++nth) {
    std::uint32_t cancel = 0;
    BeforeCall(machine_, Call::kReadFrom, nth, [&] { cancel = 1; });
    Record();
    EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), Untouched(QS_CANCELLED, kHashCapacity)) << nth;
    EXPECT_EQ(CallsIn(machine_), CallsWithReads(nth)) << nth;
  }
}

TEST_F(FileHash, The_empty_read_at_the_end_finishes_whatever_the_flag_says) {
  machine_.AddFile(u"C:\\file", "abc");
  std::uint32_t cancel = 0;
  BeforeCall(machine_, Call::kReadFrom, 2, [&] { cancel = 1; });
  EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), TextOf("abc"));

  machine_.AddFile(u"C:\\empty", "");
  cancel = 0;
  BeforeCall(machine_, Call::kReadFrom, 1, [&] { cancel = 1; });
  EXPECT_EQ(HashAnswer(u"C:\\empty", &cancel), TextOf(""));
}

TEST_F(FileHash, Within_10_GiB_a_cancel_is_seen_within_one_read) {
  machine_.AddSizedFile(u"C:\\file", 10'240 * kMebibyte, simulated::kZeroSeed);
  std::uint32_t cancel = 0;
  BeforeCall(machine_, Call::kReadFrom, 20, [&] { cancel = 1; });
  Record();
  EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), Untouched(QS_CANCELLED, kHashCapacity));
  EXPECT_EQ(CallsIn(machine_), CallsWithReads(20));
}

TEST_F(FileHash, The_call_without_a_flag_does_the_same) {
  machine_.AddSizedFile(u"C:\\file", kMebibyte + 7, 4);
  Record();
  EXPECT_EQ(
      AnswerOf(kHashCapacity,
               [](char* out, std::uint64_t n) { return qs_xxhash32_file(u"C:\\file", out, n); }),
      TextOf(Pattern(kMebibyte + 7, 4)));
  EXPECT_EQ(CallsIn(machine_), CallsWithReads(3));
}

TEST_F(FileHash, A_long_path_is_opened_in_its_extended_form) {
  for (const std::size_t length : {247u, 248u, 249u, 300u, 5000u}) {
    const Text path = support::NestedTo(length, u"C:\\deep");
    machine_.AddFile(path, "abc");
    Record();
    EXPECT_EQ(HashAnswer(path), TextOf("abc")) << length;
    const Text opened = length < 248 ? path : u"\\\\?\\" + path;
    EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, opened), 1u) << length;
  }
}

TEST_F(FileHash, A_short_path_is_opened_as_it_is_spelt) {
  machine_.AddFile(u"C:\\data\\file", "abc");
  machine_.SetCurrentFolder(u"C:\\data");
  for (const char* path : {"c:/DATA/file", "file", "C:\\data\\.\\file"}) {
    Record();
    EXPECT_EQ(HashAnswer(support::Wide(path)), TextOf("abc")) << path;
    EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, support::Wide(path)), 1u) << path;
  }
}

TEST_F(FileHash, The_internal_call_writes_its_text_only_on_success) {
  machine_.AddFile(u"C:\\file", "abc");
  std::string text = "before";
  EXPECT_EQ(duplicate::HashFile(u"C:\\missing", nullptr, text), QS_FAILED);
  EXPECT_EQ(text, "before");
  std::uint32_t cancel = 1;
  EXPECT_EQ(duplicate::HashFile(u"C:\\file", &cancel, text), QS_CANCELLED);
  EXPECT_EQ(text, "before");
  cancel = 0;
  EXPECT_EQ(duplicate::HashFile(u"C:\\file", &cancel, text), QS_OK);
  EXPECT_EQ(text, TextbookText("abc"));
}

TEST_F(FileHash, Many_threads_hash_at_once_and_one_flag_stops_those_that_were_given_it) {
  constexpr std::size_t kThreads = 8;
  std::vector<Text> paths;
  std::vector<TextAnswer> expected;
  for (std::size_t i = 0; i < kThreads; ++i) {
    paths.push_back(support::Wide("C:\\file" + std::to_string(i)));
    const auto seed = static_cast<std::uint32_t>(i);
    machine_.AddSizedFile(paths[i], kMebibyte + 11 * i, seed);
    expected.push_back(TextOf(Pattern(kMebibyte + 11 * i, seed)));
  }
  machine_.AddSizedFile(u"C:\\endless", 1024 * 1024 * kMebibyte, simulated::kZeroSeed);
  std::uint32_t cancel = 0;
  TextAnswer cancelled;
  std::thread endless([&] { cancelled = HashAnswer(u"C:\\endless", &cancel); });
  std::vector<TextAnswer> answers(kThreads);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 5; ++round) {
        answers[i] = HashAnswer(paths[i]);
        if (answers[i] != expected[i]) {
          return;
        }
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::atomic_ref<std::uint32_t>(cancel).store(1);
  endless.join();
  EXPECT_EQ(answers, expected);
  EXPECT_EQ(cancelled, Untouched(QS_CANCELLED, kHashCapacity));
}

}  // namespace
}  // namespace quastel::duplicate_tests
