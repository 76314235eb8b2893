#include "empty_folders.h"

#include <gtest/gtest.h>
#include <quastel_core.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "name_order.h"
#include "temporary_folder.h"

namespace quastel::client {
namespace {

using Paths = std::vector<std::wstring>;

struct Found {
  Paths paths;
  std::vector<std::uint64_t> folders;
  std::uint64_t visited;
};

Found Find(const Paths& roots, const std::optional<ProtectedFolders>& protection = std::nullopt) {
  WalkState state;
  std::vector<EmptyFolder> rows;
  EXPECT_EQ(FindEmptyFolders(roots, protection, state, rows), QS_OK);
  Found found;
  for (const EmptyFolder& row : rows) {
    found.paths.push_back(row.path);
    found.folders.push_back(row.folders);
  }
  found.visited = state.count();
  return found;
}

// From the roots down, with a question to the library at every folder.
void FindPlainly(const std::filesystem::path& folder, Paths& paths) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (!entry.is_directory()) {
      continue;
    }
    if (qs_empty_directory_eligible(entry.path().c_str()) != 0) {
      paths.push_back(entry.path().wstring());
    } else {
      FindPlainly(entry.path(), paths);
    }
  }
}

TEST(FindEmptyFolders, Answers_the_outermost_ones_by_path) {
  const TemporaryFolder tree;
  tree.AddFolder(L"root\\b\\c\\d");
  tree.AddFolder(L"root\\b\\e");
  tree.AddFolder(L"root\\A");
  tree.AddFile(L"root\\full\\deep\\x", "");
  tree.AddFolder(L"root\\full\\none");
  const Found found = Find({tree.Path(L"root")});
  EXPECT_EQ(found.paths,
            (Paths{tree.Path(L"root\\A"), tree.Path(L"root\\b"), tree.Path(L"root\\full\\none")}));
  EXPECT_EQ(found.folders, (std::vector<std::uint64_t>{1, 4, 1}));
}

TEST(FindEmptyFolders, A_root_is_never_among_them) {
  const TemporaryFolder tree;
  tree.AddFolder(L"root\\a\\b\\c");
  EXPECT_EQ(Find({tree.Path(L"root")}).paths, Paths{tree.Path(L"root\\a")});
  // Nor is what holds one.
  EXPECT_EQ(Find({tree.Path(L"root"), tree.Path(L"root\\a\\b")}).paths,
            Paths{tree.Path(L"root\\a\\b\\c")});
  EXPECT_EQ(Find({tree.Path(L"root\\a\\b"), tree.Path(L"root"), tree.Path(L"ROOT")}).paths,
            Paths{tree.Path(L"root\\a\\b\\c")});
  EXPECT_EQ(Find({tree.Path(L"root\\a\\b\\c")}).paths, Paths{});
}

TEST(FindEmptyFolders, A_folder_called_downloads_gives_way_to_what_is_in_it) {
  const TemporaryFolder tree;
  tree.AddFolder(L"root\\DOWNLOADS\\a\\b");
  tree.AddFolder(L"root\\Downloads 2");
  EXPECT_EQ(Find({tree.Path(L"root")}).paths,
            (Paths{tree.Path(L"root\\Downloads 2"), tree.Path(L"root\\DOWNLOADS\\a")}));
}

TEST(FindEmptyFolders, Protected_folders_and_what_holds_them_stay_out) {
  const TemporaryFolder tree;
  tree.AddFolder(L"drive\\Windows\\Temp");
  tree.AddFolder(L"drive\\Users\\u\\AppData\\Local");
  tree.AddFolder(L"drive\\Users\\u\\Music\\old");
  tree.AddFolder(L"drive\\Users\\v\\AppData");
  const ProtectedFolders protection = {tree.Path(L"drive\\"), tree.Path(L"drive\\Users\\u")};
  EXPECT_EQ(Find({tree.Path(L"drive")}, protection).paths,
            (Paths{tree.Path(L"drive\\Users\\u\\Music"), tree.Path(L"drive\\Users\\v")}));
  EXPECT_EQ(Find({tree.Path(L"drive\\Windows")}, protection).paths, Paths{});
  EXPECT_EQ(Find({tree.Path(L"drive")}).paths,
            (Paths{tree.Path(L"drive\\Users"), tree.Path(L"drive\\Windows")}));
}

TEST(FindEmptyFolders, Each_folder_is_visited_once_however_deep) {
  const TemporaryFolder tree;
  std::wstring path = L"r";
  for (int i = 0; i < 60; ++i) {
    path += L"\\d";
    tree.AddFolder(path + L"\\e");
  }
  tree.AddFile(path + L"\\x", "x");
  const Found found = Find({tree.Path(L"r")});
  EXPECT_EQ(found.paths.size(), 60U);
  EXPECT_EQ(found.visited, 121U);
}

TEST(FindEmptyFolders, A_long_path_is_found_in_a_form_that_can_be_used) {
  const TemporaryFolder tree;
  std::wstring path = L"r";
  for (int i = 0; i < 20; ++i) {
    path += L"\\a name of some length";
  }
  std::filesystem::create_directories(L"\\\\?\\" + tree.Path(path));
  tree.AddFile(L"r\\a name of some length\\x", "x");
  std::wstring deep = tree.Path(L"r\\a name of some length\\a name of some length");
  EXPECT_EQ(Find({tree.Path(L"r")}).paths, Paths{deep});

  tree.AddFile(L"r\\file", "x");
  std::ofstream(std::filesystem::path(L"\\\\?\\" + tree.Path(path + L"\\x"))) << "x";
  std::filesystem::create_directories(L"\\\\?\\" + tree.Path(path + L"\\empty"));
  const Found found = Find({tree.Path(L"r")});
  ASSERT_EQ(found.paths, Paths{L"\\\\?\\" + tree.Path(path + L"\\empty")});
  EXPECT_NE(qs_empty_directory_eligible(found.paths[0].c_str()), 0);
}

TEST(FindEmptyFolders, A_cancelled_search_answers_what_it_had_finished) {
  const TemporaryFolder tree;
  tree.AddFolder(L"root\\a");
  WalkState state;
  state.Cancel();
  std::vector<EmptyFolder> rows;
  EXPECT_EQ(FindEmptyFolders({tree.Path(L"root")}, std::nullopt, state, rows), QS_CANCELLED);
  EXPECT_TRUE(rows.empty());
}

// Random trees against the library's answer for each of their folders.
TEST(FindEmptyFolders, Agrees_with_asking_the_library_everywhere) {
  std::mt19937 random(20240531);
  std::size_t all = 0;
  for (int round = 0; round < 30; ++round) {
    const TemporaryFolder tree;
    tree.AddFolder(L"root");
    Paths folders = {L"root"};
    const int count = 5 + static_cast<int>(random() % 40);
    for (int i = 0; i < count; ++i) {
      const std::wstring parent = folders[random() % folders.size()];
      const std::wstring name =
          random() % 8 == 0 ? L"Downloads" : L"d" + std::to_wstring(random() % 5);
      folders.push_back(parent + L"\\" + name);
      tree.AddFolder(folders.back());
    }
    const int files = static_cast<int>(random() % 6);
    for (int i = 0; i < files; ++i) {
      tree.AddFile(folders[random() % folders.size()] + L"\\f" + std::to_wstring(i), "x");
    }
    Paths expected;
    FindPlainly(tree.Path(L"root"), expected);
    std::sort(expected.begin(), expected.end(),
              [](const std::wstring& a, const std::wstring& b) { return IsPathBefore(a, b); });
    EXPECT_EQ(Find({tree.Path(L"root")}).paths, expected) << "round " << round;
    all += expected.size();
  }
  EXPECT_GT(all, 50U);
}

}  // namespace
}  // namespace quastel::client
