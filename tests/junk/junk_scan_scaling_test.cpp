// A scan's work grows with the folders that its rules name, and with nothing
// else.

#include "junk/junk_fixture.h"

namespace quastel::junk_tests {
namespace {

// Folder number i of the profile; a hundred of them lie in each folder between.
std::string FolderNumber(int i) {
  return "C:\\Users\\u\\d" + std::to_string(i / 100) + "\\f" + std::to_string(i % 100);
}

// All calls of the file system, by kind.
using Calls = std::vector<std::uint64_t>;

constexpr Call kFileSystemCalls[] = {
    Call::kFullPathName,   Call::kQueryAttributes, Call::kQueryFileFacts, Call::kFindFirstBasic,
    Call::kFindFirst,      Call::kFindNext,        Call::kFindClose,      Call::kOpenFile,
    Call::kReadFrom,       Call::kQuerySize,       Call::kCloseFile,      Call::kDecodeUtf8,
    Call::kToLocalFileTime};

struct Work {
  Calls calls;
  std::uint64_t total = 0;
  std::uint64_t rows = 0;
};

// Scans a profile of `folders` folders, each with a file in it, with rules that
// name `named` of them all over the first ten thousand.
Work ScanProfile(int folders, int named) {
  SimulatedWindows machine;
  for (int i = 0; i < folders; ++i) {
    machine.AddFile(support::Wide(FolderNumber(i) + "\\a"), "x");
  }
  std::string rules;
  for (int i = 0; i < named; ++i) {
    rules += "<Folder Path='" + FolderNumber(i * (10'000 / named)) + "'/>";
  }
  machine.AddFile(kRulesPath, InCategory(rules));
  ScanHandle scan;
  EXPECT_EQ(scan.Start(JunkRequest()), QS_OK);
  Work work;
  for (const Call call : kFileSystemCalls) {
    work.calls.push_back(machine.CallCount(call));
    work.total += work.calls.back();
  }
  work.rows = scan_tests::RowCountOf(scan);
  return work;
}

TEST(JunkScanScaling, Ten_thousand_rules_do_not_notice_the_folders_that_they_do_not_name) {
  const Work small = ScanProfile(10'000, 10'000);
  const Work large = ScanProfile(100'000, 10'000);
  EXPECT_EQ(small.rows, 20'001u);
  EXPECT_EQ(large.rows, 20'001u);
  EXPECT_EQ(large.calls, small.calls);
}

TEST(JunkScanScaling, Ten_times_the_rules_make_ten_times_the_calls) {
  const Work few = ScanProfile(10'000, 1'000);
  const Work many = ScanProfile(10'000, 10'000);
  EXPECT_EQ(few.rows, 2'001u);
  EXPECT_EQ(many.rows, 20'001u);
  // What reading the document costs comes once.
  for (std::size_t i = 0; i < few.calls.size(); ++i) {
    EXPECT_LE(many.calls[i], 10 * few.calls[i]) << simulated::NameOf(kFileSystemCalls[i]);
  }
  // Attributes, a search, its entries and its end, and the file's time.
  EXPECT_LE(many.total, std::uint64_t{10'000} * 8);
  EXPECT_GE(many.total, std::uint64_t{10'000} * 4);
}

TEST(JunkScanScaling, A_list_asks_once_for_each_subfolder) {
  SimulatedWindows machine;
  for (int i = 0; i < 10'000; ++i) {
    machine.AddFile(u"C:\\d\\" + support::Wide(std::to_string(i)) + u"\\big\\a", "x");
    if (i % 10 == 0) {
      machine.AddFile(u"C:\\d\\" + support::Wide(std::to_string(i)) + u"\\Cache\\a", "x");
    }
  }
  machine.AddFile(kRulesPath, InCategory("<FolderList StartPath='C:\\d' EndPath='Cache'/>"));
  ScanHandle scan;
  EXPECT_EQ(scan.Start(JunkRequest()), QS_OK);
  EXPECT_EQ(scan_tests::RowCountOf(scan), 2'001u);
  EXPECT_EQ(machine.CallCount(Call::kFindFirst) + machine.CallCount(Call::kFindFirstBasic), 1'001u);
  // The start, each end, and the root of each walk.
  EXPECT_LE(machine.CallCount(Call::kQueryAttributes), 1u + 10'000u + 1'000u);
}

}  // namespace
}  // namespace quastel::junk_tests
