#include <gtest/gtest.h>

#include <algorithm>

#include "contract/machine.h"
#include "contract/seam_use.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::Error;
using platform::FindData;
using platform::FindFirst;
using platform::FindFirstBasic;
using platform::FindNext;
using platform::SearchOperation;

FindData EntryFor(const Text& path) {
  FindData entry{};
  const auto found = FindFirstBasic(path.c_str(), SearchOperation::kNameMatch, entry);
  EXPECT_TRUE(found.ok());
  return entry;
}

Error ErrorFor(const Text& pattern) {
  FindData entry{};
  const auto basic = FindFirstBasic(pattern.c_str(), SearchOperation::kNameMatch, entry);
  const auto full = FindFirst(pattern.c_str(), entry);
  EXPECT_EQ(basic.error(), full.error());
  return basic.error();
}

TEST(SearchContract, A_folder_is_listed_by_name_whatever_the_case) {
  Machine machine;
  for (const auto* name :
       {QS_TEXT("beta"), QS_TEXT("Alpha"), QS_TEXT("GAMMA"), QS_TEXT("alpha2")}) {
    machine.MakeFile(name, "x");
  }
  machine.MakeFolder(QS_TEXT("Delta"));
  const std::vector<Text> expected = {QS_TEXT("Alpha"), QS_TEXT("alpha2"), QS_TEXT("beta"),
                                      QS_TEXT("Delta"), QS_TEXT("GAMMA")};
  EXPECT_EQ(NamesFor(machine.Path(QS_TEXT("*"))), expected);
}

TEST(SearchContract, The_folder_and_its_parent_come_first) {
  Machine machine;
  machine.MakeFile(QS_TEXT("!"), "x");
  FindData entry{};
  const auto search = FindFirst(machine.Path(QS_TEXT("*")).c_str(), entry);
  ASSERT_TRUE(search.ok());
  EXPECT_EQ(Text(entry.name), QS_TEXT("."));
  EXPECT_TRUE(platform::IsDirectory(entry.attributes));
  ASSERT_EQ(FindNext(search.value(), entry), Error::kNone);
  EXPECT_EQ(Text(entry.name), QS_TEXT(".."));
  ASSERT_EQ(FindNext(search.value(), entry), Error::kNone);
  EXPECT_EQ(Text(entry.name), QS_TEXT("!"));
  EXPECT_EQ(FindNext(search.value(), entry), Error::kNoMoreFiles);
  EXPECT_EQ(FindNext(search.value(), entry), Error::kNoMoreFiles);
}

TEST(SearchContract, An_entry_carries_attributes_size_and_time) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("Some File.dat"), "123456");
  machine.SetLastWrite(file, 131'234'567'891'234'567);
  const FindData entry = EntryFor(machine.Path(QS_TEXT("some file.*")));
  EXPECT_EQ(Text(entry.name), QS_TEXT("Some File.dat"));
  EXPECT_EQ(entry.size(), 6u);
  EXPECT_EQ(entry.last_write(), 131'234'567'891'234'567u);
  EXPECT_EQ(entry.attributes, platform::QueryAttributes(file.c_str()).value());
}

TEST(SearchContract, A_size_above_four_gibibytes_has_both_halves) {
  Machine machine;
  machine.MakeSparseFile(QS_TEXT("big"), 5'000'000'123);
  EXPECT_EQ(EntryFor(machine.Path(QS_TEXT("*big"))).size(), 5'000'000'123u);
}

TEST(SearchContract, A_name_without_wildcards_finds_its_entry) {
  Machine machine;
  machine.MakeFile(QS_TEXT("One"), "x");
  machine.MakeFile(QS_TEXT("One.txt"), "x");
  EXPECT_EQ(NamesFor(machine.Path(QS_TEXT("one"))), std::vector<Text>{QS_TEXT("One")});
}

TEST(SearchContract, What_is_not_there_is_told_apart) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(ErrorFor(machine.Path(QS_TEXT("x*"))), Error::kFileNotFound);
  EXPECT_EQ(ErrorFor(machine.Path(QS_TEXT("missing"))), Error::kFileNotFound);
  EXPECT_EQ(ErrorFor(machine.Path(QS_TEXT("missing\\*"))), Error::kPathNotFound);
  EXPECT_NE(ErrorFor(machine.Path(QS_TEXT("f\\*"))), Error::kNone);
  EXPECT_EQ(ErrorFor(machine.folder() + QS_TEXT("\\")), Error::kFileNotFound);
}

TEST(SearchContract, An_empty_folder_lists_itself_and_its_parent) {
  Machine machine;
  machine.MakeFolder(QS_TEXT("empty"));
  EXPECT_EQ(ErrorFor(machine.Path(QS_TEXT("empty\\*"))), Error::kNone);
  EXPECT_TRUE(NamesFor(machine.Path(QS_TEXT("empty\\*"))).empty());
}

TEST(SearchContract, A_doubled_separator_is_tolerated) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(NamesFor(machine.folder() + QS_TEXT("\\\\*")), std::vector<Text>{QS_TEXT("f")});
  EXPECT_EQ(NamesFor(machine.folder() + QS_TEXT("/*")), std::vector<Text>{QS_TEXT("f")});
}

TEST(SearchContract, The_long_form_lists_as_well) {
  Machine machine;
  machine.MakeFile(QS_TEXT("f"), "x");
  EXPECT_EQ(NamesFor(QS_TEXT("\\\\?\\") + machine.Path(QS_TEXT("*"))),
            std::vector<Text>{QS_TEXT("f")});
}

TEST(SearchContract, A_link_is_shown_as_one_and_listed_through) {
  Machine machine;
  const Text target = machine.MakeFolder(QS_TEXT("target"));
  machine.MakeFile(QS_TEXT("target\\inside"), "x");
  const Text link = machine.MakeFolderLink(QS_TEXT("link"), target);
  const FindData entry = EntryFor(machine.Path(QS_TEXT("lin*")));
  EXPECT_TRUE(platform::IsDirectory(entry.attributes));
  EXPECT_TRUE(platform::IsReparsePoint(entry.attributes));
  EXPECT_EQ(NamesFor(link + QS_TEXT("\\*")), std::vector<Text>{QS_TEXT("inside")});
}

TEST(SearchContract, The_limit_to_folders_keeps_every_folder) {
  Machine machine;
  machine.MakeFolder(QS_TEXT("one"));
  machine.MakeFolder(QS_TEXT("two"));
  machine.MakeFile(QS_TEXT("file"), "x");
  FindData entry{};
  const auto search = FindFirstBasic(machine.Path(QS_TEXT("*")).c_str(),
                                     SearchOperation::kLimitToDirectories, entry);
  ASSERT_TRUE(search.ok());
  std::vector<Text> folders;
  do {
    const Text name = entry.name;
    if (platform::IsDirectory(entry.attributes) && name[0] != Char{'.'}) {
      folders.push_back(name);
    }
  } while (FindNext(search.value(), entry) == Error::kNone);
  EXPECT_EQ(folders, (std::vector<Text>{QS_TEXT("one"), QS_TEXT("two")}));
}

TEST(SearchContract, What_was_listed_may_be_removed_while_the_search_goes_on) {
  Machine machine;
  for (int i = 0; i < 26; ++i) {
    machine.MakeFile(Text{Char{'f'}, static_cast<Char>('A' + i)}, "x");
  }
  FindData entry{};
  int removed = 0;
  const auto search = FindFirst(machine.Path(QS_TEXT("f*")).c_str(), entry);
  ASSERT_TRUE(search.ok());
  do {
    EXPECT_EQ(platform::RemoveFile(machine.Path(entry.name).c_str()), Error::kNone);
    ++removed;
  } while (FindNext(search.value(), entry) == Error::kNone);
  EXPECT_EQ(removed, 26);
}

TEST(SearchContract, A_closed_search_leaves_the_folder_free) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("d"));
  FindData entry{};
  auto search = FindFirst((folder + QS_TEXT("\\*")).c_str(), entry);
  ASSERT_TRUE(search.ok());
  search.value().Reset();
  EXPECT_FALSE(search.value().valid());
  EXPECT_EQ(platform::RemoveFolder(folder.c_str()), Error::kNone);
  EXPECT_FALSE(machine.Exists(folder));
}

}  // namespace
}  // namespace quastel::contract
