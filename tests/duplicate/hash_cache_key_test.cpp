// The key of a file in the cache.

#include <gtest/gtest.h>

#include "duplicate/hash_cache.h"
#include "duplicate/machine.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::CacheKeyOf;

std::string KeyOf(const char* path) {
  return Utf8(CacheKeyOf(support::Wide(path)));
}

TEST(CacheKey, Is_the_full_path_in_lower_case_with_backslashes) {
  SimulatedWindows machine;
  EXPECT_EQ(KeyOf("C:\\Data\\Film.MKV"), "c:\\data\\film.mkv");
  EXPECT_EQ(KeyOf("C:/Data/Film.MKV"), "c:\\data\\film.mkv");
  EXPECT_EQ(KeyOf("C:\\Data\\.\\Sub\\..\\\\A.TXT"), "c:\\data\\a.txt");
  EXPECT_EQ(KeyOf("\\\\Server\\Share\\A"), "\\\\server\\share\\a");
  EXPECT_EQ(KeyOf("//Server/Share/A"), "\\\\server\\share\\a");
}

TEST(CacheKey, Of_a_relative_path_is_that_of_the_file_it_names) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\Work");
  machine.SetCurrentFolder(u"C:\\Work");
  EXPECT_EQ(KeyOf("A.txt"), "c:\\work\\a.txt");
  EXPECT_EQ(KeyOf("..\\A.txt"), "c:\\a.txt");
}

TEST(CacheKey, Spellings_of_one_file_have_one_key) {
  SimulatedWindows machine;
  EXPECT_EQ(KeyOf("c:\\DATA\\a"), KeyOf("C:/data/x/../A"));
  EXPECT_NE(KeyOf("C:\\data\\a"), KeyOf("C:\\data\\ab"));
}

TEST(CacheKey, Everything_behind_the_letters_is_kept) {
  SimulatedWindows machine;
  const Text odd = u"C:\\\xd801\\\u00e9 \U00010401[]{}@`1.b";
  EXPECT_EQ(Utf8(CacheKeyOf(odd)), Utf8(Text(u"c:\\\xd801\\\u00e9 \U00010401[]{}@`1.b")));
}

TEST(CacheKey, A_path_that_the_system_cannot_resolve_is_taken_as_it_is) {
  SimulatedWindows machine;
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    machine.ClearFaults();
    machine.FailCall(Call::kFullPathName, 1, repeat);
    EXPECT_EQ(KeyOf("C:/Data/../A.TXT"), "c:\\data\\..\\a.txt");
    EXPECT_GE(machine.faults_injected(), 1u);
  }
}

TEST(CacheKey, Of_a_long_path_is_whole_or_as_given_whichever_call_fails) {
  SimulatedWindows machine;
  const Text path = support::NestedTo(3000, u"C:/Deep") + u"\\.\\X";
  const std::string given = [&] {
    machine.FailCall(Call::kFullPathName, 1, Repeat::kFromThenOn);
    return Utf8(CacheKeyOf(path));
  }();
  EXPECT_EQ(given.substr(0, 10), "c:\\deep\\nn");
  EXPECT_EQ(given.substr(given.size() - 4), "\\.\\x");
  machine.ClearFaults();
  const std::string whole = Utf8(CacheKeyOf(path));
  EXPECT_EQ(whole, given.substr(0, given.size() - 3) + "x");
  for (std::uint64_t nth = 1; nth < 5; ++nth) {
    machine.ClearFaults();
    machine.FailCall(Call::kFullPathName, nth);
    const std::string key = Utf8(CacheKeyOf(path));
    EXPECT_EQ(key, machine.faults_injected() == 0 ? whole : given) << nth;
  }
}

TEST(CacheKey, Of_an_empty_path_is_empty) {
  SimulatedWindows machine;
  EXPECT_EQ(KeyOf(""), "");
}

TEST(CacheKey, Asks_nothing_about_the_file_itself) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  EXPECT_EQ(KeyOf("C:\\missing\\a"), "c:\\missing\\a");
  for (const CallRecord& record : machine.record()) {
    EXPECT_EQ(record.call, Call::kFullPathName);
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
