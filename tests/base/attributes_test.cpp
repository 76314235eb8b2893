#include "platform/attributes.h"

#include <gtest/gtest.h>

namespace quastel::platform {
namespace {

TEST(Attributes, The_bits_are_those_of_the_system) {
  EXPECT_EQ(kAttributeReadOnly, 0x1u);
  EXPECT_EQ(kAttributeHidden, 0x2u);
  EXPECT_EQ(kAttributeSystem, 0x4u);
  EXPECT_EQ(kAttributeDirectory, 0x10u);
  EXPECT_EQ(kAttributeArchive, 0x20u);
  EXPECT_EQ(kAttributeNormal, 0x80u);
  EXPECT_EQ(kAttributeReparsePoint, 0x400u);
  EXPECT_EQ(kAttributeOffline, 0x1000u);
  EXPECT_EQ(kAttributesInvalid, 0xFFFFFFFFu);
}

TEST(Attributes, The_directory_bit_alone_makes_a_directory) {
  EXPECT_TRUE(IsDirectory(kAttributeDirectory));
  EXPECT_TRUE(IsDirectory(kAttributeDirectory | kAttributeReparsePoint));
  EXPECT_FALSE(IsDirectory(0));
  EXPECT_FALSE(IsDirectory(~kAttributeDirectory));
}

TEST(Attributes, The_reparse_bit_makes_a_reparse_point) {
  EXPECT_TRUE(IsReparsePoint(kAttributeReparsePoint));
  EXPECT_TRUE(IsReparsePoint(kAttributeReparsePoint | kAttributeDirectory));
  EXPECT_FALSE(IsReparsePoint(0));
  EXPECT_FALSE(IsReparsePoint(~kAttributeReparsePoint));
}

TEST(Attributes, Invalid_attributes_are_no_reparse_point) {
  EXPECT_FALSE(IsReparsePoint(kAttributesInvalid));
}

}  // namespace
}  // namespace quastel::platform
