// What a duplicate scan walks and what it takes as a candidate: roots, protection, links, paths of
// every length, and the requests that are refused.

#include <string>

#include "duplicate/duplicate_fixture.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

using simulated::LinkKind;

Request Protected(std::vector<Text> roots) {
  Request request = DuplicateRequest(std::move(roots));
  request.protect_system = 1;
  request.system_root = u"C:\\";
  return request;
}

// The same content below each protected folder and beside it.
void AddProtectedTree(SimulatedWindows& machine) {
  for (const char16_t* path :
       {u"C:\\Program Files\\a", u"C:\\Program Files (x86)\\a", u"C:\\Windows\\System32\\a",
        u"C:\\ProgramData\\a", u"C:\\$Recycle.Bin\\a", u"C:\\Users\\u\\AppData\\Roaming\\a",
        u"C:\\WindowsApps\\a", u"C:\\Users\\u\\Documents\\a", u"C:\\Users\\v\\AppData\\a"}) {
    machine.AddFile(path, Bytes(9000));
  }
}

TEST(DuplicateProtection, Leaves_a_file_in_the_place_of_a_protected_folder_out) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\ProgramData", Bytes(9000));
  machine.AddFile(u"C:\\data\\ProgramData", Bytes(9000));
  machine.AddFile(u"C:\\data\\copy", Bytes(9000));
  const Outcome scan = Scan(Protected({u"C:\\"}));
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\\\data\\copy", "C:\\\\data\\ProgramData"}}));
  EXPECT_EQ(scan.performance.candidates, 2u);
  EXPECT_EQ(scan.performance.files_visited, 3u);
}

TEST(DuplicateProtection, Leaves_the_protected_folders_out_and_opens_nothing_in_them) {
  SimulatedWindows machine;
  AddProtectedTree(machine);
  machine.SetRecording(true);
  const Outcome scan = Scan(Protected({u"C:\\"}));
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\\\WindowsApps\\a", "C:\\\\Users\\v\\AppData\\a",
                                          "C:\\\\Users\\u\\Documents\\a"}}));
  EXPECT_EQ(scan.performance.candidates, 3u);
  EXPECT_EQ(scan.performance.files_visited, 3u);
  for (const auto& [path, opens] : OpensOf(machine)) {
    EXPECT_EQ(opens, 3) << path;
  }
  EXPECT_EQ(OpensOf(machine).size(), 3u);
}

// A long path drops the dot at the end of the name, and it is the path that would be opened.
TEST(DuplicateCandidates, Are_not_taken_by_a_path_that_became_that_of_a_paging_file) {
  SimulatedWindows machine;
  const Text folder = u"C:\\data\\" + Text(120, Char{'f'}) + u"\\" + Text(110, Char{'g'});
  machine.AddFile(u"\\\\?\\" + folder + u"\\pagefile.sys.", Bytes(9000));
  machine.AddFile(u"C:\\data\\copy", Bytes(9000));
  const Outcome scan = Scan(DuplicateRequest({u"C:\\data"}));
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(scan.performance.candidates, 1u);
  EXPECT_EQ(scan.performance.files_visited, 2u);
}

TEST(DuplicateProtection, That_is_not_asked_for_leaves_nothing_out) {
  SimulatedWindows machine;
  AddProtectedTree(machine);
  Request request = Protected({u"C:\\"});
  request.protect_system = 0;
  const Outcome scan = Scan(request);
  EXPECT_EQ(scan.performance.candidates, 9u);
  ASSERT_EQ(GroupsOf(scan.rows).size(), 1u);
  EXPECT_EQ(scan.rows.size(), 9u);
}

TEST(DuplicateProtection, Of_a_root_below_a_protected_folder_leaves_nothing_to_walk) {
  SimulatedWindows machine;
  AddProtectedTree(machine);
  machine.AddFile(u"C:\\Windows\\System32\\b", Bytes(9000));
  const Outcome scan = Scan(Protected({u"C:\\Windows\\System32"}));
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(scan.rows.size(), 0u);
  EXPECT_EQ(scan.performance.files_visited, 0u);
}

TEST(DuplicateProtection, Keeps_the_cache_in_its_protected_place) {
  SimulatedWindows machine;
  AddProtectedTree(machine);
  const Outcome cold = Scan(Protected({u"C:\\"}));
  machine.SetRecording(true);
  const Outcome warm = Scan(Protected({u"C:\\"}));
  EXPECT_EQ(OpenCount(machine), 0);
  EXPECT_EQ(warm.rows, cold.rows);
}

TEST(PagingFiles, Are_seen_but_never_candidates) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  for (const char16_t* path :
       {u"C:\\data\\pagefile.sys", u"C:\\data\\HIBERFIL.SYS", u"C:\\data\\SwapFile.sys",
        u"D:\\PAGEFILE.SYS", u"D:\\pagefile.sys.bak", u"D:\\my pagefile.sys"}) {
    machine.AddFile(path, Bytes(9000));
  }
  machine.SetRecording(true);
  for (const bool protect : {false, true}) {
    Request request = DuplicateRequest({u"C:\\data", u"D:\\"});
    request.protect_system = protect;
    request.system_root = u"C:\\";
    const Outcome scan = Scan(request);
    EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"D:\\\\my pagefile.sys", "D:\\\\pagefile.sys.bak"}}));
    EXPECT_EQ(scan.performance.candidates, 2u);
    EXPECT_EQ(scan.performance.files_visited, 6u);
    EXPECT_EQ(scan.performance.bytes_visited, 6u * 9000);
  }
  EXPECT_EQ(OpensOf(machine).size(), 2u);
}

TEST(DuplicateRoots, That_overlap_are_walked_once) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\a\\one", Bytes(9000));
  machine.AddFile(u"C:\\a\\b\\two", Bytes(9000));
  machine.SetRecording(true);
  const Outcome scan =
      Scan(DuplicateRequest({u"C:\\a\\b", u"C:\\a", u"c:\\A\\", u"C:\\a\\b", u"C:/a/b/../b"}));
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\a\\one", "C:\\a\\b\\two"}}));
  EXPECT_EQ(scan.performance.candidates, 2u);
  EXPECT_EQ(machine.CallCount(Call::kFindFirstBasic), 2u);
}

TEST(DuplicateRoots, That_are_files_links_or_missing_are_passed_over) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  machine.AddFile(u"C:\\file", Bytes(9000));
  machine.AddLink(LinkKind::kJunction, u"C:\\junction", u"C:\\data");
  const Outcome scan = Scan(
      DuplicateRequest({u"C:\\file", u"C:\\junction", u"C:\\missing", u"Q:\\none", u"C:\\data"}));
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\b"}}));
}

TEST(DuplicateRoots, May_lie_on_a_share) {
  SimulatedWindows machine;
  machine.AddShare(u"\\\\server\\share");
  machine.AddFile(u"\\\\server\\share\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  const Outcome scan = Scan(DuplicateRequest({u"\\\\server\\share\\data", u"C:\\data"}));
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\b", "\\\\server\\share\\data\\a"}}));
  EXPECT_EQ(CacheOf(machine).at(0).key, u"\\\\server\\share\\data\\a");
}

TEST(DuplicateLinks, Are_neither_entered_nor_opened) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  machine.AddFile(u"C:\\other\\c", Bytes(9000));
  machine.AddLink(LinkKind::kJunction, u"C:\\data\\junction", u"C:\\other");
  machine.AddLink(LinkKind::kFolderLink, u"C:\\data\\folder link", u"C:\\other");
  machine.AddLink(LinkKind::kFileLink, u"C:\\data\\file link", u"C:\\other\\c");
  machine.AddPlaceholder(u"C:\\data\\in the cloud", 9000);
  machine.SetRecording(true);
  const Outcome scan = ScanData();
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\b"}}));
  EXPECT_EQ(scan.performance.files_visited, 2u);
  EXPECT_EQ(OpensOf(machine).size(), 2u);
}

struct LengthCase {
  std::size_t length;
};
void PrintTo(const LengthCase& c, std::ostream* out) {
  *out << c.length << " units";
}

class PathLength : public ::testing::TestWithParam<LengthCase> {};

TEST_P(PathLength, Is_no_obstacle_cold_or_warm) {
  SimulatedWindows machine;
  const std::size_t length = GetParam().length;
  const Text plain = support::NestedTo(length, u"C:\\data");
  const Text path = length < 248 ? plain : u"\\\\?\\" + plain;
  machine.AddFile(plain, Bytes(9000));
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  const Outcome cold = ScanData();
  EXPECT_EQ(GroupsOf(cold.rows), (Groups{{"C:\\data\\a", Utf8(path)}}));
  EXPECT_EQ(cold.rows.at(1).name, plain.substr(plain.rfind(Char{'\\'}) + 1));

  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), 2u);
  EXPECT_EQ(cache[length < 248 ? 1 : 0].key.size(), path.size());
  machine.SetRecording(true);
  EXPECT_EQ(ScanData().rows, cold.rows);
  EXPECT_EQ(OpenCount(machine), 0);
}

INSTANTIATE_TEST_SUITE_P(All, PathLength,
                         ::testing::Values(LengthCase{247}, LengthCase{248}, LengthCase{259},
                                           LengthCase{260}, LengthCase{261}, LengthCase{1000},
                                           LengthCase{20'000}));

TEST(DuplicateNames, Of_any_letters_are_found_again_in_the_cache) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\\u00C4 \u03A9 \u4E2D \U0001F600.TXT", Bytes(9000));
  machine.AddFile(u"C:\\data\\\xD800 alone", Bytes(9000));
  const Outcome cold = ScanData();
  EXPECT_EQ(cold.rows.size(), 2u);
  machine.SetRecording(true);
  EXPECT_EQ(ScanData().rows, cold.rows);
  EXPECT_EQ(OpenCount(machine), 0);
}

// ---- Requests

struct RefusedCase : support::NamedCase {
  void (*spoil)(Request& request);
};

class RefusedRequest : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedRequest, Leaves_the_report_of_the_scan_before) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(90));
  machine.AddFile(u"C:\\data\\b", Bytes(90));
  ScanHandle scan;
  EXPECT_EQ(scan.Start(DuplicateRequest({u"C:\\data"})), QS_OK);
  const std::string before = scan_tests::EverythingOf(scan);
  Request request = DuplicateRequest({u"C:\\data"});
  GetParam().spoil(request);
  EXPECT_EQ(scan.Start(request), QS_INVALID_ARGUMENT);
  EXPECT_EQ(scan_tests::EverythingOf(scan), before);
  EXPECT_EQ(RowCountOf(scan), 2u);
}

INSTANTIATE_TEST_SUITE_P(
    All, RefusedRequest,
    ::testing::Values(RefusedCase{{"without_roots"}, [](Request& request) { request.roots = {}; }},
                      RefusedCase{{"with_an_empty_root"},
                                  [](Request& request) { request.roots.push_back(u""); }},
                      RefusedCase{{"protected_without_profile"},
                                  [](Request& request) {
                                    request.protect_system = 1;
                                    request.system_root = u"C:\\";
                                    request.user_home.reset();
                                  }},
                      RefusedCase{{"protected_without_system_root"},
                                  [](Request& request) { request.protect_system = 1; }}),
    support::CaseName());

}  // namespace
}  // namespace quastel::duplicate_tests
