// Which files a duplicate scan takes.

#include "duplicate/machine.h"
#include "duplicate/sample.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

constexpr const Char* kRoot = u"C:\\";
constexpr const Char* kHome = u"C:\\Users\\u";

struct IncludeCase : support::NamedCase {
  const Char* path;
  std::uint32_t protect;
  const Char* system_root;
  const Char* user_home;
  std::int32_t included;
};

class DuplicateScanInclude : public ::testing::TestWithParam<IncludeCase> {};

TEST_P(DuplicateScanInclude, Takes_files_that_are_neither_ignored_nor_protected) {
  SimulatedWindows machine;
  const IncludeCase& c = GetParam();
  EXPECT_EQ(qs_duplicate_scan_include(c.path, c.protect, c.system_root, c.user_home), c.included);
  EXPECT_EQ(machine.CallCount(Call::kOpenFile), 0u);
  EXPECT_EQ(machine.CallCount(Call::kQueryAttributes), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    All, DuplicateScanInclude,
    ::testing::Values(
        IncludeCase{{"null_path"}, nullptr, 0, nullptr, nullptr, 0},
        IncludeCase{{"null_path_with_protection"}, nullptr, 1, kRoot, kHome, 0},
        IncludeCase{{"a_file"}, u"C:\\a.bin", 0, nullptr, nullptr, 1},
        IncludeCase{{"a_file_with_protection"}, u"C:\\data\\a.bin", 1, kRoot, kHome, 1},
        IncludeCase{{"empty_path"}, u"", 0, nullptr, nullptr, 1},
        IncludeCase{{"paging_file_in_capitals"}, u"C:\\PAGEFILE.SYS", 0, nullptr, nullptr, 0},
        IncludeCase{
            {"paging_file_in_capitals_with_protection"}, u"C:\\PAGEFILE.SYS", 1, kRoot, kHome, 0},
        IncludeCase{{"paging_file_without_paths"}, u"C:\\PAGEFILE.SYS", 1, nullptr, nullptr, 0},
        IncludeCase{{"nearly_a_paging_file"}, u"C:\\pagefile.sys.bak", 0, nullptr, nullptr, 1},
        IncludeCase{
            {"nearly_a_paging_file_with_protection"}, u"C:\\pagefile.sys.bak", 1, kRoot, kHome, 1},
        IncludeCase{{"ends_like_a_paging_file"}, u"C:\\mypagefile.sys", 0, nullptr, nullptr, 1},
        IncludeCase{{"swap_file"}, u"D:\\x\\SwapFile.sys", 0, nullptr, nullptr, 0},
        IncludeCase{{"hibernation_file"}, u"hiberfil.sys", 0, nullptr, nullptr, 0},
        IncludeCase{
            {"hibernation_file_behind_a_slash"}, u"C:/hiberFIL.sys", 0, nullptr, nullptr, 0},
        IncludeCase{{"a_folder_of_that_name"}, u"C:\\pagefile.sys\\a.bin", 0, nullptr, nullptr, 1},
        IncludeCase{{"letters_beyond_ASCII_are_not_folded"},
                    u"C:\\pagef\u0130le.sys",
                    0,
                    nullptr,
                    nullptr,
                    1},
        IncludeCase{{"windows"}, u"C:\\Windows\\a.dll", 1, kRoot, kHome, 0},
        IncludeCase{{"windows_in_other_case"}, u"c:\\wINDOWS\\a.dll", 1, kRoot, kHome, 0},
        IncludeCase{{"program_files"}, u"C:\\Program Files\\p\\a.dll", 1, kRoot, kHome, 0},
        IncludeCase{
            {"program_files_x86"}, u"C:\\Program Files (x86)\\p\\a.dll", 1, kRoot, kHome, 0},
        IncludeCase{{"program_data"}, u"C:\\ProgramData\\a", 1, kRoot, kHome, 0},
        IncludeCase{{"recycle_bin"}, u"C:\\$Recycle.Bin\\S-1\\a", 1, kRoot, kHome, 0},
        IncludeCase{{"application_data"}, u"C:\\Users\\u\\AppData\\Local\\a", 1, kRoot, kHome, 0},
        IncludeCase{{"application_data_of_another_user"},
                    u"C:\\Users\\v\\AppData\\Local\\a",
                    1,
                    kRoot,
                    kHome,
                    1},
        IncludeCase{{"any_bit_protects"}, u"C:\\Windows\\a", 0x80000000, kRoot, kHome, 0},
        IncludeCase{{"protection_off"}, u"C:\\Windows\\a", 0, kRoot, kHome, 1},
        IncludeCase{{"sibling_of_a_protected_folder"}, u"C:\\WindowsApps\\a", 1, kRoot, kHome, 1},
        IncludeCase{{"other_drive"}, u"D:\\Windows\\a", 1, kRoot, kHome, 1},
        IncludeCase{{"no_system_root"}, u"C:\\Windows\\a", 1, nullptr, kHome, 1},
        IncludeCase{{"no_home"}, u"C:\\Windows\\a", 1, kRoot, nullptr, 1},
        IncludeCase{{"neither"}, u"C:\\Windows\\a", 1, nullptr, nullptr, 1}),
    support::CaseName());

TEST(DuplicateScanIncludeOrder, Asks_the_system_nothing_without_a_path) {
  SimulatedWindows machine;
  EXPECT_EQ(qs_duplicate_scan_include(nullptr, 1, kRoot, kHome), 0);
  EXPECT_EQ(machine.CallCount(Call::kFullPathName), 0u);
}

TEST(DuplicateScanIncludeOrder, Asks_the_system_nothing_about_an_ignored_file) {
  SimulatedWindows machine;
  EXPECT_EQ(qs_duplicate_scan_include(u"C:\\Windows\\pagefile.sys", 1, kRoot, kHome), 0);
  EXPECT_EQ(machine.CallCount(Call::kFullPathName), 0u);
}

TEST(DuplicateScanIncludeOrder, Asks_the_system_nothing_without_protection) {
  SimulatedWindows machine;
  EXPECT_EQ(qs_duplicate_scan_include(u"C:\\Windows\\a", 0, kRoot, kHome), 1);
  EXPECT_EQ(machine.CallCount(Call::kFullPathName), 0u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
