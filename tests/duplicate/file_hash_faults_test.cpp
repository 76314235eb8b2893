// Hashing a file when something fails.

#include <limits>
#include <vector>

#include "duplicate/allocation_meter.h"
#include "duplicate/machine.h"
#include "duplicate/textbook_xxh32.h"
#include "faults/allocation_faults.h"
#include "platform/file.h"

namespace quastel::duplicate_tests {
namespace {

using faults::AllocationFaults;

class FileHashFaults : public HashingTest {};

TEST_F(FileHashFaults, What_cannot_be_opened_fails) {
  machine_.AddFolder(u"C:\\folder");
  machine_.AddFile(u"C:\\denied", "abc");
  machine_.Deny(u"C:\\denied", {.opening = true});
  for (const Text path : {u"C:\\missing", u"C:\\folder", u"C:\\denied", u"C:\\no\\such",
                          u"Q:\\file", u"", u"C:\\a\"b"}) {
    EXPECT_EQ(HashAnswer(path), Untouched(QS_FAILED, kHashCapacity)) << Utf8(path);
    EXPECT_EQ(AnswerOf(kHashCapacity,
                       [&](char* out, std::uint64_t n) {
                         return qs_xxhash32_file(path.c_str(), out, n);
                       }),
              Untouched(QS_FAILED, kHashCapacity))
        << Utf8(path);
    EXPECT_EQ(machine_.open_handles(), 0u);
  }
}

TEST_F(FileHashFaults, A_file_that_is_locked_without_read_sharing_fails) {
  machine_.AddFile(u"C:\\file", "abc");
  for (const std::uint32_t share : {0u, platform::kShareWrite, platform::kShareDelete,
                                    platform::kShareWrite | platform::kShareDelete}) {
    machine_.Lock(u"C:\\file", share);
    EXPECT_EQ(HashAnswer(u"C:\\file"), Untouched(QS_FAILED, kHashCapacity)) << share;
    machine_.Unlock(u"C:\\file");
  }
  for (const std::uint32_t share : {platform::kShareRead, platform::kShareAll}) {
    machine_.Lock(u"C:\\file", share);
    EXPECT_EQ(HashAnswer(u"C:\\file"), Written(TextbookText("abc"), kHashCapacity)) << share;
    machine_.Unlock(u"C:\\file");
  }
}

TEST_F(FileHashFaults, Each_read_that_fails_ends_the_call_and_closes_the_file) {
  machine_.AddSizedFile(u"C:\\file", 3 * kMebibyte + 1);
  for (std::size_t nth = 1; nth <= 5; ++nth) {
    for (const Error error : {Error::kCrc, Error::kHandleEof, Error::kSharingViolation}) {
      machine_.ClearFaults();
      machine_.FailCall(Call::kReadFrom, nth, Repeat::kOnce, error);
      Record();
      EXPECT_EQ(HashAnswer(u"C:\\file"), Untouched(QS_FAILED, kHashCapacity)) << nth;
      EXPECT_EQ(machine_.faults_injected(), 1u);
      EXPECT_EQ(machine_.open_handles(), 0u);
      std::vector<std::string> expected = {"OpenFile C:\\file"};
      expected.insert(expected.end(), nth, "ReadFrom 1048576");
      expected.push_back("CloseFile");
      EXPECT_EQ(CallsIn(machine_), expected);
    }
  }
  machine_.ClearFaults();
  EXPECT_EQ(HashAnswer(u"C:\\file").status, QS_OK);
}

TEST_F(FileHashFaults, A_failed_read_is_a_failure_even_when_cancelled_meanwhile) {
  machine_.AddSizedFile(u"C:\\file", 3 * kMebibyte);
  std::uint32_t cancel = 0;
  machine_.FailCall(Call::kReadFrom, 2);
  BeforeCall(machine_, Call::kReadFrom, 2, [&] { cancel = 1; });
  EXPECT_EQ(HashAnswer(u"C:\\file", &cancel), Untouched(QS_FAILED, kHashCapacity));
}

TEST_F(FileHashFaults, Every_call_that_can_fail_gives_status_3_and_leaves_the_output_unwritten) {
  machine_.AddSizedFile(u"C:\\file", 2 * kMebibyte + 3, 6);
  const TextAnswer full = Written(TextbookText(Pattern(2 * kMebibyte + 3, 6)), kHashCapacity);
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t nth = 1;
    for (; nth < 100; ++nth) {
      machine_.ClearFaults();
      machine_.FailAnyCall(nth, repeat);
      const TextAnswer answer = HashAnswer(u"C:\\file");
      if (machine_.faults_injected() == 0) {
        EXPECT_EQ(answer, full);
        break;
      }
      EXPECT_EQ(answer, Untouched(QS_FAILED, kHashCapacity)) << nth;
      EXPECT_EQ(machine_.open_handles(), 0u) << nth;
    }
    EXPECT_EQ(nth, 6u) << "one open and four reads can fail";
  }
}

TEST_F(FileHashFaults, Every_allocation_that_fails_gives_status_3_and_leaves_no_handle) {
  for (const Text& path : {Text(u"C:\\file"), support::NestedTo(300, u"C:\\deep")}) {
    machine_.AddFile(path, "abc");
    for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
      bool ended = false;
      for (std::uint64_t nth = 1; nth < 100 && !ended; ++nth) {
        char out[9] = {'#'};
        qs_status status = QS_OK;
        {
          const AllocationFaults fault(nth, repeat);
          status = qs_xxhash32_file(path.c_str(), out, 9);
          ended = fault.injected() == 0;
        }
        EXPECT_EQ(status, ended ? QS_OK : QS_FAILED) << nth;
        EXPECT_EQ(out[0] == '#', !ended) << nth;
        EXPECT_EQ(machine_.open_handles(), 0u) << nth;
      }
      EXPECT_TRUE(ended);
    }
  }
}

TEST_F(FileHashFaults, Hashing_memory_needs_none) {
  const AllocationMeter meter;
  const AllocationFaults faults(1, Repeat::kFromThenOn);
  char out[9] = {};
  EXPECT_EQ(qs_xxhash32_hex("abc", 3, out, 9), QS_OK);
  EXPECT_STREQ(out, "ff53d132");
  EXPECT_EQ(faults.injected(), 0u);
}

TEST_F(FileHashFaults, After_a_thread_s_first_call_nothing_is_allocated_for_a_call) {
  machine_.AddSizedFile(u"C:\\a\\file", kMebibyte + 7);
  EXPECT_EQ(HashAnswer(u"C:\\a\\file").status, QS_OK);
  char out[9] = {};
  std::size_t count = 0;
  std::size_t bytes = 0;
  {
    const AllocationMeter meter;
    EXPECT_EQ(qs_xxhash32_file(u"C:\\a\\file", out, 9), QS_OK);
    count = meter.count();
    bytes = meter.bytes();
  }
  EXPECT_EQ(count, 0u) << bytes << " bytes";
}

}  // namespace
}  // namespace quastel::duplicate_tests
