#include "new_file.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "temporary_folder.h"
#include "user_error.h"

namespace quastel::client {
namespace {

std::string Content(const std::wstring& path) {
  std::ifstream file(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool Exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string RefusalOf(const std::wstring& path) {
  try {
    RequireNewFile(path);
  } catch (const UserError& error) {
    EXPECT_EQ(error.code(), ExitCode::kError);
    return error.what();
  }
  return "";
}

TEST(NewFile, What_was_kept_stays_whole) {
  const TemporaryFolder folder;
  const std::wstring path = folder.Path(L"page");
  const std::string block(700000, 'x');
  {
    NewFile file(path);
    file.Write("begin");
    file.Write(block);
    file.Write(block);
    file.Write("end");
    file.Keep();
  }
  EXPECT_EQ(Content(path), "begin" + block + block + "end");
}

TEST(NewFile, What_was_not_kept_goes_away) {
  const TemporaryFolder folder;
  const std::wstring path = folder.Path(L"page");
  {
    NewFile file(path);
    file.Write(std::string(3000000, 'x'));
  }
  EXPECT_FALSE(Exists(path));
}

TEST(NewFile, Another_file_is_left_as_it_is) {
  const TemporaryFolder folder;
  folder.AddFile(L"there", "content");
  EXPECT_NE(RefusalOf(folder.Path(L"there")).find("is there already"), std::string::npos);
  EXPECT_EQ(Content(folder.Path(L"there")), "content");
}

TEST(NewFile, A_trial_leaves_nothing) {
  const TemporaryFolder folder;
  EXPECT_EQ(RefusalOf(folder.Path(L"page")), "");
  EXPECT_FALSE(Exists(folder.Path(L"page")));
}

TEST(NewFile, Each_refusal_has_its_reason) {
  const TemporaryFolder folder;
  folder.AddFolder(L"sub");
  folder.AddFile(L"file", "content");
  EXPECT_NE(RefusalOf(folder.Path(L"sub")).find("is a folder"), std::string::npos);
  EXPECT_NE(RefusalOf(folder.Path(L"none\\page")).find("the folder of"), std::string::npos);
  EXPECT_NE(RefusalOf(folder.Path(L"pa*ge")).find("is no name for a file"), std::string::npos);
  EXPECT_NE(RefusalOf(folder.Path(L"file:page")).find("is no name for a file"), std::string::npos);
  EXPECT_NE(RefusalOf(L"\\\\.\\NUL"), "");
  EXPECT_EQ(Content(folder.Path(L"file")), "content");
}

}  // namespace
}  // namespace quastel::client
