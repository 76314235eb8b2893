// Reparse points: junctions, links of both kinds, cloud placeholders.

#include <gtest/gtest.h>

#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/search.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel::simulated {
namespace {

using platform::Error;

std::string ReadAll(const Text& path) {
  const auto file = platform::OpenFile(path.c_str(), platform::kAccessRead, platform::kShareAll,
                                       platform::Disposition::kOpenExisting, 0);
  char buffer[64];
  return file.ok() ? std::string(buffer, platform::ReadFrom(file.value(), buffer, 64).value())
                   : "(unreadable)";
}

platform::FindData EntryFor(const Text& path) {
  platform::FindData entry{};
  EXPECT_TRUE(platform::FindFirst(path.c_str(), entry).ok());
  return entry;
}

class Links : public testing::Test {
 protected:
  Links() {
    windows_.AddFile(QS_TEXT("C:\\target\\f"), "inside");
    windows_.AddLink(LinkKind::kJunction, QS_TEXT("C:\\junction"), QS_TEXT("C:\\target"));
    windows_.AddLink(LinkKind::kFolderLink, QS_TEXT("C:\\folder link"), QS_TEXT("C:\\target"));
    windows_.AddLink(LinkKind::kFileLink, QS_TEXT("C:\\file link"), QS_TEXT("C:\\target\\f"));
  }
  SimulatedWindows windows_;
};

TEST_F(Links, Each_kind_shows_its_bits_and_its_tag) {
  using platform::kAttributeReparsePoint;
  const auto bits = [](const Text& path) {
    return platform::QueryAttributes(path.c_str()).value() &
           (platform::kAttributeDirectory | kAttributeReparsePoint);
  };
  EXPECT_EQ(bits(QS_TEXT("C:\\junction")), platform::kAttributeDirectory | kAttributeReparsePoint);
  EXPECT_EQ(bits(QS_TEXT("C:\\junction\\")),
            platform::kAttributeDirectory | kAttributeReparsePoint);
  EXPECT_EQ(bits(QS_TEXT("C:\\file link")), kAttributeReparsePoint);
  EXPECT_EQ(EntryFor(QS_TEXT("C:\\junction")).reparse_tag, 0xA0000003u);
  EXPECT_EQ(EntryFor(QS_TEXT("C:\\folder link")).reparse_tag, 0xA000000Cu);
  EXPECT_EQ(EntryFor(QS_TEXT("C:\\file link")).reparse_tag, 0xA000000Cu);
  EXPECT_EQ(EntryFor(QS_TEXT("C:\\target")).reparse_tag, 0u);
}

TEST_F(Links, What_is_opened_is_the_target) {
  EXPECT_EQ(ReadAll(QS_TEXT("C:\\junction\\f")), "inside");
  EXPECT_EQ(ReadAll(QS_TEXT("C:\\folder link\\f")), "inside");
  EXPECT_EQ(ReadAll(QS_TEXT("C:\\file link")), "inside");
}

TEST_F(Links, What_is_removed_is_the_link) {
  const std::string target = windows_.ContentOf(QS_TEXT("C:\\target\\f")).value();
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\junction")), Error::kAccessDenied);
  EXPECT_EQ(platform::RemoveFolder(QS_TEXT("C:\\file link")), Error::kDirectory);
  EXPECT_EQ(platform::RemoveFolder(QS_TEXT("C:\\junction")), Error::kNone);
  EXPECT_EQ(platform::RemoveFolder(QS_TEXT("C:\\folder link")), Error::kNone);
  EXPECT_EQ(platform::RemoveFile(QS_TEXT("C:\\file link")), Error::kNone);
  EXPECT_EQ(windows_.NamesIn(QS_TEXT("C:\\")), std::vector<Text>{QS_TEXT("target")});
  EXPECT_EQ(windows_.ContentOf(QS_TEXT("C:\\target\\f")), target);
}

TEST_F(Links, A_link_may_lead_through_others) {
  windows_.AddLink(LinkKind::kJunction, QS_TEXT("C:\\second"), QS_TEXT("C:\\junction"));
  EXPECT_EQ(ReadAll(QS_TEXT("C:\\second\\f")), "inside");
}

TEST_F(Links, A_link_to_itself_leads_nowhere) {
  windows_.AddLink(LinkKind::kFileLink, QS_TEXT("C:\\loop"), QS_TEXT("C:\\loop"));
  EXPECT_EQ(platform::OpenFile(QS_TEXT("C:\\loop"), platform::kAccessRead, 0,
                               platform::Disposition::kOpenExisting, 0)
                .error(),
            Error{1921});
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("C:\\loop")).ok());
}

TEST_F(Links, A_link_whose_target_is_gone_stays) {
  windows_.Remove(QS_TEXT("C:\\target"));
  EXPECT_TRUE(platform::QueryAttributes(QS_TEXT("C:\\junction")).ok());
  EXPECT_EQ(platform::QueryAttributes(QS_TEXT("C:\\junction\\f")).error(), Error::kPathNotFound);
  platform::FindData entry{};
  EXPECT_EQ(platform::FindFirst(QS_TEXT("C:\\junction\\*"), entry).error(), Error::kPathNotFound);
  EXPECT_FALSE(platform::OpenFile(QS_TEXT("C:\\file link"), platform::kAccessWrite, 0,
                                  platform::Disposition::kCreateAlways, 0)
                   .ok());
}

TEST_F(Links, A_placeholder_is_a_file_with_the_reparse_bit) {
  windows_.AddPlaceholder(QS_TEXT("C:\\cloud"), 100);
  const auto facts = platform::QueryFileFacts(QS_TEXT("C:\\cloud"));
  ASSERT_TRUE(facts.ok());
  EXPECT_EQ(facts.value().size, 100u);
  EXPECT_TRUE(platform::IsReparsePoint(facts.value().attributes));
  EXPECT_FALSE(platform::IsDirectory(facts.value().attributes));
  EXPECT_EQ(EntryFor(QS_TEXT("C:\\cloud")).reparse_tag, 0x9000001Au);
}

}  // namespace
}  // namespace quastel::simulated
