#include "scan/scan_fixture.h"
#include "support/named_case.h"

namespace quastel::scan_tests {
namespace {

struct IncludeCase {
  const char* name;
  const Char* path;
  std::int64_t size;
  std::uint32_t protect;
  const Char* system_root;
  const Char* user_home;
  std::int32_t included;
};
void PrintTo(const IncludeCase& c, std::ostream* out) {
  *out << c.name;
}

class LargeScanInclude : public ::testing::TestWithParam<IncludeCase> {};

TEST_P(LargeScanInclude, Takes_large_files_that_are_neither_ignored_nor_protected) {
  SimulatedWindows machine;
  const IncludeCase& c = GetParam();
  EXPECT_EQ(qs_large_scan_include(c.path, c.size, c.protect, c.system_root, c.user_home),
            c.included);
}

constexpr std::int64_t kBig = static_cast<std::int64_t>(kLarge);
constexpr const Char* kRoot = u"C:\\";
constexpr const Char* kHome = u"C:\\Users\\u";

INSTANTIATE_TEST_SUITE_P(
    All, LargeScanInclude,
    ::testing::Values(
        IncludeCase{"null_path", nullptr, kBig, 0, nullptr, nullptr, 0},
        IncludeCase{"null_path_with_protection", nullptr, kBig, 1, kRoot, kHome, 0},
        IncludeCase{"large", u"C:\\a.bin", kBig, 0, nullptr, nullptr, 1},
        IncludeCase{"not_large", u"C:\\a.bin", kBig - 1, 0, nullptr, nullptr, 0},
        IncludeCase{"negative", u"C:\\a.bin", -1, 0, nullptr, nullptr, 0},
        IncludeCase{"empty_path", u"", kBig, 0, nullptr, nullptr, 1},
        IncludeCase{"paging_file", u"C:\\pagefile.sys", INT64_MAX, 0, nullptr, nullptr, 0},
        IncludeCase{"swap_file_elsewhere", u"D:\\x\\SwapFile.SYS", INT64_MAX, 0, nullptr, nullptr,
                    0},
        IncludeCase{"hibernation_file", u"hiberfil.sys", INT64_MAX, 0, nullptr, nullptr, 0},
        IncludeCase{"nearly_a_paging_file", u"C:\\pagefile.sys.bak", kBig, 0, nullptr, nullptr, 1},
        IncludeCase{"protected", u"C:\\Windows\\big.bin", INT64_MAX, 1, kRoot, kHome, 0},
        IncludeCase{"protected_in_other_case", u"c:\\windows\\big.bin", kBig, 1, kRoot, kHome, 0},
        IncludeCase{"protected_by_any_bit", u"C:\\Windows\\big.bin", kBig, 0x80000000, kRoot, kHome,
                    0},
        IncludeCase{"protection_off", u"C:\\Windows\\big.bin", kBig, 0, kRoot, kHome, 1},
        IncludeCase{"application_data", u"C:\\Users\\u\\AppData\\Local\\big.bin", kBig, 1, kRoot,
                    kHome, 0},
        IncludeCase{"documents", u"C:\\Users\\u\\Documents\\big.bin", kBig, 1, kRoot, kHome, 1},
        IncludeCase{"sibling_of_a_protected_folder", u"C:\\WindowsApps\\big.bin", kBig, 1, kRoot,
                    kHome, 1},
        IncludeCase{"other_drive", u"D:\\Windows\\big.bin", kBig, 1, kRoot, kHome, 1},
        IncludeCase{"no_system_root_protects_nothing", u"C:\\Windows\\big.bin", kBig, 1, nullptr,
                    kHome, 1},
        IncludeCase{"no_home_protects_nothing", u"C:\\Windows\\big.bin", kBig, 1, kRoot, nullptr,
                    1},
        IncludeCase{"no_home_and_not_large", u"C:\\Windows\\big.bin", kBig - 1, 1, kRoot, nullptr,
                    0},
        IncludeCase{"protected_and_not_large", u"C:\\Windows\\small.bin", 1, 1, kRoot, kHome, 0}),
    support::CaseName());

TEST(LargeScanIncludeOrder, Asks_the_system_nothing_about_an_ignored_file) {
  SimulatedWindows machine;
  EXPECT_EQ(qs_large_scan_include(u"C:\\Windows\\pagefile.sys", kBig, 1, kRoot, kHome), 0);
  EXPECT_EQ(machine.CallCount(Call::kFullPathName), 0u);
}

}  // namespace
}  // namespace quastel::scan_tests
