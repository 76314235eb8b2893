// Paths at and beyond the lengths where Windows wants the long form.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calls.h"
#include "support/named_case.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FolderWalk;
using support::Lines;
using support::NestedTo;
using support::RunWalk;
using support::Utf8;

struct Volume : support::NamedCase {
  const qs_char* root;         // without a separator at its end
  const qs_char* long_prefix;  // what stands in its place in a long path
};

constexpr Volume kVolumes[] = {
    {{"Drive"}, u"C:", u"\\\\?\\C:"},
    {{"Share"}, u"\\\\srv\\share", u"\\\\?\\UNC\\srv\\share"},
};

class LongPathTest : public ::testing::TestWithParam<Volume> {
 protected:
  LongPathTest() { windows_.AddShare(u"\\\\srv\\share"); }

  Text Folder(std::size_t length) const { return NestedTo(length, Text(GetParam().root) + u"\\t"); }

  // The form in which the library hands the path on.
  std::string Delivered(const Text& path) const {
    const Text root = GetParam().root;
    return Utf8(path.size() < 248 ? path : GetParam().long_prefix + path.substr(root.size()));
  }

  SimulatedWindows windows_;
};

INSTANTIATE_TEST_SUITE_P(EnumerationLongPaths, LongPathTest, ::testing::ValuesIn(kVolumes),
                         support::CaseName());

TEST_P(LongPathTest, A_file_s_path_is_long_from_248_units_on) {
  const Text folder = Folder(200);
  for (const std::size_t length :
       {std::size_t{246}, std::size_t{247}, std::size_t{248}, std::size_t{249}, std::size_t{259},
        std::size_t{260}, std::size_t{261}, std::size_t{455}}) {
    const Text path = support::PaddedTo(length, folder + u"\\f");
    windows_.AddFile(path, "12");
    for (const qs_char* pattern : {u"*", u"f*"}) {
      const support::WalkResult result =
          RunWalk(FileWalk{.root = folder, .pattern = Text(pattern)});
      EXPECT_EQ(result.status, QS_OK);
      ASSERT_EQ(result.files.size(), 1u) << length;
      EXPECT_EQ(result.files[0].path, Delivered(path));
      EXPECT_EQ(result.files[0].name, Utf8(path.substr(folder.size() + 1)));
    }
    windows_.Remove(path);
  }
}

TEST_P(LongPathTest, A_root_of_any_length_is_walked) {
  for (std::size_t length = 240; length <= 265; ++length) {
    const Text folder = Folder(length);
    windows_.AddFile(folder + u"\\f.txt", "");
    windows_.AddFile(folder + u"\\sub\\g.txt", "");
    const auto expected = [&] {
      // A long root is made long first; then all that lies below it begins like it.
      const std::string start = Delivered(folder);
      return length < 248
                 ? Lines{Delivered(folder + u"\\f.txt"), Delivered(folder + u"\\sub\\g.txt")}
                 : Lines{start + "\\f.txt", start + "\\sub\\g.txt"};
    }();
    for (const qs_char* pattern : {u"*", u"*.txt"}) {
      const support::WalkResult result =
          RunWalk(FileWalk{.root = folder, .pattern = Text(pattern)});
      EXPECT_EQ(result.status, QS_OK);
      EXPECT_EQ(result.paths(), expected) << length;
    }
    windows_.Remove(Text(GetParam().root) + u"\\t");
  }
}

TEST_P(LongPathTest, A_tree_deeper_than_any_short_path_is_walked_to_its_end) {
  const Text root = Text(GetParam().root) + u"\\t";
  Text folder = root;
  Lines expected;
  while (folder.size() < 2000) {
    folder += u"\\" + support::Repeated(40, Char{'d'});
    windows_.AddFile(folder + u"\\f.txt", "");
    expected.push_back(Delivered(folder + u"\\f.txt"));
  }
  EXPECT_EQ(RunWalk(FileWalk{.root = root}).paths(), expected);
  EXPECT_EQ(RunWalk(FileWalk{.root = root, .pattern = Text(u"*.txt")}).paths(), expected);
}

TEST_P(LongPathTest, Every_listing_is_asked_for_in_its_long_form) {
  windows_.SetRecording(true);
  for (std::size_t length = 240; length <= 262; ++length) {
    const Text folder = Folder(length);
    windows_.AddFile(folder + u"\\f.txt", "");
    for (const qs_char* pattern : {u"*", u"*.txt"}) {
      windows_.ClearRecord();
      EXPECT_EQ(RunWalk(FileWalk{.root = folder, .pattern = Text(pattern)}).files.size(), 1u);
      const Lines searches = support::SearchesOf(windows_);
      EXPECT_EQ(searches.front(), Delivered(folder + u"\\" + pattern)) << length;
      EXPECT_EQ(searches.back(), Delivered(folder + u"\\*")) << length;
    }
    windows_.ClearRecord();
    EXPECT_EQ(RunWalk(FolderWalk{.root = folder}).status, QS_OK);
    EXPECT_EQ(support::SearchesOf(windows_), Lines{Delivered(folder + u"\\*")}) << length;
    windows_.Remove(Text(GetParam().root) + u"\\t");
  }
}

TEST_P(LongPathTest, A_long_root_is_resolved_before_it_is_walked) {
  const Text folder = Folder(300);
  windows_.AddFile(folder + u"\\f.txt", "");
  Text spelled = Text(GetParam().root) + u"\\t\\.." + folder.substr(Text(GetParam().root).size());
  EXPECT_EQ(RunWalk(FileWalk{.root = spelled}).paths(), Lines{Delivered(folder) + "\\f.txt"});
  for (Char& c : spelled) {
    c = c == Char{'\\'} && &c > &spelled[2] ? Char{'/'} : c;
  }
  EXPECT_EQ(RunWalk(FileWalk{.root = spelled}).paths(), Lines{Delivered(folder) + "\\f.txt"});
}

TEST_P(LongPathTest, A_root_with_the_long_prefix_keeps_it_at_any_length) {
  windows_.AddFile(Text(GetParam().root) + u"\\t\\f.txt", "");
  const Text root = Text(GetParam().long_prefix) + u"\\t";
  EXPECT_EQ(RunWalk(FileWalk{.root = root}).paths(), Lines{Utf8(root) + "\\f.txt"});
  EXPECT_EQ(RunWalk(FolderWalk{.root = Text(GetParam().long_prefix)}).status, QS_OK);
}

TEST_P(LongPathTest, Subfolders_are_reported_in_their_long_form) {
  for (const std::size_t length : {std::size_t{240}, std::size_t{246}, std::size_t{247},
                                   std::size_t{248}, std::size_t{300}, std::size_t{2000}}) {
    const Text folder = Folder(length);
    windows_.AddFolder(folder + u"\\subfolder");
    EXPECT_EQ(RunWalk(FolderWalk{.root = folder}),
              (support::FolderResult{QS_OK, {Delivered(folder + u"\\subfolder")}}))
        << length;
    windows_.Remove(Text(GetParam().root) + u"\\t");
  }
}

TEST_P(LongPathTest, A_doubled_separator_is_gone_from_a_long_path) {
  const Text root = Text(GetParam().root) + u"\\t\\";
  const Text name = support::Repeated(250, Char{'f'});
  windows_.AddFile(root + name, "");
  windows_.AddFile(root + u"sub\\" + name, "");
  EXPECT_EQ(RunWalk(FileWalk{.root = root}).paths(),
            (Lines{Delivered(root + name), Delivered(root + u"sub\\" + name)}));
}

TEST_P(LongPathTest, A_relative_root_becomes_absolute_where_paths_grow_long) {
  windows_.AddFolder(Text(GetParam().root) + u"\\t");
  windows_.SetCurrentFolder(Text(GetParam().root) + u"\\t");
  const Text name = support::Repeated(250, Char{'f'});
  windows_.AddFile(Text(GetParam().root) + u"\\t\\sub\\short", "");
  windows_.AddFile(Text(GetParam().root) + u"\\t\\sub\\" + name, "");
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(u"sub")}).paths(),
            (Lines{Delivered(Text(GetParam().root) + u"\\t\\sub\\" + name), "sub\\short"}));
}

TEST_P(LongPathTest, A_path_that_cannot_be_resolved_is_prefixed_as_it_is) {
  const Text folder = Folder(240);
  windows_.AddFile(folder + u"\\name-of-the-file", "");
  // The listing of a folder of 240 units needs no resolving, the path of its file does.
  windows_.FailCall(Call::kFullPathName, 1);
  EXPECT_EQ(RunWalk(FileWalk{.root = folder}).paths(),
            Lines{Delivered(folder + u"\\name-of-the-file")});
  EXPECT_EQ(windows_.faults_injected(), 1u);
}

TEST_P(LongPathTest, A_name_of_255_units_is_reported) {
  const Text path = Text(GetParam().root) + u"\\t\\" + support::Repeated(255, Char{'f'});
  windows_.AddFile(path, "");
  EXPECT_EQ(RunWalk(FileWalk{.root = Text(GetParam().root) + u"\\t"}).paths(),
            Lines{Delivered(path)});
}

}  // namespace
}  // namespace quastel
