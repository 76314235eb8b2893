// The key of a file in the cache.

#include <gtest/gtest.h>

#include "duplicate/cache_key.h"
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

// ---- The keys of many files

// Names that the system keeps, and names that it changes or takes for something else.
const std::vector<Text>& Names() {
  static const std::vector<Text>* const names = new std::vector<Text>{
      u"A.TXT",  u"a",     u"a b",  u".hidden", u"a.",      u"a..",           u"a ",
      u"a. .",   u"...",   u"CON",  u"con.txt", u"Console", u"nul",           u"NUL.",
      u"aux.h",  u"prn",   u"com1", u"COM9.x",  u"lpt1",    u"compute",       u"\u00c9\u0416",
      u"\xd801", u"x.y.z", u"AUX",  u"\u007f",  u"\u0080",  u"a\u0080\u0081Z"};
  return *names;
}

TEST(CacheKeys, Of_files_are_those_of_their_paths) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\Work\\Sub");
  machine.SetCurrentFolder(u"C:\\Work");
  duplicate::CacheKeys keys;
  const std::vector<Text> folders = {
      u"C:\\",        u"C:\\Data\\", u"C:/Data/", u"C:\\Data\\\\",           u"C:\\a\\..\\b\\",
      u"C:\\dots.\\", u"Sub\\",      u".\\",      u"\\\\Server\\Share\\F\\", u"C:\\nul\\",
      u"\\"};
  for (const Text& folder : folders) {
    for (const Text& name : Names()) {
      EXPECT_EQ(Utf8(keys.Of(folder, name)), Utf8(CacheKeyOf(folder + name)))
          << Utf8(folder) << " and " << Utf8(name);
    }
  }
  EXPECT_EQ(Utf8(keys.Of(u"", u"A.TXT")), "c:\\work\\a.txt");
}

// Behind the extended-length prefix "n." is a file of its own, but resolved it has the path of "n".
TEST(CacheKeys, Of_files_that_would_share_one_with_another_file_are_empty) {
  SimulatedWindows machine;
  duplicate::CacheKeys keys;
  const Text plain = u"\\\\?\\C:\\Data\\";
  const Text doubled = u"\\\\?\\C:\\\\Data\\";
  const Text dotted = u"\\\\?\\C:\\Data.\\";
  EXPECT_EQ(Utf8(keys.Of(plain, u"N")), "\\\\?\\c:\\data\\n");
  EXPECT_EQ(Utf8(keys.Of(plain, u"N.")), "");
  EXPECT_EQ(Utf8(keys.Of(plain, u"N ")), "");
  EXPECT_EQ(Utf8(keys.Of(plain, u"N")), "\\\\?\\c:\\data\\n");
  EXPECT_EQ(Utf8(keys.Of(doubled, u"N")), "\\\\?\\c:\\data\\n");
  EXPECT_EQ(Utf8(keys.Of(dotted, u"N")), "");
  EXPECT_EQ(Utf8(keys.Of(dotted, u"M")), "");
  EXPECT_EQ(Utf8(keys.Of(plain, u"M")), "\\\\?\\c:\\data\\m");
}

// A key that begins otherwise than the folder does, as that of a device may.
TEST(CacheKeys, Behind_one_that_leads_elsewhere_are_those_of_the_folder_again) {
  SimulatedWindows machine;
  duplicate::CacheKeys keys;
  const Text folder = u"C:\\X\\..\\Data\\";
  EXPECT_EQ(Utf8(keys.Of(folder, u"A")), "c:\\data\\a");
  machine.ClearFaults();
  machine.FailCall(Call::kFullPathName, 1);
  EXPECT_EQ(Utf8(keys.Of(folder, u"NUL")), "c:\\x\\..\\data\\nul");
  EXPECT_EQ(Utf8(keys.Of(folder, u"B")), "c:\\data\\b");
}

TEST(CacheKeys, Of_folders_whose_texts_begin_in_the_same_place_are_kept_apart) {
  SimulatedWindows machine;
  duplicate::CacheKeys keys;
  const Text path = u"C:\\Data\\Sub\\";
  const TextView outer = TextView(path).substr(0, 8);
  EXPECT_EQ(Utf8(keys.Of(outer, u"A")), "c:\\data\\a");
  EXPECT_EQ(Utf8(keys.Of(path, u"A")), "c:\\data\\sub\\a");
  EXPECT_EQ(Utf8(keys.Of(outer, u"B")), "c:\\data\\b");
}

TEST(CacheKeys, Without_a_name_or_without_the_separator_are_those_of_the_joined_text) {
  SimulatedWindows machine;
  duplicate::CacheKeys keys;
  EXPECT_EQ(Utf8(keys.Of(u"C:\\Data\\", u"")), "c:\\data\\");
  EXPECT_EQ(Utf8(keys.Of(u"C:\\Dat", u"A.TXT")), "c:\\data.txt");
}

TEST(CacheKeys, Of_one_folder_ask_the_system_for_the_folder_alone) {
  SimulatedWindows machine;
  duplicate::CacheKeys keys;
  const Text folder = u"C:\\Data\\";
  EXPECT_EQ(Utf8(keys.Of(folder, u"first")), "c:\\data\\first");
  const std::uint64_t calls = machine.CallCount(Call::kFullPathName);
  for (int i = 0; i < 100; ++i) {
    keys.Of(folder, support::Wide("File" + std::to_string(i)));
  }
  EXPECT_EQ(machine.CallCount(Call::kFullPathName), calls);
}

TEST(CacheKeys, Where_the_folder_cannot_be_resolved_are_those_of_the_paths_all_the_same) {
  SimulatedWindows machine;
  for (std::uint64_t nth = 1; nth <= 4; ++nth) {
    machine.ClearFaults();
    duplicate::CacheKeys keys;
    machine.FailCall(Call::kFullPathName, nth);
    const Text folder = u"C:\\Data\\";
    EXPECT_EQ(Utf8(keys.Of(folder, u"A")), "c:\\data\\a") << nth;
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
