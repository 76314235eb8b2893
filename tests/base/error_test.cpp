#include "platform/error.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>

namespace quastel::platform {
namespace {

TEST(Error, Only_a_missing_file_is_a_file_not_found) {
  EXPECT_TRUE(IsFileNotFound(Error::kFileNotFound));
  EXPECT_FALSE(IsFileNotFound(Error::kPathNotFound));
  EXPECT_FALSE(IsFileNotFound(Error::kNone));
}

TEST(Error, A_folder_is_already_there_by_either_of_two_errors) {
  EXPECT_TRUE(IsAlreadyThere(Error::kAlreadyExists));
  EXPECT_TRUE(IsAlreadyThere(Error::kFileExists));
  EXPECT_FALSE(IsAlreadyThere(Error::kAccessDenied));
  EXPECT_FALSE(IsAlreadyThere(Error::kNone));
}

TEST(Result, A_value_is_a_success) {
  const Result<int> result = 7;
  EXPECT_TRUE(result.ok());
  EXPECT_EQ(result.value(), 7);
  EXPECT_EQ(result.error(), Error::kNone);
}

TEST(Result, An_error_stands_in_the_place_of_the_value) {
  const Result<int> result = Error::kSharingViolation;
  EXPECT_FALSE(result.ok());
  EXPECT_EQ(result.error(), Error::kSharingViolation);
}

TEST(Result, A_move_only_value_can_be_taken_out) {
  Result<std::unique_ptr<int>> result = std::make_unique<int>(5);
  ASSERT_TRUE(result.ok());
  const std::unique_ptr<int> taken = std::move(result).value();
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(*taken, 5);
}

}  // namespace
}  // namespace quastel::platform
