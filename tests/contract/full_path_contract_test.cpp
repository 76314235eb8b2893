#include <gtest/gtest.h>

#include "base/ascii.h"
#include "contract/full_path.h"
#include "contract/machine.h"
#include "platform/file_system.h"

namespace quastel::contract {
namespace {

using platform::FullPathName;

TEST(FullPathContract, Dot_segments_and_doubled_separators_are_resolved) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\b")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\.\\b")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\x\\..\\b")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\\\b")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\.")), QS_TEXT("C:\\a"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\b\\..")), QS_TEXT("C:\\a"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\..")), QS_TEXT("C:\\"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\..\\..\\..\\b")), QS_TEXT("C:\\b"));
}

TEST(FullPathContract, A_final_separator_stays) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\")), QS_TEXT("C:\\a\\"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\\\")), QS_TEXT("C:\\a\\"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\b\\..\\")), QS_TEXT("C:\\a\\"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\")), QS_TEXT("C:\\"));
}

TEST(FullPathContract, A_slash_becomes_a_backslash) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("C:/a/b")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("//server/share/x")), QS_TEXT("\\\\server\\share\\x"));
}

TEST(FullPathContract, Dots_and_spaces_at_the_end_are_dropped) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\b.")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a\\b. . ")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a.\\b")), QS_TEXT("C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a \\b")), QS_TEXT("C:\\a \\b"));
}

TEST(FullPathContract, A_share_cannot_be_left) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("\\\\server\\share\\a\\..\\b")), QS_TEXT("\\\\server\\share\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("\\\\server\\share\\..\\..\\b")), QS_TEXT("\\\\server\\share\\b"));
}

TEST(FullPathContract, The_long_form_keeps_its_prefix) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("\\\\?\\C:\\a\\b")), QS_TEXT("\\\\?\\C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("\\\\?\\C:\\a\\x\\..\\b")), QS_TEXT("\\\\?\\C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("\\\\?\\UNC\\server\\share\\b")),
            QS_TEXT("\\\\?\\UNC\\server\\share\\b"));
}

// Though a file call would take them by the letter.
TEST(FullPathContract, The_long_form_loses_dots_and_spaces_at_the_end_as_well) {
  const Machine machine;
  EXPECT_EQ(FullPath(QS_TEXT("\\\\?\\C:\\a\\b.")), QS_TEXT("\\\\?\\C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("\\\\?\\C:\\a\\b. ")), QS_TEXT("\\\\?\\C:\\a\\b"));
  EXPECT_EQ(FullPath(QS_TEXT("\\\\?\\C:\\a.\\b")), QS_TEXT("\\\\?\\C:\\a\\b"));
}

TEST(FullPathContract, Relative_paths_start_at_the_current_folder) {
  Machine machine;
  const Text folder = machine.MakeFolder(QS_TEXT("here"));
  machine.SetCurrentFolder(folder);
  const Text drive = folder.substr(0, 2);
  EXPECT_EQ(FullPath(QS_TEXT("x\\y")), folder + QS_TEXT("\\x\\y"));
  EXPECT_EQ(FullPath(QS_TEXT(".")), folder);
  EXPECT_EQ(FullPath(QS_TEXT("..\\x")), machine.Path(QS_TEXT("x")));
  EXPECT_EQ(FullPath(drive + QS_TEXT("x")), folder + QS_TEXT("\\x"));
  EXPECT_EQ(FullPath(QS_TEXT("\\x")), drive + QS_TEXT("\\x"));
  EXPECT_EQ(FullPath(QS_TEXT("...x")), folder + QS_TEXT("\\...x"));
}

TEST(FullPathContract, The_current_folder_of_another_drive_is_its_root) {
  const Machine machine;
  const Text other = machine.folder()[0] == Char{'Y'} ? QS_TEXT("X:") : QS_TEXT("Y:");
  EXPECT_EQ(FullPath(other + QS_TEXT("x\\y")), other + QS_TEXT("\\x\\y"));
}

TEST(FullPathContract, The_text_need_not_exist_and_keeps_its_spelling) {
  const Machine machine;
  EXPECT_TRUE(EqualsFolded(FullPath(QS_TEXT("c:\\No Such\\File")), QS_TEXT("c:\\no such\\file")));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\No Such\\File")), QS_TEXT("C:\\No Such\\File"));
  EXPECT_EQ(FullPath(QS_TEXT("C:\\a*\\b?")), QS_TEXT("C:\\a*\\b?"));
}

TEST(FullPathContract, The_answer_is_the_length_when_it_fits_and_the_capacity_when_not) {
  const Machine machine;
  const Text path = QS_TEXT("C:\\a\\.\\bc");  // seven code units when resolved
  EXPECT_EQ(FullPathName(path.c_str(), 0, nullptr), 8u);
  Char buffer[16];
  std::fill(std::begin(buffer), std::end(buffer), Char{'#'});
  EXPECT_EQ(FullPathName(path.c_str(), 7, buffer), 8u);
  EXPECT_EQ(FullPathName(path.c_str(), 8, buffer), 7u);
  EXPECT_EQ(Text(buffer), QS_TEXT("C:\\a\\bc"));
  EXPECT_EQ(buffer[8], Char{'#'});
}

TEST(FullPathContract, Nothing_and_blanks_have_no_full_path) {
  const Machine machine;
  Char buffer[16];
  EXPECT_EQ(FullPathName(QS_TEXT(""), 16, buffer), 0u);
  EXPECT_EQ(FullPathName(QS_TEXT("  "), 16, buffer), 0u);
}

TEST(FullPathContract, A_text_far_beyond_260_code_units_is_resolved) {
  const Machine machine;
  Text path = QS_TEXT("C:");
  for (int i = 0; i < 100; ++i) {
    path += QS_TEXT("\\0123456789");
  }
  EXPECT_EQ(FullPath(path + QS_TEXT("\\x\\..")), path);
}

}  // namespace
}  // namespace quastel::contract
