// What a test sees of the disks it has built.

#include <gtest/gtest.h>

#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/search.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::Error;

TEST(Tree, Parents_are_made_and_names_keep_their_first_spelling) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\Users\\Me\\a.txt"), "x");
  windows.AddFile(QS_TEXT("c:/USERS/me/B.txt"), "y");
  EXPECT_EQ(windows.NamesIn(QS_TEXT("C:\\users\\me")),
            (std::vector<Text>{QS_TEXT("a.txt"), QS_TEXT("B.txt")}));
  EXPECT_EQ(windows.Find(QS_TEXT("C:\\users"))->name, QS_TEXT("Users"));
  EXPECT_EQ(windows.node_count(), 4u);
}

TEST(Tree, Facts_are_what_was_given) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "12345", {platform::kAttributeHidden, 42});
  const auto facts = windows.Find(QS_TEXT("C:\\f"));
  ASSERT_TRUE(facts.has_value());
  EXPECT_FALSE(facts->is_folder);
  EXPECT_EQ(facts->attributes, platform::kAttributeHidden);
  EXPECT_EQ(facts->size, 5u);
  EXPECT_EQ(facts->last_write, 42u);
  EXPECT_FALSE(windows.Find(QS_TEXT("C:\\g")).has_value());
}

TEST(Tree, A_file_without_attributes_shows_the_normal_one) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\f"), "x", {0, 1});
  EXPECT_EQ(platform::QueryAttributes(QS_TEXT("C:\\f")).value(), platform::kAttributeNormal);
}

TEST(Tree, A_sized_file_has_its_pattern_and_takes_writing) {
  SimulatedWindows windows;
  windows.AddSizedFile(QS_TEXT("C:\\f"), 5000, 7);
  const std::string content = windows.ContentOf(QS_TEXT("C:\\f")).value();
  ASSERT_EQ(content.size(), 5000u);
  for (std::size_t i = 0; i < content.size(); i += 499) {
    EXPECT_EQ(static_cast<unsigned char>(content[i]), SimulatedWindows::PatternByte(7, i));
  }
  const auto file = platform::OpenFile(QS_TEXT("C:\\f"), platform::kAccessWrite, 0,
                                       platform::Disposition::kOpenExisting, 0);
  ASSERT_TRUE(file.ok());
  EXPECT_TRUE(platform::WriteTo(file.value(), "new", 3).ok());
  EXPECT_EQ(windows.ContentOf(QS_TEXT("C:\\f")).value(), "new" + content.substr(3));
}

TEST(Tree, Patterns_of_two_seeds_differ_and_one_seed_is_all_zeros) {
  int equal = 0;
  for (std::uint64_t i = 0; i < 1000; ++i) {
    equal += SimulatedWindows::PatternByte(1, i) == SimulatedWindows::PatternByte(2, i) ? 1 : 0;
    EXPECT_EQ(SimulatedWindows::PatternByte(kZeroSeed, i), 0);
  }
  EXPECT_LT(equal, 50);
}

TEST(Tree, Two_descriptions_are_equal_only_for_equal_disks) {
  SimulatedWindows windows;
  windows.AddFile(QS_TEXT("C:\\d\\f"), "abc");
  windows.AddSizedFile(QS_TEXT("C:\\d\\g"), 10);
  std::string last = windows.Describe();
  const auto changed = [&] {
    const std::string now = windows.Describe();
    const bool differs = now != last;
    last = now;
    return differs;
  };
  EXPECT_FALSE(changed());
  windows.SetContent(QS_TEXT("C:\\d\\f"), "abd");
  EXPECT_TRUE(changed());
  windows.SetLastWrite(QS_TEXT("C:\\d\\f"), 1);
  EXPECT_TRUE(changed());
  windows.SetAttributes(QS_TEXT("C:\\d\\f"), platform::kAttributeHidden);
  EXPECT_TRUE(changed());
  windows.AddSizedFile(QS_TEXT("C:\\d\\g"), 10, 1);
  EXPECT_TRUE(changed());
  windows.AddFolder(QS_TEXT("C:\\e"));
  EXPECT_TRUE(changed());
  windows.Remove(QS_TEXT("C:\\d"));
  EXPECT_TRUE(changed());
  EXPECT_EQ(windows.node_count(), 1u);
}

TEST(Tree, Shares_and_further_drives_stand_beside_the_first) {
  SimulatedWindows windows;
  windows.AddDrive('D');
  windows.AddShare(QS_TEXT("\\\\Server\\Share"));
  windows.AddFile(QS_TEXT("D:\\f"), "x");
  windows.AddFile(QS_TEXT("\\\\server\\share\\d\\f"), "x");
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("d:\\f")).ok());
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("\\\\SERVER\\SHARE\\d\\f")).ok());
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("\\\\?\\UNC\\server\\share\\d\\f")).ok());
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("\\\\server\\share")).ok());
  EXPECT_FALSE(platform::QueryAttributes(QS_TEXT("\\\\server\\other\\f")).ok());
  EXPECT_EQ(platform::QueryAttributes(QS_TEXT("E:\\f")).error(), Error::kPathNotFound);
}

TEST(Tree, A_root_lists_neither_itself_nor_a_parent) {
  SimulatedWindows windows;
  platform::FindData entry{};
  EXPECT_EQ(platform::FindFirst(QS_TEXT("C:\\*"), entry).error(), Error::kFileNotFound);
  windows.AddFile(QS_TEXT("C:\\f"), "x");
  EXPECT_TRUE(platform::FindFirst(QS_TEXT("C:\\*"), entry).ok());
  EXPECT_EQ(Text(entry.name), QS_TEXT("f"));
}

TEST(Tree, A_very_deep_tree_is_built_and_taken_apart) {
  SimulatedWindows windows;
  Text path = QS_TEXT("C:");
  while (path.size() < 32'000) {
    path += QS_TEXT("\\d");
  }
  windows.AddFile(path + QS_TEXT("\\f"), "x");
  EXPECT_TRUE(platform::QueryAttributes((QS_TEXT("\\\\?\\") + path + QS_TEXT("\\f")).c_str()).ok());
  windows.Remove(QS_TEXT("C:\\d"));
  EXPECT_EQ(windows.node_count(), 0u);
}

}  // namespace
}  // namespace quastel::simulated
