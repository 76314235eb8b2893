#include "platform/volume.h"

#include <gtest/gtest.h>

#include "base/ascii.h"
#include "contract/machine.h"
#include "contract/seam_use.h"

namespace quastel::contract {
namespace {

using platform::Error;
using platform::QueryDriveType;
using platform::VolumePathName;

Text RootOf(const Machine& machine) {
  return machine.folder().substr(0, 3);
}

TEST(VolumeContract, The_volume_of_a_path_is_the_root_of_its_drive) {
  Machine machine;
  const Text file = machine.MakeFile(QS_TEXT("f"), "x");
  Char buffer[260] = {};
  EXPECT_EQ(VolumePathName(file.c_str(), buffer, 260), Error::kNone);
  EXPECT_TRUE(EqualsFolded(buffer, RootOf(machine)));
  EXPECT_EQ(VolumePathName(machine.Path(QS_TEXT("missing\\x")).c_str(), buffer, 260), Error::kNone);
  EXPECT_TRUE(EqualsFolded(buffer, RootOf(machine)));
  EXPECT_EQ(VolumePathName(RootOf(machine).c_str(), buffer, 260), Error::kNone);
  EXPECT_TRUE(EqualsFolded(buffer, RootOf(machine)));
}

TEST(VolumeContract, A_relative_path_is_on_the_volume_of_the_current_folder) {
  Machine machine;
  machine.SetCurrentFolder(machine.folder());
  Char buffer[260] = {};
  EXPECT_EQ(VolumePathName(QS_TEXT("x\\y"), buffer, 260), Error::kNone);
  EXPECT_TRUE(EqualsFolded(buffer, RootOf(machine)));
}

TEST(VolumeContract, The_buffer_must_hold_the_root_and_its_terminator) {
  const Machine machine;
  Char buffer[260] = {};
  EXPECT_EQ(VolumePathName(machine.folder().c_str(), buffer, 2), Error::kFilenameTooLong);
  EXPECT_EQ(VolumePathName(machine.folder().c_str(), buffer, 4), Error::kNone);
}

TEST(VolumeContract, An_empty_path_is_on_no_volume) {
  const Machine machine;
  Char buffer[260] = {};
  EXPECT_NE(VolumePathName(QS_TEXT(""), buffer, 260), Error::kNone);
}

TEST(VolumeContract, A_drive_has_a_type_and_a_missing_one_has_none) {
  const Machine machine;
  const std::uint32_t type = QueryDriveType(RootOf(machine).c_str());
  EXPECT_GE(type, platform::kDriveRemovable);
  EXPECT_LE(type, 6u);
  EXPECT_EQ(QueryDriveType(QS_TEXT("R:\\")), platform::kDriveNoRoot);
}

TEST(VolumeContract, A_device_is_opened_with_its_drive_letter_alone) {
  const Machine machine;
  const Text device = QS_TEXT("\\\\.\\") + machine.folder().substr(0, 2);
  const auto open = platform::OpenFile(device.c_str(), platform::kAccessQuery, platform::kShareAll,
                                       platform::Disposition::kOpenExisting, 0);
  EXPECT_TRUE(open.ok());
  const auto missing =
      platform::OpenFile(QS_TEXT("\\\\.\\R:"), platform::kAccessQuery, platform::kShareAll,
                         platform::Disposition::kOpenExisting, 0);
  EXPECT_FALSE(missing.ok());
}

TEST(VolumeContract, A_file_answers_no_question_about_its_storage) {
  Machine machine;
  const auto file = OpenToRead(machine.MakeFile(QS_TEXT("f"), "x"));
  ASSERT_TRUE(file.ok());
  EXPECT_FALSE(platform::QuerySeekPenalty(file.value()).ok());
}

TEST(VolumeContract, No_handle_is_an_invalid_handle) {
  const Machine machine;
  EXPECT_EQ(platform::QuerySeekPenalty(platform::FileHandle()).error(), Error::kInvalidHandle);
}

}  // namespace
}  // namespace quastel::contract
