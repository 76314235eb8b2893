#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "real_tree.h"

namespace quastel::dll_test {
namespace {

struct Found {
  std::uint64_t size;
  std::uint64_t last_write;
  std::wstring name;
};
using FoundFiles = std::map<std::wstring, Found>;

void Collect(void* user, const qs_char* path, std::uint64_t size, std::uint64_t last_write,
             const qs_char* name) {
  const bool is_new =
      static_cast<FoundFiles*>(user)->emplace(path, Found{size, last_write, name}).second;
  EXPECT_TRUE(is_new) << "reported twice";
}

FoundFiles Enumerate(const std::wstring& root, const wchar_t* pattern, bool recursive) {
  FoundFiles found;
  EXPECT_EQ(QS_OK,
            qs_enumerate_files(root.c_str(), pattern, recursive ? 1 : 0, Collect, &found, nullptr));
  return found;
}

std::vector<std::wstring> Names(const FoundFiles& found) {
  std::vector<std::wstring> names;
  for (const auto& [path, file] : found) {
    names.push_back(file.name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

class RealEnumeration : public testing::Test {
 protected:
  RealEnumeration() {
    tree_.AddFile(L"one.txt", "1");
    tree_.AddFile(L"two.log", "22");
    tree_.AddFile(L"sub\\three.txt", "333");
    tree_.AddFile(L"sub\\deep\\four.log", "4444");
    tree_.AddFolder(L"empty");
    tree_.AddFile(L"\x00fc\x4e2d.txt", "");
  }

  RealTree tree_;
};

TEST_F(RealEnumeration, Every_file_is_reported_once_with_its_path_size_and_name) {
  const FoundFiles found = Enumerate(tree_.root(), L"*", true);
  ASSERT_EQ(5u, found.size());
  const auto expect_file = [&](const wchar_t* relative, const wchar_t* name, std::uint64_t size) {
    const auto file = found.find(tree_.Path(relative));
    ASSERT_NE(found.end(), file);
    EXPECT_EQ(name, file->second.name);
    EXPECT_EQ(size, file->second.size);
  };
  expect_file(L"one.txt", L"one.txt", 1);
  expect_file(L"two.log", L"two.log", 2);
  expect_file(L"sub\\three.txt", L"three.txt", 3);
  expect_file(L"sub\\deep\\four.log", L"four.log", 4);
  expect_file(L"\x00fc\x4e2d.txt", L"\x00fc\x4e2d.txt", 0);
}

TEST_F(RealEnumeration, Times_are_local_ticks_since_the_year_one) {
  const auto days = [](std::uint64_t ticks) { return ticks / 864'000'000'000; };
  // 719,162 days lie between the year 1 and 1970. A time zone shifts the result by a day at most.
  const std::uint64_t today =
      719'162 + static_cast<std::uint64_t>(
                    std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now())
                        .time_since_epoch()
                        .count());
  for (const auto& [path, file] : Enumerate(tree_.root(), nullptr, true)) {
    EXPECT_GE(days(file.last_write) + 1, today);
    EXPECT_LE(days(file.last_write), today + 1);
  }
}

TEST_F(RealEnumeration, Without_recursion_only_the_files_of_the_root_are_reported) {
  EXPECT_EQ((std::vector<std::wstring>{L"one.txt", L"two.log", L"\x00fc\x4e2d.txt"}),
            Names(Enumerate(tree_.root(), L"*", false)));
}

TEST_F(RealEnumeration, A_pattern_selects_files_and_still_descends_everywhere) {
  EXPECT_EQ((std::vector<std::wstring>{L"four.log", L"two.log"}),
            Names(Enumerate(tree_.root(), L"*.log", true)));
  EXPECT_EQ((std::vector<std::wstring>{L"two.log"}),
            Names(Enumerate(tree_.root(), L"*.log", false)));
}

TEST_F(RealEnumeration, A_missing_root_or_a_file_as_root_has_no_files) {
  EXPECT_TRUE(Enumerate(tree_.Path(L"missing"), L"*", true).empty());
  EXPECT_TRUE(Enumerate(tree_.Path(L"one.txt"), L"*", true).empty());
}

TEST_F(RealEnumeration, Bad_arguments_are_refused) {
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_enumerate_files(nullptr, L"*", 1, Collect, nullptr, nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT, qs_enumerate_files(L"", L"*", 1, Collect, nullptr, nullptr));
  EXPECT_EQ(QS_INVALID_ARGUMENT,
            qs_enumerate_files(tree_.root().c_str(), L"*", 1, nullptr, nullptr, nullptr));
}

TEST_F(RealEnumeration, An_exception_of_the_callback_stops_at_the_library) {
  int calls = 0;
  const auto throwing = [](void* user, const qs_char*, std::uint64_t, std::uint64_t,
                           const qs_char*) {
    ++*static_cast<int*>(user);
    throw std::runtime_error("from the callback");
  };
  EXPECT_EQ(QS_FAILED,
            qs_enumerate_files(tree_.root().c_str(), L"*", 1, throwing, &calls, nullptr));
  EXPECT_EQ(1, calls);
  // The search is closed: its folder can be removed at once.
  std::filesystem::remove_all(tree_.root());
  EXPECT_FALSE(std::filesystem::exists(tree_.root()));
}

TEST_F(RealEnumeration, A_set_cancel_flag_stops_before_the_first_file) {
  FoundFiles found;
  std::uint32_t cancel = 1;
  EXPECT_EQ(QS_CANCELLED,
            qs_enumerate_files(tree_.root().c_str(), L"*", 1, Collect, &found, &cancel));
  EXPECT_TRUE(found.empty());
  EXPECT_EQ(1u, cancel);
}

TEST_F(RealEnumeration, A_cancel_from_within_the_callback_stops_the_walk) {
  struct Walk {
    std::uint32_t cancel = 0;
    int calls = 0;
  } walk;
  const auto cancelling = [](void* user, const qs_char*, std::uint64_t, std::uint64_t,
                             const qs_char*) {
    auto& state = *static_cast<Walk*>(user);
    ++state.calls;
    state.cancel = 1;
  };
  EXPECT_EQ(QS_CANCELLED,
            qs_enumerate_files(tree_.root().c_str(), L"*", 1, cancelling, &walk, &walk.cancel));
  EXPECT_EQ(1, walk.calls);
}

TEST_F(RealEnumeration, Protected_folders_are_not_entered) {
  tree_.AddFile(L"Windows\\system.dll", "x");
  tree_.AddFile(L"Users\\u\\AppData\\Local\\cache.bin", "x");
  tree_.AddFile(L"Users\\u\\Documents\\text.txt", "x");
  FoundFiles found;
  EXPECT_EQ(QS_OK,
            qs_enumerate_files_ex(tree_.root().c_str(), L"*", 1, 1, tree_.root().c_str(),
                                  tree_.Path(L"Users\\u").c_str(), Collect, &found, nullptr));
  EXPECT_EQ(6u, found.size());
  EXPECT_EQ(1u, found.count(tree_.Path(L"Users\\u\\Documents\\text.txt")));
  EXPECT_EQ(0u, found.count(tree_.Path(L"Windows\\system.dll")));
}

TEST_F(RealEnumeration, Long_paths_are_entered_and_reported_in_the_long_form) {
  const std::wstring part(100, L'p');
  const std::wstring long_folder = part + L"\\" + part + L"\\" + part;
  const std::wstring plain = tree_.Path(long_folder);
  const std::wstring extended = L"\\\\?\\" + plain;
  // One level at a time: the C++ library's own walk up the parents does not know the long form.
  for (std::size_t end = tree_.root().size() + 1 + 100; end <= plain.size(); end += 101) {
    std::filesystem::create_directory(L"\\\\?\\" + plain.substr(0, end));
  }
  FILE* file = _wfopen((extended + L"\\far.txt").c_str(), L"wb");
  ASSERT_NE(nullptr, file);
  std::fputs("far", file);
  std::fclose(file);

  const FoundFiles found = Enumerate(tree_.root(), L"far.*", true);
  ASSERT_EQ(1u, found.size());
  EXPECT_EQ(extended + L"\\far.txt", found.begin()->first);
  EXPECT_EQ(3u, found.begin()->second.size);
  std::filesystem::remove(extended + L"\\far.txt");
  for (std::size_t end = plain.size(); end > tree_.root().size(); end -= 101) {
    std::filesystem::remove(L"\\\\?\\" + plain.substr(0, end));
  }
}

TEST_F(RealEnumeration, Subfolders_are_reported_one_level_deep) {
  std::vector<std::wstring> found;
  const auto collect = [](void* user, const qs_char* path) {
    static_cast<std::vector<std::wstring>*>(user)->push_back(path);
  };
  EXPECT_EQ(QS_OK, qs_enumerate_directories(tree_.root().c_str(), collect, &found, nullptr));
  std::sort(found.begin(), found.end());
  EXPECT_EQ((std::vector<std::wstring>{tree_.Path(L"empty"), tree_.Path(L"sub")}), found);
}

TEST_F(RealEnumeration, An_exception_of_the_folder_callback_stops_at_the_library) {
  const auto throwing = [](void*, const qs_char*) { throw 7; };
  EXPECT_EQ(QS_FAILED, qs_enumerate_directories(tree_.root().c_str(), throwing, nullptr, nullptr));
}

TEST(RealLinks, A_link_to_a_folder_is_neither_reported_nor_entered) {
  const RealTree scratch;
  const std::wstring tree = LinkedTree(scratch);
  EXPECT_EQ((std::vector<std::wstring>{L"inside.txt"}), Names(Enumerate(tree, L"*", true)));
  EXPECT_EQ((std::vector<std::wstring>{L"inside.txt"}), Names(Enumerate(tree, L"*.txt", true)));
  // The link is there and leads to its file: the walk has left out something real.
  EXPECT_TRUE(std::filesystem::exists(tree + L"\\link\\outside.txt"));
  EXPECT_TRUE(Enumerate(tree + L"\\link", L"*", true).empty());
}

}  // namespace
}  // namespace quastel::dll_test
