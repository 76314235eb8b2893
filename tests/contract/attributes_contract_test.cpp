#include <gtest/gtest.h>

#include "contract/machine.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::Error;
using platform::QueryAttributes;
using platform::QueryFileFacts;

TEST(AttributesContract, Files_and_folders_differ_by_the_directory_bit) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f.txt"), "x");
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  ASSERT_TRUE(QueryAttributes(file.c_str()).ok());
  EXPECT_FALSE(platform::IsDirectory(QueryAttributes(file.c_str()).value()));
  ASSERT_TRUE(QueryAttributes(folder.c_str()).ok());
  EXPECT_TRUE(platform::IsDirectory(QueryAttributes(folder.c_str()).value()));
  EXPECT_FALSE(platform::IsReparsePoint(QueryAttributes(folder.c_str()).value()));
}

TEST(AttributesContract, Names_are_found_in_any_case_and_with_any_separator) {
  Machine machine;
  machine.MakeFolder(QS_TEXT("Folder"));
  const Text file = machine.MakeFile(QS_TEXT("Folder\\File.TXT"), "x");
  Text slashes = machine.Path(QS_TEXT("fOLDER\\fILE.txt"));
  EXPECT_TRUE(QueryAttributes(slashes.c_str()).ok());
  for (Char& c : slashes) {
    c = c == Char{'\\'} ? Char{'/'} : c;
  }
  EXPECT_TRUE(QueryAttributes(slashes.c_str()).ok());
  EXPECT_TRUE(QueryAttributes((QS_TEXT("\\\\?\\") + file).c_str()).ok());
}

TEST(AttributesContract, Letters_beyond_ASCII_are_folded_as_well) {
  Machine machine;
  machine.MakeFile(Text{Char{0xC4}, Char{'x'}}, "x");
  EXPECT_TRUE(QueryAttributes(machine.Path(Text{Char{0xE4}, Char{'X'}}).c_str()).ok());
}

TEST(AttributesContract, A_missing_name_differs_from_a_missing_folder) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  const auto error = [&](TextView relative) {
    return QueryAttributes(machine.Path(relative).c_str()).error();
  };
  EXPECT_EQ(error(QS_TEXT("missing")), Error::kFileNotFound);
  EXPECT_EQ(error(QS_TEXT("missing\\f")), Error::kPathNotFound);
  EXPECT_EQ(error(QS_TEXT("f\\x")), Error::kPathNotFound);
  EXPECT_EQ(QueryAttributes(QS_TEXT("")).error(), Error::kPathNotFound);
}

TEST(AttributesContract, A_name_with_wildcards_is_not_possible) {
  const Machine machine;
  EXPECT_EQ(QueryAttributes(machine.Path(QS_TEXT("a*")).c_str()).error(), Error::kInvalidName);
  EXPECT_EQ(QueryAttributes(machine.Path(QS_TEXT("a?")).c_str()).error(), Error::kInvalidName);
}

TEST(AttributesContract, A_folder_is_found_with_a_separator_at_its_end) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  EXPECT_TRUE(QueryAttributes((folder + QS_TEXT("\\")).c_str()).ok());
  EXPECT_TRUE(QueryAttributes((folder + QS_TEXT("/")).c_str()).ok());
  EXPECT_TRUE(QueryAttributes((folder + QS_TEXT("\\\\")).c_str()).ok());
  const auto root = QueryAttributes(folder.substr(0, 3).c_str());
  ASSERT_TRUE(root.ok());
  EXPECT_TRUE(platform::IsDirectory(root.value()));
}

TEST(AttributesContract, A_file_is_not_found_with_a_separator_at_its_end) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_FALSE(QueryAttributes((file + QS_TEXT("\\")).c_str()).ok());
}

TEST(AttributesContract, Dots_and_spaces_at_the_end_are_dropped_without_the_long_prefix) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_TRUE(QueryAttributes((file + QS_TEXT(". .")).c_str()).ok());
}

TEST(AttributesContract, A_relative_path_is_looked_up_in_the_current_folder) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  machine.SetCurrentFolder(machine.folder());
  EXPECT_TRUE(QueryAttributes(QS_TEXT("f")).ok());
  EXPECT_TRUE(QueryAttributes(QS_TEXT(".\\x\\..\\f")).ok());
  EXPECT_EQ(QueryAttributes(QS_TEXT("g")).error(), Error::kFileNotFound);
}

TEST(AttributesContract, The_read_only_bit_is_shown) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(QueryAttributes(file.c_str()).value() & platform::kAttributeReadOnly, 0u);
  machine.SetAttributes(file, platform::kAttributeReadOnly);
  EXPECT_NE(QueryAttributes(file.c_str()).value() & platform::kAttributeReadOnly, 0u);
}

TEST(AttributesContract, A_link_shows_itself_and_leads_to_its_target) {
  Machine machine;
  const Text target = machine.MakeFolder(QS_TEXT("target"));
  machine.MakeFile(QS_TEXT("target\\inside"), "abc");
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), target);
  const auto attributes = QueryAttributes(link.c_str());
  ASSERT_TRUE(attributes.ok());
  EXPECT_TRUE(platform::IsDirectory(attributes.value()));
  EXPECT_TRUE(platform::IsReparsePoint(attributes.value()));
  const auto inside = QueryFileFacts((link + QS_TEXT("\\inside")).c_str());
  ASSERT_TRUE(inside.ok());
  EXPECT_EQ(inside.value().size, 3u);
  EXPECT_FALSE(platform::IsReparsePoint(inside.value().attributes));
}

TEST(FileFactsContract, Size_time_and_attributes_come_together) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "12345");
  machine.SetLastWrite(file, 131'234'567'891'234'567);
  const auto facts = QueryFileFacts(file.c_str());
  ASSERT_TRUE(facts.ok());
  EXPECT_EQ(facts.value().size, 5u);
  EXPECT_EQ(facts.value().last_write, 131'234'567'891'234'567u);
  EXPECT_EQ(facts.value().attributes, QueryAttributes(file.c_str()).value());
}

TEST(FileFactsContract, A_size_above_four_gibibytes_is_whole) {
  Machine machine;
  const Text file = machine.MakeSparseFile(QS_TEXT("big"), 5'000'000'123);
  const auto facts = QueryFileFacts(file.c_str());
  ASSERT_TRUE(facts.ok());
  EXPECT_EQ(facts.value().size, 5'000'000'123u);
}

TEST(FileFactsContract, A_folder_and_a_link_are_told_by_their_bits) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), folder);
  ASSERT_TRUE(QueryFileFacts(folder.c_str()).ok());
  EXPECT_TRUE(platform::IsDirectory(QueryFileFacts(folder.c_str()).value().attributes));
  ASSERT_TRUE(QueryFileFacts(link.c_str()).ok());
  EXPECT_TRUE(platform::IsReparsePoint(QueryFileFacts(link.c_str()).value().attributes));
}

TEST(FileFactsContract, Missing_names_fail_as_for_the_attributes) {
  const Machine machine;
  EXPECT_EQ(QueryFileFacts(machine.Path(QS_TEXT("missing")).c_str()).error(), Error::kFileNotFound);
  EXPECT_EQ(QueryFileFacts(machine.Path(QS_TEXT("missing\\f")).c_str()).error(),
            Error::kPathNotFound);
}

TEST(LongPathContract, The_prefix_carries_paths_beyond_260_code_units) {
  Machine machine;
  Text relative = QS_TEXT("d");
  machine.MakeFolder(relative);
  while (relative.size() < 300) {
    relative += QS_TEXT("\\") + Text(40, Char{'n'});
    machine.MakeFolder(relative);
  }
  const Text file = machine.MakeFile(relative + QS_TEXT("\\f"), "12");
  const Text path = QS_TEXT("\\\\?\\") + file;
  ASSERT_GT(path.size(), 300u);
  const auto facts = QueryFileFacts(path.c_str());
  ASSERT_TRUE(facts.ok());
  EXPECT_EQ(facts.value().size, 2u);
  EXPECT_EQ(platform::RemoveFile(path.c_str()), Error::kNone);
  EXPECT_EQ(QueryFileFacts(path.c_str()).error(), Error::kFileNotFound);
}

}  // namespace
}  // namespace quastel::contract
