#include "scan/root_filter.h"

#include "base/ascii.h"
#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

struct FilterCase {
  const char* name;
  std::vector<Text> roots;
  std::vector<Text> kept;
};
void PrintTo(const FilterCase& c, std::ostream* out) {
  *out << c.name << " " << ::testing::PrintToString(c.roots);
}

// Where a root's files are: its text without trailing separator and detour.
Text FolderOf(Text root) {
  if (const std::size_t detour = root.find(u"\\b\\.."); detour != Text::npos) {
    root.erase(detour, 5);
  }
  while (IsSeparator(root.back())) {
    root.pop_back();
  }
  return root;
}

class RootFilter : public ::testing::TestWithParam<FilterCase> {};

TEST_P(RootFilter, Keeps_the_outermost_roots_shortest_first) {
  SimulatedWindows machine;
  EXPECT_EQ(FilterScanRoots(GetParam().roots), GetParam().kept);
}

// One file for each root that is left: no file is met twice, and the rows tell the order.
TEST_P(RootFilter, Decides_what_a_scan_walks_and_in_which_order) {
  if (GetParam().roots.empty()) {
    return;  // no request comes without roots
  }
  SimulatedWindows machine;
  machine.AddDrive('D');
  std::vector<Text> expected;
  for (const Text& root : GetParam().roots) {
    machine.AddFolder(FolderOf(root) + u"\\sub");
  }
  for (const Text& root : GetParam().kept) {
    machine.AddSizedFile(FolderOf(root) + u"\\big.bin", kLarge);
    expected.push_back(root + u"\\big.bin");
  }
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles(GetParam().roots)), QS_OK);
  EXPECT_EQ(PathsOf(ReadReport(scan)), expected);
}

INSTANTIATE_TEST_SUITE_P(
    All, RootFilter,
    ::testing::Values(
        FilterCase{"none", {}, {}}, FilterCase{"one", {u"C:\\a"}, {u"C:\\a"}},
        FilterCase{"contained", {u"C:\\a", u"C:\\a\\b"}, {u"C:\\a"}},
        FilterCase{"contained_and_first", {u"C:\\a\\b", u"C:\\a"}, {u"C:\\a"}},
        FilterCase{"documented_example",
                   {u"C:\\a\\b", u"C:\\a", u"c:\\A\\", u"C:\\ab"},
                   {u"C:\\a", u"C:\\ab"}},
        FilterCase{"given_twice", {u"C:\\a", u"C:\\a"}, {u"C:\\a"}},
        FilterCase{"given_twice_in_other_spellings", {u"c:\\A\\", u"C:\\a"}, {u"c:\\A\\"}},
        FilterCase{"given_twice_with_slashes", {u"C:/a", u"C:\\a"}, {u"C:/a"}},
        FilterCase{"given_twice_by_way_of_another", {u"C:\\b\\..\\a", u"C:\\a"}, {u"C:\\b\\..\\a"}},
        FilterCase{
            "given_twice_with_the_long_prefix", {u"\\\\?\\C:\\a", u"C:\\a"}, {u"\\\\?\\C:\\a"}},
        FilterCase{"names_that_begin_alike", {u"C:\\ab", u"C:\\a"}, {u"C:\\a", u"C:\\ab"}},
        FilterCase{"equal_lengths_keep_their_order",
                   {u"C:\\z", u"D:\\a", u"C:\\a"},
                   {u"C:\\z", u"D:\\a", u"C:\\a"}},
        FilterCase{"shorter_ones_come_first",
                   {u"C:\\zzz", u"C:\\yy", u"D:\\xx", u"D:\\w"},
                   {u"D:\\w", u"C:\\yy", u"D:\\xx", u"C:\\zzz"}},
        FilterCase{"a_drive_holds_its_folders",
                   {u"C:\\Windows", u"D:\\x", u"c:\\", u"C:\\a\\b"},
                   {u"c:\\", u"D:\\x"}}),
    support::CaseName());

TEST(RootFilterOfAScan, Meets_no_file_of_overlapping_roots_twice) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\a\\b\\c\\big.bin", kLarge);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\a\\b\\c", u"C:\\A\\B", u"c:\\a\\", u"C:/a"})),
            QS_OK);
  EXPECT_EQ(PathsOf(ReadReport(scan)), std::vector<Text>{u"c:\\a\\\\b\\c\\big.bin"});
  EXPECT_EQ(Poll(scan).files_visited, 1u);
}

TEST(RootFilterOfAScan, Drops_no_root_for_being_missing) {
  SimulatedWindows machine;
  machine.AddSizedFile(u"C:\\there\\big.bin", kLarge);
  machine.SetRecording(true);
  ScanHandle scan;
  EXPECT_EQ(scan.Start(Request::LargeFiles({u"C:\\gone", u"C:\\there"})), QS_OK);
  EXPECT_EQ(PathsOf(ReadReport(scan)), std::vector<Text>{u"C:\\there\\big.bin"});
  EXPECT_EQ(machine.CallCountFor(Call::kQueryAttributes, u"C:\\gone"), 1u);
}

}  // namespace
}  // namespace quastel::scan_tests
