// qs_move_to_recycle_bin: which way a file takes into the bin, and what counts as done.

#include <string>

#include "fs/deletion_fixture.h"
#include "platform/file.h"

namespace quastel::deletion_tests {
namespace {

using platform::Error;

const Text kFilePath = u"C:\\d\\File.txt";

class RecycleBinMove : public DeletionTest {
 protected:
  RecycleBinMove() { AddFile(kFilePath); }

  std::int32_t Move(const Text& path = kFilePath) { return Run(kMoveToRecycleBin, path); }
  void ExpectRefused(const Text& path = kFilePath) {
    DeletionTest::ExpectRefused(kMoveToRecycleBin, path);
  }
  void ExpectDone(const Text& path = kFilePath) {
    DeletionTest::ExpectDone(kMoveToRecycleBin, path, path);
  }
  std::uint64_t ShellDeletes() const { return windows_.CallCount(Call::kShellDelete); }
};

TEST_F(RecycleBinMove, A_file_goes_into_the_bin_by_the_operation_object_alone) {
  AddFile(u"C:\\d\\File.txt.bak");
  ExpectDone();
  EXPECT_EQ(ShellDeletes(), 0u);
  EXPECT_EQ(windows_.CallCount(Call::kRemoveFile), 0u);
}

TEST_F(RecycleBinMove, The_calls_for_a_file) {
  EXPECT_EQ(CallsOf(kMoveToRecycleBin, kFilePath),
            (Lines{"FullPathName C:\\d\\File.txt", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                   "QueryAttributes C:\\d\\File.txt", "InitializeCom", "CreateFileOperation",
                   "SetOperationFlags 0x3654", "CreateShellItem C:\\d\\File.txt", "MarkForDeletion",
                   "PerformOperations", "QueryOperationsAborted", "UninitializeCom",
                   "QueryAttributes C:\\d\\File.txt"}));
}

TEST_F(RecycleBinMove, An_empty_folder_goes_for_good_without_the_shell) {
  windows_.AddFolder(u"C:\\d\\empty");
  EXPECT_EQ(CallsOf(kMoveToRecycleBin, u"C:\\d\\empty"),
            (Lines{"FullPathName C:\\d\\empty", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                   "QueryAttributes C:\\d\\empty", "RemoveFolder C:\\d\\empty"}));
  EXPECT_FALSE(windows_.Exists(u"C:\\d\\empty"));
  EXPECT_TRUE(windows_.recycled().empty());
}

TEST_F(RecycleBinMove, A_folder_with_anything_in_it_stays_and_the_shell_is_not_asked) {
  windows_.AddFolder(u"C:\\d\\sub\\empty");
  ExpectRefused(u"C:\\d");
  ExpectRefused(u"C:\\d\\sub");
  EXPECT_EQ(windows_.CallCount(Call::kInitializeCom), 0u);
  EXPECT_EQ(ShellDeletes(), 0u);
}

TEST_F(RecycleBinMove, What_is_not_plain_never_reaches_the_shell) {
  windows_.AddLink(LinkKind::kJunction, u"C:\\j", u"C:\\d");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\l", kFilePath);
  windows_.AddPlaceholder(u"C:\\p", 1);
  for (const Char* path : {u"C:\\j", u"C:\\l", u"C:\\p", u"C:\\j\\File.txt", u"C:\\missing"}) {
    ExpectRefused(path);
  }
  EXPECT_EQ(windows_.CallCount(Call::kInitializeCom), 0u);
  EXPECT_EQ(ShellDeletes(), 0u);
}

// The shell asks nobody, and the library does not change the attribute for it.
TEST_F(RecycleBinMove, A_read_only_file_is_what_the_shell_takes_it_for) {
  windows_.SetAttributes(kFilePath, platform::kAttributeReadOnly);
  windows_.SetHook([this](const simulated::CallRecord& record) {
    if (record.call == Call::kPerformOperations) {
      EXPECT_EQ(windows_.Find(kFilePath)->attributes, platform::kAttributeReadOnly);
    }
  });
  ExpectDone();
  windows_.SetHook(nullptr);
}

TEST_F(RecycleBinMove, A_file_in_use_stays) {
  windows_.Lock(kFilePath, platform::kShareRead);
  ExpectRefused();
  EXPECT_EQ(ShellDeletes(), 1u);
  windows_.Unlock(kFilePath);
  ExpectDone();
}

TEST_F(RecycleBinMove, A_file_that_may_not_be_deleted_stays) {
  windows_.Deny(kFilePath, {.deleting = true});
  ExpectRefused();
  EXPECT_EQ(ShellDeletes(), 1u);
}

// ---- The second way

TEST_F(RecycleBinMove, The_calls_when_the_operation_reports_success_and_the_file_is_still_there) {
  windows_.SetRecyclingIneffective(true);
  EXPECT_EQ(CallsOf(kMoveToRecycleBin, kFilePath),
            (Lines{"FullPathName C:\\d\\File.txt", "QueryAttributes C:\\d", "QueryAttributes C:\\",
                   "QueryAttributes C:\\d\\File.txt", "InitializeCom", "CreateFileOperation",
                   "SetOperationFlags 0x3654", "CreateShellItem C:\\d\\File.txt", "MarkForDeletion",
                   "PerformOperations", "QueryOperationsAborted", "UninitializeCom",
                   "QueryAttributes C:\\d\\File.txt", "FullPathName C:\\d\\File.txt",
                   "ShellDelete C:\\d\\File.txt 0x3454"}));
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{kFilePath});
}

TEST_F(RecycleBinMove, After_an_operation_without_effect_the_second_way_decides) {
  windows_.SetRecyclingIneffective(true);
  ExpectDone();
  AddFile(kFilePath);
  windows_.SetShellDeleteResult(0x75, false, true);
  ExpectRefused();
  windows_.SetShellDeleteResult(0, true, true);
  ExpectRefused();
}

TEST_F(RecycleBinMove, The_calls_after_an_aborted_operation_do_not_ask_for_the_file) {
  windows_.SetOperationsAborted(true);
  Lines calls = CallsOf(kMoveToRecycleBin, kFilePath);
  ASSERT_GE(calls.size(), 4u);
  calls.erase(calls.begin(), calls.end() - 4);
  EXPECT_EQ(calls, (Lines{"QueryOperationsAborted", "UninitializeCom",
                          "FullPathName C:\\d\\File.txt", "ShellDelete C:\\d\\File.txt 0x3454"}));
}

TEST_F(RecycleBinMove, After_an_aborted_operation_the_second_way_decides) {
  windows_.SetOperationsAborted(true);
  ExpectDone();
  AddFile(kFilePath);
  windows_.SetShellDeleteResult(0x4C7, false, true);
  ExpectRefused();
}

TEST_F(RecycleBinMove, Any_code_but_0_and_any_abort_of_the_second_way_answers_0) {
  windows_.SetOperationsAborted(true);
  for (const std::int32_t code : {1, 2, 5, 0x71, 0x7C, 0x10000, -1}) {
    windows_.SetShellDeleteResult(code, false, true);
    ExpectRefused();
    windows_.SetShellDeleteResult(code, true, true);
    ExpectRefused();
  }
  windows_.SetShellDeleteResult(0, true, true);
  ExpectRefused();
}

// The second way is believed: what it reports is the answer.
TEST_F(RecycleBinMove, A_second_way_that_reports_success_is_not_checked) {
  windows_.SetOperationsAborted(true);
  windows_.SetShellDeleteResult(0, false, false);
  const std::string before = windows_.Describe();
  EXPECT_EQ(Move(), 1);
  EXPECT_EQ(windows_.Describe(), before);
  EXPECT_EQ(CallsOf(kMoveToRecycleBin, kFilePath).back(), "ShellDelete C:\\d\\File.txt 0x3454");
}

TEST_F(RecycleBinMove, The_second_way_gets_the_absolute_path) {
  windows_.SetCurrentFolder(u"C:\\d");
  windows_.SetOperationsAborted(true);
  for (const auto& [given, absolute] : {std::pair(u"File.txt", "C:\\d\\File.txt"),
                                        std::pair(u"c:/D/x/../FILE.TXT", "c:\\D\\FILE.TXT"),
                                        std::pair(u".\\file.TXT. .", "C:\\d\\file.TXT")}) {
    const Lines calls = CallsOf(kMoveToRecycleBin, given);
    EXPECT_EQ(calls.back(), std::string("ShellDelete ") + absolute + " 0x3454");
    EXPECT_EQ(calls[calls.size() - 2], "FullPathName " + Utf8(given));
    EXPECT_FALSE(windows_.Exists(kFilePath));
    AddFile(kFilePath);
  }
}

TEST_F(RecycleBinMove, The_second_way_asks_for_the_absolute_path_with_room_for_32768_units) {
  windows_.SetOperationsAborted(true);
  CallsOf(kMoveToRecycleBin, kFilePath);
  int asked = 0;
  for (const simulated::CallRecord& record : windows_.record()) {
    if (record.call == Call::kFullPathName) {
      EXPECT_EQ(record.number, 32768u);
      ++asked;
    }
  }
  EXPECT_EQ(asked, 2);
}

// The list of the second way ends with its second terminator: nothing behind it is a path.
TEST_F(RecycleBinMove, The_second_way_gets_one_path_and_no_other) {
  windows_.SetOperationsAborted(true);
  AddFile(u"C:\\d\\a_rather_long_name_that_stood_there_before");
  AddFile(u"C:\\f");
  EXPECT_EQ(Move(u"C:\\d\\a_rather_long_name_that_stood_there_before"), 1);
  EXPECT_EQ(Move(u"C:\\f"), 1);
  EXPECT_EQ(Move(u"C:\\d\\..\\d\\.\\File.txt"), 1);
  EXPECT_EQ(Utf8(windows_.recycled()), (Lines{"C:\\d\\a_rather_long_name_that_stood_there_before",
                                              "C:\\f", "C:\\d\\File.txt"}));
}

TEST_F(RecycleBinMove, Without_an_absolute_path_there_is_no_second_way) {
  windows_.SetOperationsAborted(true);
  windows_.FailCall(Call::kFullPathName, 2);
  ExpectRefused();
  EXPECT_EQ(ShellDeletes(), 0u);
}

// The operation object cannot read such a spelling, so these always take the second way.
TEST_F(RecycleBinMove, Slashes_and_relative_paths_reach_the_bin_all_the_same) {
  windows_.SetCurrentFolder(u"C:\\d");
  DeletionTest::ExpectDone(kMoveToRecycleBin, u"C:/d/File.txt", kFilePath);
  AddFile(kFilePath);
  DeletionTest::ExpectDone(kMoveToRecycleBin, u"File.txt", kFilePath);
  EXPECT_EQ(ShellDeletes(), 2u);
}

// ---- Extended paths

TEST_F(RecycleBinMove, The_item_of_an_extended_path_is_made_again_without_the_prefix) {
  const Lines calls = CallsOf(kMoveToRecycleBin, u"\\\\?\\C:\\d\\File.txt");
  EXPECT_EQ(calls,
            (Lines{"FullPathName \\\\?\\C:\\d\\File.txt", "QueryAttributes \\\\?\\C:\\d",
                   "QueryAttributes \\\\?\\C:\\", "QueryAttributes \\\\?\\C:\\d\\File.txt",
                   "InitializeCom", "CreateFileOperation", "SetOperationFlags 0x3654",
                   "CreateShellItem \\\\?\\C:\\d\\File.txt", "CreateShellItem C:\\d\\File.txt",
                   "MarkForDeletion", "PerformOperations", "QueryOperationsAborted",
                   "UninitializeCom", "QueryAttributes \\\\?\\C:\\d\\File.txt"}));
  EXPECT_EQ(windows_.recycled(), std::vector<Text>{kFilePath});
}

TEST_F(RecycleBinMove, The_item_of_an_extended_share_is_made_again_with_two_separators) {
  windows_.AddShare(u"\\\\srv\\share");
  for (const Char* prefix : {u"\\\\?\\UNC", u"\\\\?\\unc", u"\\\\?\\Unc"}) {
    AddFile(u"\\\\srv\\share\\d\\f");
    const Lines calls = CallsOf(kMoveToRecycleBin, prefix + Text(u"\\srv\\share\\d\\f"));
    const auto first = std::find(calls.begin(), calls.end(),
                                 "CreateShellItem " + Utf8(prefix) + "\\srv\\share\\d\\f");
    ASSERT_NE(first, calls.end());
    EXPECT_EQ(*(first + 1), "CreateShellItem \\\\srv\\share\\d\\f");
    EXPECT_EQ(*(first + 2), "MarkForDeletion");
    EXPECT_FALSE(windows_.Exists(u"\\\\srv\\share\\d\\f"));
  }
  EXPECT_EQ(windows_.recycled().size(), 3u);
}

TEST_F(RecycleBinMove, An_item_that_is_made_at_once_is_not_made_again) {
  EXPECT_EQ(Move(), 1);
  EXPECT_EQ(windows_.CallCount(Call::kCreateShellItem), 1u);
}

TEST_F(RecycleBinMove, A_plain_path_is_not_parsed_a_second_time) {
  windows_.FailCall(Call::kCreateShellItem, 1);
  ExpectDone();
  EXPECT_EQ(windows_.CallCount(Call::kCreateShellItem), 1u);
  EXPECT_EQ(ShellDeletes(), 1u);
}

TEST_F(RecycleBinMove, A_share_is_not_parsed_a_second_time) {
  windows_.AddShare(u"\\\\srv\\share");
  AddFile(u"\\\\srv\\share\\f");
  windows_.FailCall(Call::kCreateShellItem, 1);
  ExpectDone(u"\\\\srv\\share\\f");
  EXPECT_EQ(windows_.CallCount(Call::kCreateShellItem), 1u);
  EXPECT_EQ(ShellDeletes(), 1u);
}

TEST_F(RecycleBinMove, A_second_item_that_cannot_be_made_is_the_end_of_an_extended_path) {
  windows_.FailCall(Call::kCreateShellItem, 1, Repeat::kFromThenOn);
  ExpectRefused(u"\\\\?\\C:\\d\\File.txt");
  EXPECT_EQ(windows_.CallCount(Call::kCreateShellItem), 2u);
  EXPECT_EQ(windows_.CallCount(Call::kMarkForDeletion), 0u);
  EXPECT_EQ(windows_.CallCount(Call::kUninitializeCom), 1u);
  EXPECT_EQ(ShellDeletes(), 0u);
}

TEST_F(RecycleBinMove, An_extended_path_has_no_second_way) {
  windows_.AddShare(u"\\\\srv\\share");
  AddFile(u"\\\\srv\\share\\f");
  windows_.SetOperationsAborted(true);
  ExpectRefused(u"\\\\?\\C:\\d\\File.txt");
  ExpectRefused(u"\\\\?\\UNC\\srv\\share\\f");
  ExpectRefused(u"\\\\?\\unc\\srv\\share\\f");
  windows_.SetOperationsAborted(false);
  windows_.SetRecyclingIneffective(true);
  ExpectRefused(u"\\\\?\\C:\\d\\File.txt");
  EXPECT_EQ(ShellDeletes(), 0u);
}

TEST_F(RecycleBinMove, A_path_of_300_units_goes_by_the_operation_object_alone) {
  const Text path = support::NestedTo(300, u"C:");
  AddFile(path);
  ExpectDone(path);
  AddFile(path);
  windows_.SetOperationsAborted(true);
  ExpectRefused(path);
  windows_.SetOperationsAborted(false);
  windows_.SetRecyclingIneffective(true);
  ExpectRefused(path);
  windows_.SetRecyclingIneffective(false);
  windows_.ClearFaults();
  windows_.FailCall(Call::kInitializeCom, 1);
  ExpectRefused(path);
  EXPECT_EQ(ShellDeletes(), 0u);
}

TEST_F(RecycleBinMove, The_second_way_ends_at_247_units) {
  windows_.SetOperationsAborted(true);
  for (const std::size_t length : {std::size_t{247}, std::size_t{248}}) {
    const Text path = support::NestedTo(length, u"C:");
    AddFile(path);
    if (length == 247) {
      ExpectDone(path);
      EXPECT_EQ(ShellDeletes(), 1u);
    } else {
      ExpectRefused(path);
      EXPECT_EQ(ShellDeletes(), 1u);
    }
  }
}

TEST_F(RecycleBinMove, A_long_path_on_a_share_loses_its_prefix_for_the_second_item) {
  windows_.AddShare(u"\\\\srv\\share");
  const Text path = support::NestedTo(300, u"\\\\srv\\share");
  AddFile(path);
  windows_.SetRecording(true);
  ExpectDone(path);
  EXPECT_EQ(windows_.CallCountFor(Call::kCreateShellItem, u"\\\\?\\UNC" + path.substr(1)), 1u);
  EXPECT_EQ(windows_.CallCountFor(Call::kCreateShellItem, path), 1u);
}

// Without its prefix the path would name the neighbour: the system drops a dot or a blank there.
TEST_F(RecycleBinMove, A_name_that_ends_in_a_dot_or_a_blank_is_not_its_neighbour) {
  for (const Char* tail : {u".", u" ", u". "}) {
    const Text other = kFilePath + tail;
    AddFile(kFilePath);
    AddFile(other);
    const Lines before = DiskOf(windows_);
    const std::int32_t answer = Move(u"\\\\?\\" + other);
    EXPECT_TRUE(windows_.Exists(kFilePath)) << "another file than the named one has gone";
    EXPECT_EQ(answer, windows_.Exists(other) ? 0 : 1);
    EXPECT_EQ(NewSince(before, windows_), Lines{});
    if (windows_.Exists(other)) {
      windows_.Remove(other);
    }
  }
}

TEST_F(RecycleBinMove, A_folder_whose_name_ends_in_a_dot_is_not_its_neighbour) {
  AddFile(u"C:\\d.\\File.txt");
  const Lines before = DiskOf(windows_);
  const std::int32_t answer = Move(u"\\\\?\\C:\\d.\\File.txt");
  EXPECT_TRUE(windows_.Exists(kFilePath)) << "another file than the named one has gone";
  EXPECT_EQ(answer, windows_.Exists(u"C:\\d.\\File.txt") ? 0 : 1);
  EXPECT_EQ(NewSince(before, windows_), Lines{});
}

// ---- The guarded form

TEST_F(RecycleBinMove, The_guarded_form_takes_both_ways) {
  DeletionTest::ExpectDone(kMoveSnapshotToRecycleBin, kFilePath, kFilePath);
  AddFile(kFilePath);
  windows_.SetOperationsAborted(true);
  DeletionTest::ExpectDone(kMoveSnapshotToRecycleBin, kFilePath, kFilePath);
  EXPECT_EQ(ShellDeletes(), 1u);
}

TEST_F(RecycleBinMove, The_guarded_form_never_removes_a_folder) {
  windows_.AddFolder(u"C:\\d\\empty");
  DeletionTest::ExpectRefused(kMoveSnapshotToRecycleBin, u"C:\\d\\empty",
                              {0, TicksFor(kUsualTime)});
  EXPECT_EQ(windows_.CallCount(Call::kRemoveFolder), 0u);
}

}  // namespace
}  // namespace quastel::deletion_tests
