// What a file walk reports, and in which order.

#include <gtest/gtest.h>

#include <cstdint>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::LinkKind;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FoundFile;
using support::Lines;
using support::RunWalk;
using support::Utf8;
using support::WalkResult;

class Enumeration : public ::testing::Test {
 protected:
  WalkResult Walk(const qs_char* root, const qs_char* pattern = u"*", std::uint32_t recursive = 1) {
    const WalkResult result =
        RunWalk(FileWalk{.root = Text(root), .pattern = Text(pattern), .recursive = recursive});
    EXPECT_EQ(result.status, QS_OK);
    EXPECT_EQ(windows_.open_handles(), 0u);
    return result;
  }

  SimulatedWindows windows_;
};

TEST_F(Enumeration, A_file_is_reported_with_path_size_time_and_name) {
  windows_.AddFile(u"C:\\t\\Some File.TXT", "12345", {.last_write = 1000});
  const WalkResult result = Walk(u"C:\\t");
  ASSERT_EQ(result.files.size(), 1u);
  EXPECT_EQ(result.files[0],
            (FoundFile{"C:\\t\\Some File.TXT", 5, 504911232000001000, "Some File.TXT"}));
}

TEST_F(Enumeration, Both_halves_of_a_size_are_joined) {
  windows_.AddSizedFile(u"C:\\t\\1", 0xFFFFFFFF);
  windows_.AddSizedFile(u"C:\\t\\2", 0x100000000);
  windows_.AddSizedFile(u"C:\\t\\3", 0x123456789ABCDEF0);
  windows_.AddFile(u"C:\\t\\4", "");
  std::vector<std::uint64_t> sizes;
  for (const FoundFile& file : Walk(u"C:\\t").files) {
    sizes.push_back(file.size);
  }
  EXPECT_EQ(sizes, (std::vector<std::uint64_t>{0xFFFFFFFF, 0x100000000, 0x123456789ABCDEF0, 0}));
}

TEST_F(Enumeration, Names_of_any_characters_are_reported_as_they_are) {
  windows_.AddFile(u"C:\\t\\.hidden", "");
  windows_.AddFile(u"C:\\t\\...", "");
  windows_.AddFile(u"C:\\t\\..a", "");
  windows_.AddFile(u"C:\\t\\\u00E4\u20AC\U0001F600", "");
  windows_.AddFile(u"C:\\t\\trailing ", "");
  Lines names;
  for (const FoundFile& file : Walk(u"C:\\t").files) {
    names.push_back(file.name);
    EXPECT_EQ(file.path, "C:\\t\\" + file.name);
  }
  EXPECT_EQ(names, Utf8(windows_.NamesIn(u"C:\\t")));
  EXPECT_EQ(names.size(), 5u);
}

TEST_F(Enumeration, A_folder_s_files_come_in_listing_order) {
  for (const qs_char* name : {u"C:\\t\\b", u"C:\\t\\C", u"C:\\t\\a", u"C:\\t\\_", u"C:\\t\\1"}) {
    windows_.AddFile(name, "");
  }
  Lines names;
  for (const FoundFile& file : Walk(u"C:\\t").files) {
    names.push_back(file.name);
  }
  EXPECT_EQ(names, Utf8(windows_.NamesIn(u"C:\\t")));
}

TEST_F(Enumeration, Files_come_before_subfolders_and_subfolders_last_found_first_depth_first) {
  for (const qs_char* path :
       {u"C:\\t\\a\\1.txt", u"C:\\t\\a\\x\\2.txt", u"C:\\t\\a\\y\\3.txt", u"C:\\t\\b.txt",
        u"C:\\t\\c\\4.txt", u"C:\\t\\c\\z\\5.txt", u"C:\\t\\d.txt", u"C:\\t\\e\\6.txt"}) {
    windows_.AddFile(path, "");
  }
  const Lines order = {"C:\\t\\b.txt",       "C:\\t\\d.txt",       "C:\\t\\e\\6.txt",
                       "C:\\t\\c\\4.txt",    "C:\\t\\c\\z\\5.txt", "C:\\t\\a\\1.txt",
                       "C:\\t\\a\\y\\3.txt", "C:\\t\\a\\x\\2.txt"};
  EXPECT_EQ(Walk(u"C:\\t").paths(), order);
  EXPECT_EQ(Walk(u"C:\\t", u"*.txt").paths(), order) << "a pattern does not change the order";
  EXPECT_EQ(Walk(u"C:\\t", u"*.*").paths(), order);
}

TEST_F(Enumeration, Without_recursion_only_the_root_s_own_files_are_reported) {
  windows_.AddFile(u"C:\\t\\a.txt", "");
  windows_.AddFile(u"C:\\t\\sub\\b.txt", "");
  windows_.AddFolder(u"C:\\t\\empty.txt");
  EXPECT_EQ(Walk(u"C:\\t", u"*", 0).paths(), Lines{"C:\\t\\a.txt"});
  EXPECT_EQ(Walk(u"C:\\t", u"*.txt", 0).paths(), Lines{"C:\\t\\a.txt"});
}

TEST_F(Enumeration, Folders_are_never_reported_as_files) {
  windows_.AddFolder(u"C:\\t\\a.log");
  windows_.AddFolder(u"C:\\t\\b\\c.log");
  EXPECT_EQ(Walk(u"C:\\t").paths(), Lines{});
  EXPECT_EQ(Walk(u"C:\\t", u"*.log").paths(), Lines{});
}

TEST_F(Enumeration, A_pattern_selects_files_but_every_folder_is_entered) {
  windows_.AddFile(u"C:\\t\\a.log", "");
  windows_.AddFile(u"C:\\t\\a.txt", "");
  windows_.AddFile(u"C:\\t\\other\\b.log", "");
  windows_.AddFile(u"C:\\t\\other\\deeper\\c.LOG", "");
  windows_.AddFile(u"C:\\t\\folder.log\\d.log", "");
  EXPECT_EQ(Walk(u"C:\\t", u"*.log").paths(),
            (Lines{"C:\\t\\a.log", "C:\\t\\other\\b.log", "C:\\t\\other\\deeper\\c.LOG",
                   "C:\\t\\folder.log\\d.log"}));
}

TEST_F(Enumeration, Matching_follows_the_system_s_rules) {
  for (const qs_char* path : {u"C:\\t\\plain", u"C:\\t\\a.txt", u"C:\\t\\ab.TXT", u"C:\\t\\b.t"}) {
    windows_.AddFile(path, "");
  }
  const auto names = [this](const qs_char* pattern) {
    Lines out;
    for (const FoundFile& file : Walk(u"C:\\t", pattern).files) {
      out.push_back(file.name);
    }
    return out;
  };
  EXPECT_EQ(names(u"*.*"), (Lines{"a.txt", "ab.TXT", "b.t", "plain"}));
  EXPECT_EQ(names(u"?.txt"), Lines{"a.txt"});
  EXPECT_EQ(names(u"*.T*"), (Lines{"a.txt", "ab.TXT", "b.t"}));
  EXPECT_EQ(names(u"AB.txt"), Lines{"ab.TXT"});
  EXPECT_EQ(names(u"*."), Lines{"plain"});
  EXPECT_EQ(names(u"nothing*"), Lines{});
}

TEST_F(Enumeration, The_root_keeps_the_caller_s_spelling) {
  windows_.AddFile(u"C:\\Tree\\Sub\\a.txt", "");
  windows_.AddFolder(u"C:\\Tree\\other");
  EXPECT_EQ(Walk(u"c:/TREE").paths(), Lines{"c:/TREE\\Sub\\a.txt"});
  EXPECT_EQ(Walk(u"C:\\tree\\.\\other\\..").paths(), Lines{"C:\\tree\\.\\other\\..\\Sub\\a.txt"});
  windows_.SetCurrentFolder(u"C:\\Tree");
  EXPECT_EQ(Walk(u"sub").paths(), Lines{"sub\\a.txt"});
  EXPECT_EQ(Walk(u".").paths(), Lines{".\\Sub\\a.txt"});
}

TEST_F(Enumeration, A_trailing_separator_of_the_root_is_doubled_before_the_first_names) {
  windows_.AddFile(u"C:\\t\\a.txt", "");
  windows_.AddFile(u"C:\\t\\sub\\b.txt", "");
  EXPECT_EQ(Walk(u"C:\\t\\").paths(), (Lines{"C:\\t\\\\a.txt", "C:\\t\\\\sub\\b.txt"}));
  EXPECT_EQ(Walk(u"C:/t/").paths(), (Lines{"C:/t/\\a.txt", "C:/t/\\sub\\b.txt"}));
  EXPECT_EQ(Walk(u"C:\\t\\", u"*.txt").paths(), (Lines{"C:\\t\\\\a.txt", "C:\\t\\\\sub\\b.txt"}));
  EXPECT_EQ(Walk(u"C:\\").paths(), (Lines{"C:\\\\t\\a.txt", "C:\\\\t\\sub\\b.txt"}));
}

TEST_F(Enumeration, A_share_is_walked_like_a_drive) {
  windows_.AddShare(u"\\\\srv\\share");
  windows_.AddFile(u"\\\\srv\\share\\a\\b.txt", "");
  EXPECT_EQ(Walk(u"\\\\srv\\share").paths(), Lines{"\\\\srv\\share\\a\\b.txt"});
}

TEST_F(Enumeration, An_empty_tree_is_an_empty_walk) {
  EXPECT_EQ(Walk(u"C:\\").paths(), Lines{}) << "a drive without any file";
  windows_.AddFolder(u"C:\\t\\a\\b");
  EXPECT_EQ(Walk(u"C:\\t").paths(), Lines{});
}

TEST_F(Enumeration, The_plain_export_is_the_extended_one_without_protection) {
  windows_.AddFile(u"C:\\Windows\\a.txt", "1");
  windows_.AddFile(u"C:\\b.txt", "22");
  windows_.AddFile(u"C:\\c.log", "333");
  for (const qs_char* pattern : {static_cast<const qs_char*>(nullptr), u"", u"*", u"*.txt"}) {
    for (const std::uint32_t recursive : {0u, 1u}) {
      FileWalk walk{.root = Text(u"C:\\"), .recursive = recursive};
      if (pattern != nullptr) {
        walk.pattern = pattern;
      }
      WalkResult plain;
      support::internal::FileSink sink{&walk, &plain};
      plain.status = qs_enumerate_files(u"C:\\", pattern, recursive, support::internal::CollectFile,
                                        &sink, nullptr);
      EXPECT_EQ(plain, RunWalk(walk));
      EXPECT_FALSE(plain.files.empty());
    }
  }
}

TEST_F(Enumeration, A_wide_and_deep_tree_is_reported_whole) {
  Text folder = u"C:\\t";
  std::size_t files = 0;
  for (int depth = 0; depth < 40; ++depth) {
    for (int i = 0; i < 25; ++i) {
      windows_.AddFile(folder + u"\\f" + support::Wide(std::to_string(i)), "");
      ++files;
    }
    windows_.AddFolder(folder + u"\\side");
    folder += u"\\deep";
  }
  const WalkResult result = Walk(u"C:\\t");
  EXPECT_EQ(result.files.size(), files);
}

}  // namespace
}  // namespace quastel
