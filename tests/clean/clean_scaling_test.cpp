// A hundred thousand rows: the work is counted in system calls, of which each file has its own and
// no other file's.

#include "clean/clean_fixture.h"
#include "support/instrumented.h"

namespace quastel::clean_tests {
namespace {

// An instrumented build does with a fifth.
constexpr std::uint64_t kFolders = support::Rounds(100, 20);
constexpr std::uint64_t kFilesPerFolder = 1'000;
constexpr std::uint64_t kRows = kFolders * kFilesPerFolder;
// C:\, C:\many and the folder itself.
constexpr std::uint64_t kDepth = 3;

class CleanScaling : public CleanOfEachKindTest {
 protected:
  // Rows without a scan that would have to read all the files.
  Ids AddManyRows() {
    ScanTree();
    machine_.SetRecording(false);
    const std::uint64_t first = scan_tests::Poll(scan_).item_count;
    std::vector<ReportRow> rows;
    Ids ids;
    for (std::uint64_t folder = 0; folder < kFolders; ++folder) {
      for (std::uint64_t file = 0; file < kFilesPerFolder; ++file) {
        const Text path = u"C:\\many\\" + Wide(std::to_string(1'000 + folder)) + u"\\" +
                          Wide(std::to_string(10'000 + file));
        machine_.AddSizedFile(path, 1);
        // Sets of one hundred, the first of which stays.
        rows.push_back(FindingOf(static_cast<RowKind>(kind_), rows.size() / 100 + 1, 1, path));
        if (rows.size() % 100 != 1) {
          ids.push_back(first + rows.size() - 1);
        }
      }
    }
    AppendRows(scan_, std::move(rows));
    return ids;
  }

  std::vector<std::uint64_t> Counts() const {
    std::vector<std::uint64_t> counts;
    for (std::size_t call = 0; call < static_cast<std::size_t>(Call::kCount); ++call) {
      counts.push_back(machine_.CallCount(static_cast<Call>(call)));
    }
    return counts;
  }
};

TEST_P(CleanScaling, Every_row_costs_the_calls_that_it_needs_and_a_cancel_stops_between_two) {
  const Ids ids = AddManyRows();
  const std::uint64_t n = ids.size();
  ASSERT_EQ(n, kRows - kRows / 100);
  const std::vector<std::uint64_t> before = Counts();
  const auto calls_since = [&](Call call) {
    return machine_.CallCount(call) - before[static_cast<std::size_t>(call)];
  };

  constexpr std::uint64_t kCancelledAt = kRows / 5 * 2;
  scan_tests::InsideCall(machine_, Call::kRemoveFile, kCancelledAt,
                         [&] { qs_product_scan_cancel_clean(scan_); });
  ASSERT_EQ(CleanIds(ids), QS_CANCELLED);
  machine_.SetHook(nullptr);
  EXPECT_EQ(Block(), Ended(QS_CANCELLED, n, kCancelledAt, 0, kCancelledAt));
  EXPECT_EQ(calls_since(Call::kQueryFileFacts), kCancelledAt) << "the next one was not looked at";
  EXPECT_EQ(calls_since(Call::kRemoveFile), kCancelledAt);

  const Ids rest(ids.begin() + static_cast<std::ptrdiff_t>(kCancelledAt), ids.end());
  ASSERT_EQ(CleanIds(rest), QS_OK);
  EXPECT_EQ(Block(), Ended(QS_OK, rest.size(), rest.size(), 0, rest.size()));
  std::vector<std::uint64_t> expected(before.size());
  const auto calls = [&](Call call) -> std::uint64_t& {
    return expected[static_cast<std::size_t>(call)];
  };
  calls(Call::kFullPathName) = 2 * n;
  calls(Call::kQueryAttributes) = (2 * kDepth + 1) * n;
  calls(Call::kQueryFileFacts) = n;
  calls(Call::kToLocalFileTime) = n;
  calls(Call::kRemoveFile) = n;
  if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
    // A look at the folder, and a listing up to the first file, behind "." and "..".
    calls(Call::kQueryAttributes) += n;
    calls(Call::kFindFirstBasic) = n;
    calls(Call::kFindNext) = 2 * n;
    calls(Call::kFindClose) = n;
  }
  for (std::size_t call = 0; call < expected.size(); ++call) {
    EXPECT_EQ(calls_since(static_cast<Call>(call)), expected[call])
        << NameOf(static_cast<Call>(call));
  }
  // Of each set the first is there, and nothing else.
  std::uint64_t left = 0;
  for (std::uint64_t folder = 0; folder < kFolders; ++folder) {
    for (const Text& name :
         machine_.NamesIn(u"C:\\many\\" + Wide(std::to_string(1'000 + folder)))) {
      EXPECT_TRUE(name.ends_with(u"00")) << Utf8(name);
      ++left;
    }
  }
  EXPECT_EQ(left, kRows / 100);
}

INSTANTIATE_TEST_SUITE_P(Of, CleanScaling, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
