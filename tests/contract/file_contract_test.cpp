#include "platform/file.h"

#include <gtest/gtest.h>

#include "contract/machine.h"
#include "contract/seam_use.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::CloseFile;
using platform::Disposition;
using platform::Error;
using platform::FileHandle;
using platform::kAccessQuery;
using platform::kAccessRead;
using platform::kAccessWrite;
using platform::kShareAll;
using platform::kShareRead;
using platform::OpenFile;
using platform::ReadFrom;
using platform::SeekTo;
using platform::WriteTo;

TEST(FileContract, Reading_goes_on_to_the_end_and_stays_there) {
  Machine machine;
  const auto file = OpenToRead(machine.MakeFile(QS_TEXT("f"), "0123456789"));
  ASSERT_TRUE(file.ok());
  char buffer[8] = {};
  EXPECT_EQ(ReadFrom(file.value(), buffer, 8).value(), 8u);
  EXPECT_EQ(std::string(buffer, 8), "01234567");
  EXPECT_EQ(ReadFrom(file.value(), buffer, 8).value(), 2u);
  EXPECT_EQ(std::string(buffer, 2), "89");
  const auto end = ReadFrom(file.value(), buffer, 8);
  EXPECT_TRUE(end.ok());
  EXPECT_EQ(end.value(), 0u);
}

TEST(FileContract, An_empty_file_reads_as_nothing) {
  Machine machine;
  const auto file = OpenToRead(machine.MakeFile(QS_TEXT("f"), ""));
  ASSERT_TRUE(file.ok());
  char buffer[1];
  EXPECT_TRUE(ReadFrom(file.value(), buffer, 1).ok());
  EXPECT_EQ(ReadFrom(file.value(), buffer, 1).value(), 0u);
  EXPECT_EQ(platform::QuerySize(file.value()).value(), 0);
}

TEST(FileContract, Seeking_is_from_the_beginning) {
  Machine machine;
  const auto file = OpenToRead(machine.MakeFile(QS_TEXT("f"), "0123456789"));
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(SeekTo(file.value(), 7), Error::kNone);
  EXPECT_EQ(ReadAll(file.value()), "789");
  EXPECT_EQ(SeekTo(file.value(), 0), Error::kNone);
  EXPECT_EQ(ReadAll(file.value()), "0123456789");
  EXPECT_EQ(SeekTo(file.value(), 1000), Error::kNone);
  EXPECT_EQ(ReadAll(file.value()), "");
  EXPECT_NE(SeekTo(file.value(), -1), Error::kNone);
}

TEST(FileContract, Offsets_and_sizes_go_beyond_four_gibibytes) {
  Machine machine;
  const auto file = OpenToRead(machine.MakeSparseFile(QS_TEXT("big"), 5'000'000'123));
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(platform::QuerySize(file.value()).value(), 5'000'000'123);
  EXPECT_EQ(SeekTo(file.value(), 5'000'000'120), Error::kNone);
  EXPECT_EQ(ReadAll(file.value()), std::string(3, '\0'));
}

TEST(FileContract, A_new_file_is_made_and_written) {
  Machine machine;
  const Text path = machine.Path(QS_TEXT("new"));
  {
    const auto file = OpenToWrite(path, Disposition::kCreateNew);
    ASSERT_TRUE(file.ok());
    EXPECT_EQ(WriteTo(file.value(), "hello ", 6).value(), 6u);
    EXPECT_EQ(WriteTo(file.value(), "world", 5).value(), 5u);
    EXPECT_EQ(platform::FlushFile(file.value()), Error::kNone);
    EXPECT_EQ(platform::QuerySize(file.value()).value(), 11);
    EXPECT_EQ(SeekTo(file.value(), 6), Error::kNone);
    EXPECT_EQ(ReadAll(file.value()), "world");
  }
  EXPECT_EQ(machine.ContentOf(path), "hello world");
}

TEST(FileContract, A_gap_in_writing_reads_as_zeros) {
  Machine machine;
  const Text path = machine.Path(QS_TEXT("new"));
  auto file = OpenToWrite(path, Disposition::kCreateNew);
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(SeekTo(file.value(), 3), Error::kNone);
  EXPECT_TRUE(WriteTo(file.value(), "x", 1).ok());
  EXPECT_EQ(CloseFile(std::move(file).value()), Error::kNone);
  EXPECT_EQ(machine.ContentOf(path), std::string("\0\0\0x", 4));
}

TEST(FileContract, Creating_anew_refuses_what_is_there) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "old");
  const auto file = OpenToWrite(path, Disposition::kCreateNew);
  EXPECT_EQ(file.error(), Error::kFileExists);
  EXPECT_FALSE(file.value().valid());
  EXPECT_EQ(machine.ContentOf(path), "old");
}

TEST(FileContract, Creating_always_empties_what_is_there) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "old content");
  auto file = OpenToWrite(path, Disposition::kCreateAlways);
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(platform::QuerySize(file.value()).value(), 0);
  EXPECT_TRUE(WriteTo(file.value(), "new", 3).ok());
  EXPECT_EQ(CloseFile(std::move(file).value()), Error::kNone);
  EXPECT_EQ(machine.ContentOf(path), "new");
  EXPECT_TRUE(OpenToWrite(machine.Path(QS_TEXT("g")), Disposition::kCreateAlways).ok());
  EXPECT_TRUE(machine.Exists(machine.Path(QS_TEXT("g"))));
}

TEST(FileContract, Missing_names_fail) {
  const Machine machine;
  EXPECT_EQ(OpenToRead(machine.Path(QS_TEXT("missing"))).error(), Error::kFileNotFound);
  EXPECT_EQ(OpenToRead(machine.Path(QS_TEXT("missing\\f"))).error(), Error::kPathNotFound);
  EXPECT_EQ(OpenToWrite(machine.Path(QS_TEXT("missing\\f")), Disposition::kCreateAlways).error(),
            Error::kPathNotFound);
}

TEST(FileContract, A_folder_cannot_be_opened_as_a_file) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  EXPECT_EQ(OpenToRead(folder).error(), Error::kAccessDenied);
}

// That it cannot be written is not so under Wine where the user of its host may do everything.
TEST(FileContract, A_read_only_file_can_be_read) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "x");
  machine.SetAttributes(path, platform::kAttributeReadOnly);
  const auto file = OpenToRead(path);
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(ReadAll(file.value()), "x");
}

TEST(FileContract, Sharing_must_agree_in_both_directions) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "x");
  machine.Lock(path, kShareRead);
  EXPECT_TRUE(OpenToRead(path, kShareAll).ok());
  EXPECT_EQ(OpenToRead(path, 0).error(), Error::kSharingViolation);
  EXPECT_EQ(OpenToWrite(path, Disposition::kOpenExisting).error(), Error::kSharingViolation);
  machine.Unlock(path);
  EXPECT_TRUE(OpenToWrite(path, Disposition::kOpenExisting).ok());
}

TEST(FileContract, A_file_without_read_sharing_cannot_be_read_but_asked) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "abc");
  machine.Lock(path, 0);
  EXPECT_EQ(OpenToRead(path).error(), Error::kSharingViolation);
  EXPECT_EQ(platform::QueryFileFacts(path.c_str()).value().size, 3u);
  const auto query = OpenFile(path.c_str(), kAccessQuery, kShareAll, Disposition::kOpenExisting, 0);
  ASSERT_TRUE(query.ok());
  EXPECT_EQ(platform::QuerySize(query.value()).value(), 3);
}

TEST(FileContract, Two_handles_of_one_process_must_share_too) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "abc");
  auto first = OpenToRead(path, kShareRead);
  ASSERT_TRUE(first.ok());
  EXPECT_TRUE(OpenToRead(path, kShareRead).ok());
  EXPECT_EQ(OpenToWrite(path, Disposition::kOpenExisting).error(), Error::kSharingViolation);
  EXPECT_EQ(platform::RemoveFile(path.c_str()), Error::kSharingViolation);
  first.value().Reset();
  EXPECT_EQ(platform::RemoveFile(path.c_str()), Error::kNone);
}

TEST(FileContract, A_handle_does_only_what_it_was_opened_for) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "abc");
  char buffer[4];
  const auto reader = OpenToRead(path);
  ASSERT_TRUE(reader.ok());
  EXPECT_EQ(WriteTo(reader.value(), "x", 1).error(), Error::kAccessDenied);
  const auto writer =
      OpenFile(path.c_str(), kAccessWrite, kShareAll, Disposition::kOpenExisting, 0);
  ASSERT_TRUE(writer.ok());
  EXPECT_EQ(ReadFrom(writer.value(), buffer, 4).error(), Error::kAccessDenied);
  EXPECT_EQ(machine.ContentOf(path), "abc");
}

TEST(FileContract, No_handle_is_an_invalid_handle) {
  const Machine machine;
  const FileHandle none;
  char buffer[4];
  EXPECT_EQ(ReadFrom(none, buffer, 4).error(), Error::kInvalidHandle);
  EXPECT_EQ(WriteTo(none, buffer, 4).error(), Error::kInvalidHandle);
  EXPECT_EQ(SeekTo(none, 0), Error::kInvalidHandle);
  EXPECT_EQ(platform::QuerySize(none).error(), Error::kInvalidHandle);
  EXPECT_EQ(platform::FlushFile(none), Error::kInvalidHandle);
}

TEST(FileContract, A_sequential_scan_reads_the_same) {
  Machine machine;
  const Text path = machine.MakeFile(QS_TEXT("f"), "abc");
  const auto file = OpenFile(path.c_str(), kAccessRead, kShareAll, Disposition::kOpenExisting,
                             platform::kAttributeNormal | platform::kFlagSequentialScan);
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(ReadAll(file.value()), "abc");
}

TEST(FileContract, A_file_below_a_link_is_the_target_s) {
  Machine machine;
  const Text target = machine.MakeFolder(QS_TEXT("target"));
  machine.MakeFile(QS_TEXT("target\\inside"), "abc");
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), target);
  const auto file = OpenToRead(link + QS_TEXT("\\inside"));
  ASSERT_TRUE(file.ok());
  EXPECT_EQ(ReadAll(file.value()), "abc");
}

}  // namespace
}  // namespace quastel::contract
