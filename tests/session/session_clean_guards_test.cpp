// What may have happened to a file since the scan, and whether a clean still deletes it.

#include <functional>

#include "session/session_fixture.h"
#include "support/named_case.h"

namespace quastel::session_tests {
namespace {

constexpr const Char* kFile = u"C:\\t\\sub\\b";
constexpr std::uint64_t kTime = FileOptions{}.last_write;

struct ChangeCase : support::NamedCase {
  std::function<void(SimulatedWindows& machine)> change;
  bool deletable = false;
};

// Three files a, sub\b and z, each of five bytes; the second one changes.
class SessionCleanGuards : public SessionTest, public ::testing::WithParamInterface<ChangeCase> {};

TEST_P(SessionCleanGuards, Let_go_only_what_is_as_it_was_scanned) {
  machine_.AddFile(u"C:\\t\\a", "12345");
  machine_.AddFile(kFile, "12345");
  machine_.AddFile(u"C:\\t\\z", "12345");
  // What the folder could be exchanged for: the same file at another place.
  machine_.AddFile(u"C:\\precious\\b", "12345");
  ScanTree();
  const Ids ids = IdsOf(session_, {u"C:\\t\\a", kFile, u"C:\\t\\z"});
  GetParam().change(machine_);
  const Lines disk = DiskOf(machine_);

  EXPECT_EQ(session_.Clean(ids), GetParam().deletable ? QS_OK : QS_FAILED);
  Lines gone = {"C:\\t\\a"};
  if (GetParam().deletable) {
    gone = {"C:\\t\\a", Utf8(kFile), "C:\\t\\z"};
  }
  EXPECT_EQ(GoneSince(disk, machine_), gone);
  EXPECT_EQ(NewSince(disk, machine_), Lines{});
  EXPECT_EQ(MarksOf(session_).size(), gone.size());
  EXPECT_EQ(CleanOf(session_), Ended(GetParam().deletable ? QS_OK : QS_FAILED, 3, gone.size()));
}

INSTANTIATE_TEST_SUITE_P(
    All, SessionCleanGuards,
    ::testing::Values(
        ChangeCase{{"nothing"}, [](SimulatedWindows&) {}, true},
        ChangeCase{
            {"other_content"}, [](SimulatedWindows& m) { m.SetContent(kFile, "54321"); }, true},
        ChangeCase{{"made_again_with_the_same_time"},
                   [](SimulatedWindows& m) {
                     m.Remove(kFile);
                     m.AddFile(kFile, "abcde");
                   },
                   true},
        ChangeCase{{"hidden"},
                   [](SimulatedWindows& m) { m.SetAttributes(kFile, platform::kAttributeHidden); },
                   true},
        ChangeCase{{"another_file_in_the_folder"},
                   [](SimulatedWindows& m) { m.AddFile(u"C:\\t\\sub\\new", ""); },
                   true},
        ChangeCase{{"one_byte_more"}, [](SimulatedWindows& m) { m.SetContent(kFile, "123456"); }},
        ChangeCase{{"one_byte_less"}, [](SimulatedWindows& m) { m.SetContent(kFile, "1234"); }},
        ChangeCase{{"empty"}, [](SimulatedWindows& m) { m.SetContent(kFile, ""); }},
        ChangeCase{{"the_same_low_half_of_the_size"},
                   [](SimulatedWindows& m) { m.AddSizedFile(kFile, 0x1'0000'0005); }},
        ChangeCase{{"a_tick_later"}, [](SimulatedWindows& m) { m.SetLastWrite(kFile, kTime + 1); }},
        ChangeCase{{"a_tick_earlier"},
                   [](SimulatedWindows& m) { m.SetLastWrite(kFile, kTime - 1); }},
        ChangeCase{{"another_time_zone"},
                   [](SimulatedWindows& m) {
                     m.SetTimeZoneOffset(60);
                     // The first file stays what it was: an hour earlier in an hour more.
                     m.SetLastWrite(u"C:\\t\\a", kTime - 36'000'000'000);
                   }},
        ChangeCase{{"removed"}, [](SimulatedWindows& m) { m.Remove(kFile); }},
        ChangeCase{{"a_folder_now"},
                   [](SimulatedWindows& m) {
                     m.Remove(kFile);
                     m.AddFolder(kFile);
                   }},
        ChangeCase{{"a_link_now"},
                   [](SimulatedWindows& m) {
                     m.Remove(kFile);
                     m.AddLink(LinkKind::kFileLink, kFile, u"C:\\precious\\b");
                   }},
        ChangeCase{{"a_junction_now"},
                   [](SimulatedWindows& m) {
                     m.Remove(kFile);
                     m.AddLink(LinkKind::kJunction, kFile, u"C:\\precious");
                   }},
        ChangeCase{{"in_the_cloud_now"},
                   [](SimulatedWindows& m) {
                     m.Remove(kFile);
                     m.AddPlaceholder(kFile, 5);
                   }},
        ChangeCase{{"its_folder_a_junction_now"},
                   [](SimulatedWindows& m) {
                     m.Remove(u"C:\\t\\sub");
                     m.AddLink(LinkKind::kJunction, u"C:\\t\\sub", u"C:\\precious");
                   }},
        ChangeCase{{"its_folder_a_link_now"},
                   [](SimulatedWindows& m) {
                     m.Remove(u"C:\\t\\sub");
                     m.AddLink(LinkKind::kFolderLink, u"C:\\t\\sub", u"C:\\precious");
                   }},
        ChangeCase{{"its_folder_removed"}, [](SimulatedWindows& m) { m.Remove(u"C:\\t\\sub"); }},
        ChangeCase{
            {"read_only"},
            [](SimulatedWindows& m) { m.SetAttributes(kFile, platform::kAttributeReadOnly); }},
        ChangeCase{{"open_elsewhere"}, [](SimulatedWindows& m) { m.Lock(kFile); }},
        ChangeCase{{"deleting_denied"},
                   [](SimulatedWindows& m) { m.Deny(kFile, {.deleting = true}); }},
        ChangeCase{{"querying_denied"},
                   [](SimulatedWindows& m) { m.Deny(kFile, {.querying = true}); }}),
    support::CaseName());

// A folder that becomes a junction while its files are being deleted.
TEST(SessionCleanRace, Does_not_follow_a_folder_that_is_exchanged_between_two_files) {
  SimulatedWindows machine;
  for (const char* name : {"a", "b", "c"}) {
    machine.AddFile(u"C:\\t\\sub\\" + Wide(name), "12345");
    machine.AddFile(u"C:\\precious\\" + Wide(name), "12345");
  }
  SessionHandle session;
  ASSERT_EQ(session.Scan(u"C:\\t"), QS_OK);
  bool exchanged = false;
  machine.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kFullPathName && record.path == u"C:\\t\\sub\\b" && !exchanged) {
      machine.Remove(u"C:\\t\\sub");
      machine.AddLink(LinkKind::kJunction, u"C:\\t\\sub", u"C:\\precious");
      exchanged = true;
    }
  });
  EXPECT_EQ(session.Clean({0, 1, 2}), QS_FAILED);
  machine.SetHook(nullptr);
  EXPECT_TRUE(exchanged);
  EXPECT_EQ(CleanOf(session), Ended(QS_FAILED, 3, 1));
  EXPECT_EQ(machine.NamesIn(u"C:\\precious").size(), 3u);
}

// Between the look at a file and its removal nothing holds it; what is asked twice is the way to
// it.
TEST(SessionCleanRace, Looks_at_the_way_to_a_file_once_more_before_it_goes) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\t\\sub\\a", "12345");
  machine.AddFile(u"C:\\precious\\a", "12345");
  SessionHandle session;
  ASSERT_EQ(session.Scan(u"C:\\t"), QS_OK);
  InsideCall(machine, Call::kToLocalFileTime, 1, [&] {
    machine.Remove(u"C:\\t\\sub");
    machine.AddLink(LinkKind::kJunction, u"C:\\t\\sub", u"C:\\precious");
  });
  EXPECT_EQ(session.Clean({0}), QS_FAILED);
  machine.SetHook(nullptr);
  EXPECT_TRUE(machine.Exists(u"C:\\precious\\a"));
}

}  // namespace
}  // namespace quastel::session_tests
