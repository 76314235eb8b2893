// What all five deletion exports demand of an item and of the folders above it.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "fs/deletion.h"
#include "fs/deletion_fixture.h"

namespace quastel::deletion_tests {
namespace {

using platform::kAttributeDirectory;
using platform::kAttributeReparsePoint;

using DeletionAncestors = EachDeletion;

INSTANTIATE_TEST_SUITE_P(All, DeletionAncestors, ::testing::ValuesIn(kExports),
                         support::CaseName());

TEST_P(DeletionAncestors, A_file_below_plain_folders_is_taken) {
  AddFile(u"C:\\a\\b\\f.txt");
  AddFile(u"C:\\a\\b\\g.txt");
  ExpectDone(u"C:\\a\\b\\f.txt", u"C:\\a\\b\\f.txt");
}

TEST_P(DeletionAncestors, A_file_directly_below_the_root_is_taken) {
  AddFile(u"C:\\f.txt");
  ExpectDone(u"C:\\f.txt", u"C:\\f.txt");
}

TEST_P(DeletionAncestors, Null_and_empty_are_refused_without_a_single_call) {
  windows_.SetRecording(true);
  EXPECT_EQ(GetParam().run(nullptr, kFile), 0);
  EXPECT_EQ(GetParam().run(u"", kFile), 0);
  EXPECT_EQ(CallsMade(windows_), Lines{});
}

TEST(UnsafeAncestor, Is_what_a_path_that_is_missing_has) {
  simulated::SimulatedWindows windows;
  EXPECT_TRUE(HasUnsafeAncestor(nullptr));
  EXPECT_TRUE(HasUnsafeAncestor(u""));
  EXPECT_FALSE(HasUnsafeAncestor(u"C:\\f.txt"));
  EXPECT_EQ(FindRemovable(nullptr), Removable::kNothing);
}

TEST_P(DeletionAncestors, A_text_without_a_full_path_is_refused) {
  ExpectRefused(u" ");
  EXPECT_EQ(windows_.CallCount(Call::kQueryAttributes), 0u);
}

TEST_P(DeletionAncestors, Every_folder_is_asked_for_from_the_parent_to_the_root_before_the_item) {
  AddFile(u"C:\\a\\b\\c\\f.txt");
  Lines calls = CallsOf(GetParam(), u"C:\\a\\b\\c\\f.txt");
  ASSERT_GE(calls.size(), 6u);
  calls.resize(6);
  EXPECT_EQ(calls,
            (Lines{"FullPathName C:\\a\\b\\c\\f.txt", "QueryAttributes C:\\a\\b\\c",
                   "QueryAttributes C:\\a\\b", "QueryAttributes C:\\a", "QueryAttributes C:\\",
                   GetParam().guarded ? "QueryFileFacts C:\\a\\b\\c\\f.txt"
                                      : "QueryAttributes C:\\a\\b\\c\\f.txt"}));
}

TEST_P(DeletionAncestors, The_full_path_is_asked_for_with_room_for_32768_units) {
  AddFile(u"C:\\a\\f.txt");
  CallsOf(GetParam(), u"C:\\a\\f.txt");
  ASSERT_FALSE(windows_.record().empty());
  EXPECT_EQ(windows_.record()[0].call, Call::kFullPathName);
  EXPECT_EQ(windows_.record()[0].number, 32768u);
}

TEST_P(DeletionAncestors, The_first_unsafe_folder_ends_the_questions) {
  AddFile(u"C:\\a\\b\\c\\f.txt");
  windows_.Deny(u"C:\\a\\b", {.querying = true});
  EXPECT_EQ(CallsOf(GetParam(), u"C:\\a\\b\\c\\f.txt"),
            (Lines{"FullPathName C:\\a\\b\\c\\f.txt", "QueryAttributes C:\\a\\b\\c",
                   "QueryAttributes C:\\a\\b"}));
  ExpectRefused(u"C:\\a\\b\\c\\f.txt");
}

TEST_P(DeletionAncestors, A_junction_anywhere_above_the_item_is_refused) {
  AddFile(u"C:\\real\\x\\y\\f.txt");
  windows_.AddLink(LinkKind::kJunction, u"C:\\j", u"C:\\real");
  windows_.AddLink(LinkKind::kJunction, u"C:\\real\\jx", u"C:\\real\\x");
  windows_.AddLink(LinkKind::kJunction, u"C:\\real\\x\\jy", u"C:\\real\\x\\y");
  ExpectRefused(u"C:\\j\\x\\y\\f.txt");
  ExpectRefused(u"C:\\real\\jx\\y\\f.txt");
  ExpectRefused(u"C:\\real\\x\\jy\\f.txt");
  ExpectRefused(u"\\\\?\\C:\\real\\x\\jy\\f.txt");
  ExpectDone(u"C:\\real\\x\\y\\f.txt", u"C:\\real\\x\\y\\f.txt");
}

TEST_P(DeletionAncestors, A_link_to_a_folder_above_the_item_is_refused) {
  AddFile(u"C:\\real\\x\\f.txt");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\link", u"C:\\real");
  ExpectRefused(u"C:\\link\\x\\f.txt");
}

TEST_P(DeletionAncestors, A_link_to_a_file_above_the_item_is_refused) {
  AddFile(u"C:\\real\\f.txt");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\link", u"C:\\real");
  ExpectRefused(u"C:\\link\\f.txt");
}

TEST_P(DeletionAncestors, A_folder_kept_in_the_cloud_above_the_item_is_refused) {
  windows_.AddFolder(u"C:\\cloud", {kAttributeDirectory | kAttributeReparsePoint, kUsualTime});
  AddFile(u"C:\\cloud\\f.txt");
  ExpectRefused(u"C:\\cloud\\f.txt");
}

TEST_P(DeletionAncestors, A_file_or_a_placeholder_above_the_item_is_refused) {
  AddFile(u"C:\\a\\f.txt");
  windows_.AddPlaceholder(u"C:\\a\\cloud", 5);
  ExpectRefused(u"C:\\a\\f.txt\\f.txt");
  ExpectRefused(u"C:\\a\\cloud\\f.txt");
}

TEST_P(DeletionAncestors, A_folder_that_is_missing_above_the_item_is_refused) {
  AddFile(u"C:\\a\\f.txt");
  ExpectRefused(u"C:\\a\\missing\\f.txt");
  ExpectRefused(u"C:\\missing\\missing\\f.txt");
}

TEST_P(DeletionAncestors, A_folder_that_cannot_be_queried_above_the_item_is_refused) {
  AddFile(u"C:\\a\\b\\f.txt");
  windows_.Deny(u"C:\\a", {.querying = true});
  ExpectRefused(u"C:\\a\\b\\f.txt");
  windows_.Deny(u"C:\\a", {.listing = true, .opening = true, .deleting = true});
  ExpectDone(u"C:\\a\\b\\f.txt", u"C:\\a\\b\\f.txt");
}

TEST_P(DeletionAncestors, Other_attributes_of_the_folders_make_no_difference) {
  AddFile(u"C:\\a\\f.txt");
  windows_.SetAttributes(u"C:\\a", platform::kAttributeHidden | platform::kAttributeSystem |
                                       platform::kAttributeReadOnly | platform::kAttributeOffline);
  ExpectDone(u"C:\\a\\f.txt", u"C:\\a\\f.txt");
}

TEST_P(DeletionAncestors, A_root_that_is_missing_is_refused) {
  ExpectRefused(u"Q:\\a\\f.txt");
  ExpectRefused(u"Q:\\f.txt");
  ExpectRefused(u"\\\\nobody\\share\\f.txt");
}

TEST_P(DeletionAncestors, A_root_that_cannot_be_queried_is_refused) {
  AddFile(u"C:\\a\\f.txt");
  windows_.Deny(u"C:\\", {.querying = true});
  ExpectRefused(u"C:\\a\\f.txt");
  AddFile(u"C:\\f.txt");
  ExpectRefused(u"C:\\f.txt");
}

// ---- What the item itself may be

TEST_P(DeletionAncestors, An_item_that_is_a_link_is_refused) {
  AddFile(u"C:\\real\\f.txt");
  windows_.AddFolder(u"C:\\empty");
  windows_.AddLink(LinkKind::kJunction, u"C:\\d\\junction", u"C:\\empty");
  windows_.AddLink(LinkKind::kFolderLink, u"C:\\d\\folder", u"C:\\empty");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\d\\file", u"C:\\real\\f.txt");
  windows_.AddLink(LinkKind::kJunction, u"C:\\d\\loose", u"C:\\nowhere");
  for (const Char* path : {u"C:\\d\\junction", u"C:\\d\\folder", u"C:\\d\\file", u"C:\\d\\loose",
                           u"C:\\d\\junction\\", u"\\\\?\\C:\\d\\junction"}) {
    ExpectRefused(path, {0, TicksFor(kUsualTime)});
    ExpectRefused(path);
  }
}

TEST_P(DeletionAncestors, An_item_kept_in_the_cloud_is_refused) {
  windows_.AddPlaceholder(u"C:\\d\\cloud", 5);
  ExpectRefused(u"C:\\d\\cloud");
  windows_.AddFolder(u"C:\\d\\folder", {kAttributeDirectory | kAttributeReparsePoint, kUsualTime});
  ExpectRefused(u"C:\\d\\folder");
}

TEST_P(DeletionAncestors, An_item_that_is_missing_or_cannot_be_queried_is_refused) {
  AddFile(u"C:\\d\\f.txt");
  ExpectRefused(u"C:\\d\\missing.txt");
  ExpectRefused(u"C:\\d\\f*.txt");
  ExpectRefused(u"C:\\d\\?.txt");
  windows_.Deny(u"C:\\d\\f.txt", {.querying = true});
  ExpectRefused(u"C:\\d\\f.txt");
}

TEST_P(DeletionAncestors, A_root_itself_is_refused) {
  windows_.AddDrive('E');
  windows_.AddShare(u"\\\\srv\\share");
  for (const Char* path : {u"C:\\",
                           u"C:",
                           u"c:/",
                           u"E:\\",
                           u"E:",
                           u"\\",
                           u"/",
                           u"\\\\?\\E:\\",
                           u"\\\\?\\E:",
                           u"\\\\srv\\share",
                           u"\\\\srv\\share\\",
                           u"\\\\?\\UNC\\srv\\share",
                           u"\\\\?\\UNC\\srv\\share\\",
                           u"\\\\?\\UNC\\srv",
                           u"\\\\srv",
                           u"\\\\srv\\",
                           u"\\\\",
                           u"\\\\?\\",
                           u"\\\\?\\UNC\\",
                           u"\\\\?\\x",
                           u"E:\\.",
                           u"E:\\a\\..",
                           u"\\\\.\\E:"}) {
    ExpectRefused(path, {0, TicksFor(0)});
  }
}

TEST_P(DeletionAncestors, A_full_path_that_cannot_be_had_is_refused) {
  AddFile(u"C:\\a\\f");
  windows_.FailCall(Call::kFullPathName, 1);
  ExpectRefused(u"C:\\a\\f");
  EXPECT_EQ(windows_.CallCount(Call::kQueryAttributes), 0u);
  windows_.ClearFaults();
  ExpectDone(u"C:\\a\\f", u"C:\\a\\f");
}

TEST_P(DeletionAncestors, Threads_do_not_disturb_each_other) {
  constexpr int kThreads = 4;
  constexpr int kFiles = 25;
  for (int t = 0; t < kThreads; ++t) {
    for (int i = 0; i < kFiles; ++i) {
      AddFile(u"C:\\d\\" + support::Wide(std::to_string(t)) + u"\\" +
              support::Wide(std::to_string(i)));
    }
  }
  std::atomic<int> done{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kFiles; ++i) {
        const Text path = u"C:\\d\\" + support::Wide(std::to_string(t)) + u"\\" +
                          support::Wide(std::to_string(i));
        done += GetParam().run(path.c_str(), kFile);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(done.load(), kThreads * kFiles);
  for (int t = 0; t < kThreads; ++t) {
    EXPECT_EQ(windows_.NamesIn(u"C:\\d\\" + support::Wide(std::to_string(t))).size(),
              GetParam().removes ? 0u : std::size_t{kFiles});
  }
}

}  // namespace
}  // namespace quastel::deletion_tests
