// Where the cache of a profile lies.

#include <gtest/gtest.h>

#include <string>

#include "duplicate/hash_cache.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel::duplicate_tests {
namespace {

using support::Utf8;

constexpr const char* kBelow =
    "AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\duplicate-hashes-v1.bin";

struct LocationCase : support::NamedCase {
  const Char* home;
  const char* folder;  // what comes before AppData; null: there is no cache
};

class CacheLocation : public ::testing::TestWithParam<LocationCase> {};

TEST_P(CacheLocation, Is_below_an_absolute_profile_and_nowhere_else) {
  simulated::SimulatedWindows machine;
  machine.SetRecording(true);
  const LocationCase& c = GetParam();
  EXPECT_EQ(Utf8(duplicate::CacheLocationOf(c.home)),
            c.folder == nullptr ? "" : std::string(c.folder) + kBelow);
  EXPECT_TRUE(machine.record().empty()) << "only the text decides";
}

INSTANTIATE_TEST_SUITE_P(
    All, CacheLocation,
    ::testing::Values(
        LocationCase{{"empty"}, u"", nullptr},  //
        LocationCase{{"a_letter"}, u"C", nullptr}, LocationCase{{"a_backslash"}, u"\\", nullptr},
        LocationCase{{"a_drive_letter_and_a_colon"}, u"C:", nullptr},
        LocationCase{{"two_letters"}, u"ab", nullptr},
        LocationCase{{"drive_root"}, u"C:\\", "C:\\"},
        LocationCase{{"drive_root_with_a_slash"}, u"C:/", "C:/"},
        LocationCase{{"profile"}, u"C:\\Users\\x", "C:\\Users\\x\\"},
        LocationCase{{"profile_with_a_separator_at_its_end"}, u"C:\\Users\\x\\", "C:\\Users\\x\\"},
        LocationCase{{"profile_with_slashes"}, u"C:/Users/x", "C:/Users/x\\"},
        LocationCase{{"profile_with_a_slash_at_its_end"}, u"C:/Users/x/", "C:/Users/x/"},
        LocationCase{{"small_letter"}, u"c:\\Users\\x", "c:\\Users\\x\\"},
        LocationCase{{"first_letter"}, u"A:\\u", "A:\\u\\"},
        LocationCase{{"last_letter"}, u"Z:\\u", "Z:\\u\\"},
        LocationCase{{"first_small_letter"}, u"a:\\u", "a:\\u\\"},
        LocationCase{{"last_small_letter"}, u"z:\\u", "z:\\u\\"},
        LocationCase{{"before_the_letters"}, u"@:\\u", nullptr},
        LocationCase{{"behind_the_letters"}, u"[:\\u", nullptr},
        LocationCase{{"before_the_small_letters"}, u"`:\\u", nullptr},
        LocationCase{{"behind_the_small_letters"}, u"{:\\u", nullptr},
        LocationCase{{"a_digit"}, u"1:\\u", nullptr},
        LocationCase{{"a_letter_that_is_not_ASCII"}, u"\u00c4:\\u", nullptr},
        LocationCase{{"a_wide_letter"}, u"\uff23:\\u", nullptr},
        LocationCase{{"relative_to_a_drive"}, u"C:Users", nullptr},
        LocationCase{{"relative_to_the_root"}, u"\\Users\\x", nullptr},
        LocationCase{{"relative"}, u"Users\\x", nullptr}, LocationCase{{"dot"}, u".\\x", nullptr},
        LocationCase{{"blank_first"}, u" C:\\Users", nullptr},
        LocationCase{{"share"}, u"\\\\server\\share\\x", "\\\\server\\share\\x\\"},
        LocationCase{{"share_with_slashes"}, u"//server/share", "//server/share\\"},
        LocationCase{{"mixed_separators_first"}, u"\\/server\\share\\", "\\/server\\share\\"},
        LocationCase{{"mixed_the_other_way"}, u"/\\s", "/\\s\\"},
        LocationCase{{"two_backslashes_alone"}, u"\\\\", "\\\\"},
        LocationCase{{"two_slashes_alone"}, u"//", "//"},
        LocationCase{{"extended"}, u"\\\\?\\C:\\Users\\x", "\\\\?\\C:\\Users\\x\\"}),
    support::CaseName());

TEST(CacheLocationText, A_view_that_goes_on_is_taken_as_far_as_it_goes) {
  EXPECT_EQ(Utf8(duplicate::CacheLocationOf(TextView(u"C:\\Users\\x\\y").substr(0, 10))),
            std::string("C:\\Users\\x\\") + kBelow);
  EXPECT_TRUE(duplicate::CacheLocationOf(TextView(u"C:\\").substr(0, 2)).empty());
}

}  // namespace
}  // namespace quastel::duplicate_tests
