// What a clean asks the system, call for call.

#include <algorithm>
#include <chrono>
#include <map>

#include "session/session_fixture.h"
#include "support/calls.h"

namespace quastel::session_tests {
namespace {

class SessionCleanCalls : public SessionTest {};

TEST_F(SessionCleanCalls, Look_at_the_file_and_the_way_to_it_and_then_remove_it) {
  AddFile(u"sub\\f", 1);
  ScanTree();
  ASSERT_EQ(session_.Clean({0}), QS_OK);
  Lines calls;
  for (const CallRecord& record : machine_.record()) {
    calls.push_back(NameOf(record.call) +
                    (record.path.empty() ? std::string() : " " + Utf8(record.path)));
  }
  EXPECT_EQ(calls, (Lines{
                       "FullPathName C:\\t\\sub\\f",
                       "QueryAttributes C:\\t\\sub",
                       "QueryAttributes C:\\t",
                       "QueryAttributes C:\\",
                       "QueryFileFacts C:\\t\\sub\\f",
                       "ToLocalFileTime",
                       "FullPathName C:\\t\\sub\\f",
                       "QueryAttributes C:\\t\\sub",
                       "QueryAttributes C:\\t",
                       "QueryAttributes C:\\",
                       "QueryAttributes C:\\t\\sub\\f",
                       "RemoveFile C:\\t\\sub\\f",
                   }));
}

// The order in which they are named is no order of their paths: nothing may depend on it.
TEST_F(SessionCleanCalls, Of_a_hundred_thousand_rows_are_twelve_for_each_and_no_other) {
  constexpr std::uint64_t kFolders = 100;
  constexpr std::uint64_t kFilesPerFolder = 1'000;
  constexpr std::uint64_t kRows = kFolders * kFilesPerFolder;
  for (std::uint64_t folder = 0; folder < kFolders; ++folder) {
    const Text path = u"C:\\t\\d" + Wide(std::to_string(100 + folder)) + u"\\f";
    for (std::uint64_t file = 0; file < kFilesPerFolder; ++file) {
      machine_.AddSizedFile(path + Wide(std::to_string(1'000 + file)), file);
    }
  }
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  ASSERT_EQ(RowCountOf(session_), kRows);
  // 7919 is prime to the number of rows: every row comes once.
  Ids ids(kRows);
  for (std::uint64_t i = 0; i < kRows; ++i) {
    ids[i] = i * 7'919 % kRows;
  }
  machine_.ClearRecord();
  EXPECT_EQ(session_.Clean(ids), QS_OK);
  EXPECT_EQ(CleanOf(session_), Ended(QS_OK, kRows, kRows));

  std::map<std::string, std::uint64_t> counts;
  for (std::size_t kind = 0; kind < static_cast<std::size_t>(Call::kCount); ++kind) {
    const auto call = static_cast<Call>(kind);
    if (const std::uint64_t count = machine_.CallCount(call); count != 0) {
      counts[NameOf(call)] = count;
    }
  }
  EXPECT_EQ(counts, (std::map<std::string, std::uint64_t>{{"FullPathName", 2 * kRows},
                                                          {"QueryAttributes", 7 * kRows},
                                                          {"QueryFileFacts", kRows},
                                                          {"ToLocalFileTime", kRows},
                                                          {"RemoveFile", kRows}}));
  // Nothing is left but the folders: C:\t and those in it.
  EXPECT_EQ(machine_.node_count(), 1 + kFolders);
  std::uint64_t marks = 0;
  qs_session_row row = {};
  for (std::uint64_t i = 0; i < kRows; ++i) {
    qs_session_report_row(session_, i, nullptr, 0, nullptr, nullptr, 0, nullptr, &row);
    marks += row.deleted;
  }
  EXPECT_EQ(marks, kRows);
}

// Checking the indexes may not cost a look at all the others for each.
TEST_F(SessionCleanCalls, Indexes_are_checked_in_a_time_that_grows_with_their_number_alone) {
  constexpr std::uint64_t kRows = 30'000;
  for (std::uint64_t i = 0; i < kRows; ++i) {
    machine_.AddSizedFile(u"C:\\t\\f" + Wide(std::to_string(10'000 + i)), 1);
  }
  ASSERT_EQ(session_.Scan(u"C:\\t"), QS_OK);
  // The last index is refused: nothing but the check takes time.
  const auto refusal = [&](std::uint64_t count) {
    Ids ids = UpTo(count);
    ids.push_back(0);
    auto shortest = std::chrono::nanoseconds::max();
    for (int round = 0; round < 5; ++round) {
      const auto begin = std::chrono::steady_clock::now();
      EXPECT_EQ(session_.Clean(ids), QS_INVALID_ARGUMENT);
      shortest =
          std::min<std::chrono::nanoseconds>(shortest, std::chrono::steady_clock::now() - begin);
    }
    return static_cast<double>(shortest.count());
  };
  const double few = refusal(kRows / 30);
  const double many = refusal(kRows);
  // Thirty times as many cost about thirty times as much; nine hundred times would be the square.
  EXPECT_LT(many / few, 200.0);
}

}  // namespace
}  // namespace quastel::session_tests
