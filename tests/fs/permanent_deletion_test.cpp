// qs_delete_permanently and qs_delete_snapshot_permanently: files and empty folders for good.

#include <string>

#include "fs/deletion_fixture.h"
#include "platform/file.h"

namespace quastel::deletion_tests {
namespace {

using platform::Error;

class PermanentDeletion : public DeletionTest {
 protected:
  void ExpectRefused(const Text& path) { DeletionTest::ExpectRefused(kDeletePermanently, path); }
  void ExpectDone(const Text& path) { DeletionTest::ExpectDone(kDeletePermanently, path, path); }
};

TEST_F(PermanentDeletion, A_file_goes_for_good_and_not_into_the_bin) {
  AddFile(u"C:\\d\\f");
  AddFile(u"C:\\d\\f.txt");
  AddFile(u"C:\\d\\g");
  ExpectDone(u"C:\\d\\f");
  EXPECT_EQ(windows_.CallCount(Call::kInitializeCom), 0u);
  EXPECT_EQ(windows_.CallCount(Call::kShellDelete), 0u);
}

TEST_F(PermanentDeletion, An_empty_folder_goes) {
  windows_.AddFolder(u"C:\\d\\empty");
  windows_.AddFolder(u"C:\\d\\other");
  ExpectDone(u"C:\\d\\empty");
  EXPECT_EQ(DeletionTest::Run(kDeletePermanently, u"C:\\d\\other\\"), 1);
  EXPECT_EQ(windows_.NamesIn(u"C:\\d"), std::vector<Text>{});
}

TEST_F(PermanentDeletion, A_folder_with_anything_in_it_stays) {
  AddFile(u"C:\\d\\a\\f");
  windows_.AddFolder(u"C:\\d\\b\\sub");
  windows_.AddLink(LinkKind::kJunction, u"C:\\d\\c\\j", u"C:\\d\\a");
  for (const Char* path : {u"C:\\d\\a", u"C:\\d\\b", u"C:\\d\\c", u"C:\\d\\a\\"}) {
    ExpectRefused(path);
  }
}

TEST_F(PermanentDeletion, The_calls_for_a_file) {
  AddFile(u"C:\\a\\b\\f");
  EXPECT_EQ(
      CallsOf(kDeletePermanently, u"C:\\a\\b\\f"),
      (Lines{"FullPathName C:\\a\\b\\f", "QueryAttributes C:\\a\\b", "QueryAttributes C:\\a",
             "QueryAttributes C:\\", "QueryAttributes C:\\a\\b\\f", "RemoveFile C:\\a\\b\\f"}));
}

TEST_F(PermanentDeletion, The_calls_for_a_folder) {
  windows_.AddFolder(u"C:\\a\\b");
  EXPECT_EQ(CallsOf(kDeletePermanently, u"C:\\a\\b"),
            (Lines{"FullPathName C:\\a\\b", "QueryAttributes C:\\a", "QueryAttributes C:\\",
                   "QueryAttributes C:\\a\\b", "RemoveFolder C:\\a\\b"}));
}

// With its separator at the end the folder's own name is the first that is looked at from above.
TEST_F(PermanentDeletion, The_calls_for_a_folder_with_a_separator_at_its_end) {
  windows_.AddFolder(u"C:\\a\\b");
  EXPECT_EQ(CallsOf(kDeletePermanently, u"C:\\a/b/"),
            (Lines{"FullPathName C:\\a/b/", "QueryAttributes C:\\a\\b", "QueryAttributes C:\\a",
                   "QueryAttributes C:\\", "QueryAttributes C:\\a/b/", "RemoveFolder C:\\a/b/"}));
}

TEST_F(PermanentDeletion, The_calls_for_a_long_path) {
  const Text path = u"C:\\" + Text(200, Char{'n'}) + u"\\" + Text(60, Char{'f'});
  AddFile(path);
  const std::string form = "\\\\?\\" + Utf8(path);
  EXPECT_EQ(CallsOf(kDeletePermanently, path),
            (Lines{"FullPathName " + Utf8(path), "FullPathName " + form,
                   "QueryAttributes " + form.substr(0, 207), "QueryAttributes \\\\?\\C:\\",
                   "QueryAttributes " + form, "RemoveFile " + form}));
}

TEST_F(PermanentDeletion, The_calls_for_a_long_path_on_a_share) {
  windows_.AddShare(u"\\\\srv\\share");
  const Text path = u"\\\\srv\\share\\" + Text(200, Char{'n'}) + u"\\" + Text(60, Char{'f'});
  AddFile(path);
  const std::string form = "\\\\?\\UNC" + Utf8(path.substr(1));
  EXPECT_EQ(
      CallsOf(kDeletePermanently, path),
      (Lines{"FullPathName " + Utf8(path), "FullPathName " + form,
             "QueryAttributes " + form.substr(0, 218), "QueryAttributes \\\\?\\UNC\\srv\\share\\",
             "QueryAttributes " + form, "RemoveFile " + form}));
}

TEST_F(PermanentDeletion, A_short_path_reaches_the_system_as_it_is_spelled) {
  AddFile(u"C:\\a\\f");
  const Lines calls = CallsOf(kDeletePermanently, u"c:/A/./F");
  EXPECT_EQ(calls.back(), "RemoveFile c:/A/./F");
  EXPECT_FALSE(windows_.Exists(u"C:\\a\\f"));
}

TEST_F(PermanentDeletion, What_is_not_plain_is_not_even_tried) {
  AddFile(u"C:\\d\\f");
  windows_.AddLink(LinkKind::kJunction, u"C:\\d\\j", u"C:\\d");
  windows_.AddLink(LinkKind::kFileLink, u"C:\\d\\l", u"C:\\d\\f");
  windows_.AddPlaceholder(u"C:\\d\\p", 1);
  for (const Char* path : {u"C:\\d\\j", u"C:\\d\\l", u"C:\\d\\p", u"C:\\d\\j\\f", u"C:\\d\\missing",
                           u"C:\\missing\\f"}) {
    ExpectRefused(path);
  }
  EXPECT_EQ(windows_.CallCount(Call::kRemoveFile), 0u);
  EXPECT_EQ(windows_.CallCount(Call::kRemoveFolder), 0u);
}

TEST_F(PermanentDeletion, The_target_of_a_junction_stays_as_it_is) {
  windows_.AddFolder(u"C:\\target");
  windows_.AddLink(LinkKind::kJunction, u"C:\\j", u"C:\\target");
  ExpectRefused(u"C:\\j");
  ExpectRefused(u"C:\\j\\");
  ExpectDone(u"C:\\target");
}

TEST_F(PermanentDeletion, A_read_only_file_stays_and_stays_read_only) {
  AddFile(u"C:\\d\\f");
  windows_.SetAttributes(u"C:\\d\\f", platform::kAttributeReadOnly);
  ExpectRefused(u"C:\\d\\f");
  EXPECT_EQ(windows_.CallCount(Call::kRemoveFile), 1u) << "tried once, as it is";
}

TEST_F(PermanentDeletion, A_read_only_folder_stays) {
  windows_.AddFolder(u"C:\\d\\empty");
  windows_.SetAttributes(u"C:\\d\\empty", platform::kAttributeReadOnly);
  ExpectRefused(u"C:\\d\\empty");
}

TEST_F(PermanentDeletion, A_hidden_system_file_goes) {
  windows_.AddFile(u"C:\\d\\f", "x",
                   {.attributes = platform::kAttributeHidden | platform::kAttributeSystem});
  ExpectDone(u"C:\\d\\f");
}

TEST_F(PermanentDeletion, A_file_in_use_stays_unless_its_user_shares_deletion) {
  AddFile(u"C:\\d\\f");
  windows_.Lock(u"C:\\d\\f", platform::kShareRead | platform::kShareWrite);
  ExpectRefused(u"C:\\d\\f");
  windows_.Unlock(u"C:\\d\\f");
  windows_.Lock(u"C:\\d\\f", platform::kShareDelete);
  ExpectDone(u"C:\\d\\f");
}

TEST_F(PermanentDeletion, What_may_not_be_deleted_stays) {
  AddFile(u"C:\\d\\f");
  windows_.AddFolder(u"C:\\d\\empty");
  windows_.Deny(u"C:\\d\\f", {.deleting = true});
  windows_.Deny(u"C:\\d\\empty", {.deleting = true});
  ExpectRefused(u"C:\\d\\f");
  ExpectRefused(u"C:\\d\\empty");
}

TEST_F(PermanentDeletion, The_current_folder_stays) {
  windows_.AddFolder(u"C:\\work\\here");
  windows_.SetCurrentFolder(u"C:\\work\\here");
  ExpectRefused(u"C:\\work\\here");
  ExpectRefused(u".");
}

TEST_F(PermanentDeletion, Nothing_is_tried_twice) {
  AddFile(u"C:\\d\\f");
  windows_.AddFolder(u"C:\\d\\empty");
  for (const Error error : {Error::kSharingViolation, Error::kAccessDenied, Error::kDiskFull,
                            Error::kFileNotFound, Error::kDirectoryNotEmpty}) {
    windows_.ClearFaults();
    windows_.ClearRecord();
    windows_.FailCall(Call::kRemoveFile, 1, Repeat::kOnce, error);
    windows_.FailCall(Call::kRemoveFolder, 1, Repeat::kOnce, error);
    ExpectRefused(u"C:\\d\\f");
    ExpectRefused(u"C:\\d\\empty");
    EXPECT_EQ(windows_.CallCount(Call::kRemoveFile), 1u);
    EXPECT_EQ(windows_.CallCount(Call::kRemoveFolder), 1u);
  }
}

// Only the extended-length form can name such a file, and it names no other.
TEST_F(PermanentDeletion, A_name_that_ends_in_a_dot_or_a_blank_is_not_its_neighbour) {
  for (const Char* tail : {u".", u" ", u". ", u"..."}) {
    AddFile(u"C:\\d\\f");
    AddFile(Text(u"C:\\d\\f") + tail);
    DeletionTest::ExpectDone(kDeletePermanently, Text(u"\\\\?\\C:\\d\\f") + tail,
                             Text(u"C:\\d\\f") + tail);
    AddFile(Text(u"C:\\d\\f") + tail);
    DeletionTest::ExpectDone(kDeletePermanently, Text(u"C:\\d\\f") + tail, u"C:\\d\\f");
    windows_.Remove(Text(u"C:\\d\\f") + tail);
  }
}

TEST_F(PermanentDeletion, The_extended_form_is_taken_by_the_letter) {
  AddFile(u"C:\\d\\f");
  for (const Char* path :
       {u"\\\\?\\C:\\d\\x\\..\\f", u"\\\\?\\C:\\d\\.\\f", u"\\\\?\\C:\\d\\\\f", u"\\\\?\\C:/d/f",
        u"\\\\?\\C:\\d/f", u"\\\\?\\d\\f", u"\\\\?\\C:d\\f", u"\\\\?\\UNC\\C:\\d\\f"}) {
    ExpectRefused(path);
  }
  DeletionTest::ExpectDone(kDeletePermanently, u"\\\\?\\C:\\d\\f", u"C:\\d\\f");
}

TEST_F(PermanentDeletion, Case_is_folded_by_the_system_beyond_ASCII_as_well) {
  AddFile(u"C:\\d\\\u00C4rger");
  DeletionTest::ExpectDone(kDeletePermanently, u"c:\\D\\\u00E4RGER", u"C:\\d\\\u00C4rger");
}

TEST_F(PermanentDeletion, A_name_of_half_a_surrogate_pair_is_a_name) {
  const Text path = u"C:\\d\\" + Text(1, Char{0xD800});
  AddFile(path);
  ExpectDone(path);
}

TEST_F(PermanentDeletion, A_second_deletion_answers_0) {
  AddFile(u"C:\\d\\f");
  ExpectDone(u"C:\\d\\f");
  ExpectRefused(u"C:\\d\\f");
}

TEST_F(PermanentDeletion, A_nest_of_folders_goes_from_the_inside) {
  windows_.AddFolder(u"C:\\a\\b\\c");
  ExpectRefused(u"C:\\a");
  ExpectDone(u"C:\\a\\b\\c");
  ExpectDone(u"C:\\a\\b");
  ExpectDone(u"C:\\a");
}

}  // namespace
}  // namespace quastel::deletion_tests
