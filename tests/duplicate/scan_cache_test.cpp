// What a duplicate scan takes from the hash cache, and when it reads and writes the file.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "platform/file.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

using OpensByPath = std::map<std::string, int>;

constexpr std::uint64_t kLifetimeMs = 72ull * 60 * 60 * 1000;

// Two equal small files, two equal large ones, and one with another middle.
void AddEachKind(SimulatedWindows& machine) {
  machine.AddFile(u"C:\\data\\A small", Bytes(100));
  machine.AddFile(u"C:\\data\\B small", Bytes(100));
  machine.AddFile(u"C:\\data\\large 1", Bytes(9000));
  machine.AddFile(u"C:\\data\\large 2", Bytes(9000));
  machine.AddFile(u"C:\\data\\large 3", ChangedAt(Bytes(9000), 4500));
  machine.AddFile(u"C:\\data\\own size", Bytes(9001));
}

// A scan of C:\data with a record of its own.
Outcome RecordedScan(SimulatedWindows& machine, Request request) {
  machine.ClearRecord();
  machine.SetRecording(true);
  const Outcome scan = Scan(std::move(request));
  machine.SetRecording(false);
  return scan;
}
Outcome RecordedScan(SimulatedWindows& machine) {
  return RecordedScan(machine, DuplicateRequest({u"C:\\data"}));
}

CacheRecord RecordOf(TextView key, std::string_view content) {
  return {.key = Text(key),
          .size = content.size(),
          .sample = SampleOf(content),
          .hash = content.size() > 150 ? HashOf(content) : std::string()};
}

TEST(DuplicateCache, Holds_what_a_scan_learned_of_the_files_that_share_their_size) {
  SimulatedWindows machine;
  AddEachKind(machine);
  const std::string other_head = ChangedAt(Bytes(9000), 0);
  const std::string other_tail = ChangedAt(Bytes(9000), 8999);
  machine.AddFile(u"C:\\data\\other head", other_head);
  machine.AddFile(u"C:\\data\\other tail", other_tail);
  machine.AddFile(u"C:\\data\\C small", Bytes(100, 1));
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 2u);

  CacheRecord head_alone = RecordOf(u"c:\\data\\other head", other_head);
  head_alone.sample = HeadOf(other_head);
  head_alone.hash.clear();
  CacheRecord tail_alone = RecordOf(u"c:\\data\\other tail", other_tail);
  tail_alone.hash.clear();
  EXPECT_EQ(CacheOf(machine), (CacheRecords{
                                  RecordOf(u"c:\\data\\a small", Bytes(100)),
                                  RecordOf(u"c:\\data\\b small", Bytes(100)),
                                  RecordOf(u"c:\\data\\c small", Bytes(100, 1)),
                                  RecordOf(u"c:\\data\\large 1", Bytes(9000)),
                                  RecordOf(u"c:\\data\\large 2", Bytes(9000)),
                                  RecordOf(u"c:\\data\\large 3", ChangedAt(Bytes(9000), 4500)),
                                  head_alone,
                                  tail_alone,
                              }));
}

TEST(DuplicateCache, Of_a_single_file_is_written_without_an_entry) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\alone", Bytes(9000));
  EXPECT_EQ(ScanData().status, QS_OK);
  EXPECT_EQ(machine.ContentOf(kCacheFile), CacheBytes({}));
  EXPECT_FALSE(machine.Exists(kTemporaryFile));
}

TEST(DuplicateCache, Spares_a_second_scan_of_unchanged_files_every_opening) {
  SimulatedWindows machine;
  AddEachKind(machine);
  const Outcome cold = RecordedScan(machine);
  EXPECT_EQ(GroupsOf(cold.rows).size(), 2u);
  EXPECT_EQ(OpenCount(machine), 2 + 3 * 3);
  machine.AdvanceClock(60'000);
  const Outcome warm = RecordedScan(machine);
  EXPECT_EQ(OpensOf(machine), OpensByPath());
  EXPECT_EQ(warm.status, QS_OK);
  EXPECT_EQ(warm.rows, cold.rows);
  EXPECT_EQ(warm.performance.candidates, cold.performance.candidates);
  EXPECT_EQ(warm.performance.sampled_items, cold.performance.sampled_items);
  EXPECT_EQ(warm.performance.hashed_items, cold.performance.hashed_items);
  EXPECT_EQ(warm.performance.unhashed_groups, cold.performance.unhashed_groups);
  EXPECT_EQ(warm.poll.path_published, 0u) << "no stage has named a path";
}

// Behind the extended-length prefix "n." is a file of its own, but resolved it has the path of "n".
TEST(DuplicateCache, Does_not_tell_of_one_file_what_it_knows_of_another) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\m", Bytes(9000));
  machine.AddFile(u"C:\\data\\n", Bytes(9000));
  machine.AddFile(u"\\\\?\\C:\\data\\n.", ChangedAt(Bytes(9000), 4500));
  machine.AddFile(u"\\\\?\\C:\\data\\sub.\\m", ChangedAt(Bytes(9000), 0));
  machine.AddFile(u"C:\\data\\sub\\m", Bytes(9000));
  for (int scan = 0; scan < 3; ++scan) {
    const Outcome outcome = Scan(DuplicateRequest({u"\\\\?\\C:\\data"}));
    ASSERT_EQ(outcome.status, QS_OK);
    ASSERT_EQ(outcome.rows.size(), 3u) << scan;
    for (const Row& row : outcome.rows) {
      EXPECT_TRUE(row.path.ends_with(u"\\m") || row.path.ends_with(u"\\n")) << Utf8(row.path);
      EXPECT_EQ(row.path.find(u"sub.\\"), Text::npos) << Utf8(row.path);
    }
    machine.AdvanceClock(1000);
  }
}

TEST(DuplicateCache, Is_confirmed_anew_by_every_scan) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  CacheRecords expected = CacheOf(machine);
  machine.AdvanceClock(60'000);
  EXPECT_EQ(ScanData().status, QS_OK);
  for (CacheRecord& record : expected) {
    EXPECT_EQ(record.confirmed, kClockAtFirst);
    record.confirmed = kClockAtFirst + 600'000'000;
  }
  EXPECT_EQ(CacheOf(machine), expected);
}

// Entries that are written within microseconds share a time; it is asked for again soon.
TEST(DuplicateCache, Asks_for_the_time_once_for_64_entries) {
  SimulatedWindows machine;
  for (int i = 0; i < 130; ++i) {
    machine.AddFile(u"C:\\data\\" + support::Wide(std::to_string(i)), Bytes(200));
  }
  scan_tests::InsideEveryCall(machine, Call::kSystemFileTime,
                              [&](std::uint64_t) { machine.AdvanceClock(1); });
  EXPECT_EQ(ScanData().status, QS_OK);
  std::map<std::uint64_t, int> entries;  // of each time
  for (const CacheRecord& record : CacheOf(machine)) {
    ++entries[record.confirmed];
  }
  std::vector<int> counts;
  for (const auto& [time, count] : entries) {
    counts.push_back(count);
  }
  EXPECT_EQ(counts, (std::vector<int>{64, 64, 2}));
}

TEST(DuplicateCache, Is_believed_without_a_look_at_the_files) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000, 1));
  machine.AddFile(u"C:\\data\\b", Bytes(9000, 2));
  machine.AddFile(u"C:\\data\\c", Bytes(9000, 3));
  machine.AddFile(u"C:\\data\\d", Bytes(90, 1));
  machine.AddFile(u"C:\\data\\e", Bytes(90, 2));
  AddCache(
      machine,
      {{.key = u"c:\\data\\a", .size = 9000, .sample = "01234567|89abcdef", .hash = "00000001"},
       {.key = u"c:\\data\\b", .size = 9000, .sample = "01234567|89abcdef", .hash = "00000002"},
       {.key = u"c:\\data\\c", .size = 9000, .sample = "01234567|89abcdef", .hash = "00000001"},
       {.key = u"c:\\data\\d", .size = 90, .sample = "d or e"},
       {.key = u"c:\\data\\e", .size = 90, .sample = "d or e"}});
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(OpensOf(machine), OpensByPath());
  EXPECT_EQ(scan.rows,
            (std::vector<Row>{
                DuplicateRow(0, 1, u"C:\\data\\d", u"d", "90 d or e", 90),
                DuplicateRow(1, 1, u"C:\\data\\e", u"d", "90 d or e", 90),
                DuplicateRow(2, 2, u"C:\\data\\a", u"a", "9000 01234567|89abcdef 00000001", 9000),
                DuplicateRow(3, 2, u"C:\\data\\c", u"a", "9000 01234567|89abcdef 00000001", 9000),
            }));
  EXPECT_EQ(scan.performance.sampled_items, 5u);
  EXPECT_EQ(scan.performance.hashed_items, 3u);
}

TEST(DuplicateCache, With_the_longest_texts_gives_keys_as_long) {
  SimulatedWindows machine;
  const std::string sample = std::string(290, 'h') + "|" + std::string(9, 't');
  CacheRecords records;
  for (const char16_t* name : {u"a", u"b"}) {
    machine.AddSizedFile(Text(u"C:\\data\\") + name, INT64_MAX);
    records.push_back({.key = Text(u"c:\\data\\") + name,
                       .size = INT64_MAX,
                       .sample = sample,
                       .hash = "01234567"});
  }
  AddCache(machine, records);
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(OpensOf(machine), OpensByPath());
  ASSERT_EQ(GroupsOf(scan.rows).size(), 1u);
  EXPECT_EQ(Utf8(scan.rows[0].location), "9223372036854775807 " + sample + " 01234567");
}

// Entries for C:\data\a that speak of another file; the sample would make it equal to none.
struct StaleCase : support::NamedCase {
  void (*change)(CacheRecord& record);
};

class StaleEntry : public ::testing::TestWithParam<StaleCase> {};

TEST_P(StaleEntry, Is_not_used_and_replaced) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  CacheRecord stale{
      .key = u"c:\\data\\a", .size = 9000, .sample = "01234567|89abcdef", .hash = "00000001"};
  GetParam().change(stale);
  AddCache(machine, {stale, RecordOf(u"c:\\data\\b", Bytes(9000))});
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\b"}}));
  EXPECT_EQ(OpensOf(machine), (OpensByPath{{"C:\\data\\a", 3}}));
  EXPECT_EQ(CacheOf(machine), (CacheRecords{RecordOf(u"c:\\data\\a", Bytes(9000)),
                                            RecordOf(u"c:\\data\\b", Bytes(9000))}));
}

INSTANTIATE_TEST_SUITE_P(
    All, StaleEntry,
    ::testing::Values(
        StaleCase{{"another_size"}, [](CacheRecord& record) { record.size = 8999; }},
        StaleCase{{"a_size_beyond_32_bits"},
                  [](CacheRecord& record) { record.size += 1ull << 32; }},
        StaleCase{{"written_one_tick_later"}, [](CacheRecord& record) { ++record.last_write; }},
        StaleCase{{"written_one_tick_earlier"}, [](CacheRecord& record) { --record.last_write; }},
        StaleCase{{"confirmed_72_hours_and_a_tick_ago"},
                  [](CacheRecord& record) { record.confirmed -= 2'592'000'000'001; }},
        StaleCase{{"confirmed_in_the_future"}, [](CacheRecord& record) { ++record.confirmed; }},
        StaleCase{{"without_a_sample"}, [](CacheRecord& record) { record.sample.clear(); }}),
    support::CaseName());

TEST(DuplicateCache, Holds_for_exactly_72_hours) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  machine.AdvanceClock(kLifetimeMs);
  RecordedScan(machine);
  EXPECT_EQ(OpenCount(machine), 0);
  machine.AdvanceClock(kLifetimeMs);
  RecordedScan(machine);
  EXPECT_EQ(OpenCount(machine), 0) << "the scan before has confirmed the entries";
  machine.AdvanceClock(kLifetimeMs + 1);
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(OpenCount(machine), 2 + 3 * 3);
  EXPECT_EQ(GroupsOf(scan.rows).size(), 2u);
}

TEST(DuplicateCache, Is_of_no_use_when_the_clock_was_set_back) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  machine.SetSystemFileTime(kClockAtFirst - 1);
  RecordedScan(machine);
  EXPECT_EQ(OpenCount(machine), 2 + 3 * 3);
  EXPECT_EQ(CacheOf(machine).at(0).confirmed, kClockAtFirst - 1);
}

TEST(DuplicateCache, Leaves_the_changed_file_alone_to_be_opened) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  machine.SetContent(u"C:\\data\\large 3", Bytes(9000));
  machine.SetLastWrite(u"C:\\data\\large 3", 133'000'000'000'000'001);
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(OpensOf(machine), (OpensByPath{{"C:\\data\\large 3", 3}}));
  EXPECT_EQ(GroupsOf(scan.rows),
            (Groups{{"C:\\data\\A small", "C:\\data\\B small"},
                    {"C:\\data\\large 1", "C:\\data\\large 2", "C:\\data\\large 3"}}));
}

TEST(DuplicateCache, That_knows_the_head_alone_spares_the_first_look) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000, 1));
  machine.AddFile(u"C:\\data\\b", Bytes(9000, 2));
  EXPECT_EQ(ScanData().rows.size(), 0u);
  EXPECT_EQ(CacheOf(machine).at(0).sample, HeadOf(Bytes(9000, 1)));
  machine.AddFile(u"C:\\data\\c", Bytes(9000, 1));
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\c"}}));
  EXPECT_EQ(OpensOf(machine), (OpensByPath{{"C:\\data\\a", 2}, {"C:\\data\\c", 3}}));
}

TEST(DuplicateCache, That_knows_head_and_tail_spares_all_but_the_full_hash) {
  SimulatedWindows machine;
  const std::string content = Bytes(9000);
  machine.AddFile(u"C:\\data\\a", content);
  machine.AddFile(u"C:\\data\\b", ChangedAt(content, 8999));
  EXPECT_EQ(ScanData().rows.size(), 0u);
  EXPECT_EQ(CacheOf(machine).at(0).sample, SampleOf(content));
  EXPECT_EQ(CacheOf(machine).at(0).hash, "");
  machine.AddFile(u"C:\\data\\c", content);
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\c"}}));
  EXPECT_EQ(OpensOf(machine), (OpensByPath{{"C:\\data\\a", 1}, {"C:\\data\\c", 3}}));
}

// ---- Keys

struct SpellingCase : support::NamedCase {
  Text root;
};

class RootSpelling : public ::testing::TestWithParam<SpellingCase> {};

TEST_P(RootSpelling, Finds_the_entries_of_the_same_folder) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  const CacheRecords before = CacheOf(machine);
  const Outcome scan = RecordedScan(machine, DuplicateRequest({GetParam().root}));
  EXPECT_EQ(GroupsOf(scan.rows).size(), 2u);
  EXPECT_EQ(OpenCount(machine), 0);
  EXPECT_EQ(CacheOf(machine), before);
}

INSTANTIATE_TEST_SUITE_P(All, RootSpelling,
                         ::testing::Values(SpellingCase{{"lower_case"}, u"c:\\data"},
                                           SpellingCase{{"upper_case"}, u"C:\\DATA"},
                                           SpellingCase{{"slashes"}, u"C:/data"},
                                           SpellingCase{{"separator_behind"}, u"C:\\data\\"},
                                           SpellingCase{{"dots"}, u"C:\\other\\..\\data\\."},
                                           SpellingCase{{"relative"}, u"data"}),
                         support::CaseName());

// ---- Profiles

struct ProfileCase : support::NamedCase {
  std::optional<Text> home;
};

class ProfileWithoutCache : public ::testing::TestWithParam<ProfileCase> {};

TEST_P(ProfileWithoutCache, Neither_reads_nor_writes_one) {
  SimulatedWindows machine;
  AddEachKind(machine);
  const std::string before = machine.Describe();
  Request request = DuplicateRequest({u"C:\\data"});
  request.user_home = GetParam().home;
  for (int round = 1; round <= 2; ++round) {
    const Outcome scan = RecordedScan(machine, request);
    EXPECT_EQ(scan.status, QS_OK);
    EXPECT_EQ(GroupsOf(scan.rows).size(), 2u);
    EXPECT_EQ(OpenCount(machine), 2 + 3 * 3) << "in the second scan as well";
    for (const CallRecord& call : machine.record()) {
      EXPECT_FALSE(IsCachePath(call.path)) << Utf8(call.path);
      EXPECT_NE(call.call, Call::kCreateFolderTree);
    }
  }
  EXPECT_EQ(machine.Describe(), before);
}

INSTANTIATE_TEST_SUITE_P(All, ProfileWithoutCache,
                         ::testing::Values(ProfileCase{{"none"}, std::nullopt},
                                           ProfileCase{{"empty"}, u""},
                                           ProfileCase{{"one_letter"}, u"C"},
                                           ProfileCase{{"drive_without_separator"}, u"C:"},
                                           ProfileCase{{"drive_relative"}, u"C:Users"},
                                           ProfileCase{{"one_separator"}, u"\\Users\\u"},
                                           ProfileCase{{"relative"}, u"Users\\u"},
                                           ProfileCase{{"digit_as_drive"}, u"1:\\Users\\u"}),
                         support::CaseName());

struct PlaceCase : support::NamedCase {
  Text home;
  Text folder;  // where it lies
};

class ProfileWithCache : public ::testing::TestWithParam<PlaceCase> {};

TEST_P(ProfileWithCache, Has_it_below_its_folder) {
  SimulatedWindows machine;
  machine.AddShare(u"\\\\server\\share");
  AddEachKind(machine);
  Request request = DuplicateRequest({u"C:\\data"});
  request.user_home = GetParam().home;
  EXPECT_EQ(RecordedScan(machine, request).status, QS_OK);
  EXPECT_TRUE(machine.Exists(GetParam().folder + u"\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache\\"
                                                 u"duplicate-hashes-v1.bin"));
  EXPECT_EQ(GroupsOf(RecordedScan(machine, request).rows).size(), 2u);
  EXPECT_EQ(OpenCount(machine), 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, ProfileWithCache,
    ::testing::Values(PlaceCase{{"drive"}, u"C:\\Users\\u", u"C:\\Users\\u"},
                      PlaceCase{{"separator_behind"}, u"C:\\Users\\u\\", u"C:\\Users\\u"},
                      PlaceCase{{"lower_case_drive"}, u"c:\\Users\\u", u"C:\\Users\\u"},
                      PlaceCase{{"root_of_a_drive"}, u"C:\\", u"C:"},
                      PlaceCase{{"share"}, u"\\\\server\\share\\u", u"\\\\server\\share\\u"}),
    support::CaseName());

// ---- When

TEST(DuplicateCache, Is_read_before_the_walk_and_written_behind_everything_else) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  machine.AddFile(u"C:\\data\\large 4", Bytes(9000));
  const Outcome scan = RecordedScan(machine);
  EXPECT_EQ(GroupsOf(scan.rows).size(), 2u);

  const std::vector<CallRecord> record = machine.record();
  std::vector<std::string> steps;
  for (const CallRecord& call : record) {
    std::string step;
    if (call.call == Call::kFindFirstBasic) {
      step = "walk";
    } else if (OpensCandidate(call)) {
      step = "compare";
    } else if (call.call == Call::kOpenFile && call.path == kCacheFile) {
      step = call.number == platform::kAccessRead ? "read cache" : "write over the cache";
    } else if (call.call == Call::kOpenFile && call.path == kTemporaryFile) {
      step = "write temporary file";
    } else if (call.call == Call::kCreateFolderTree) {
      EXPECT_EQ(Utf8(call.path), Utf8(kCacheFolder));
      step = "make folder";
    } else if (call.call == Call::kRenameFile) {
      EXPECT_EQ(Utf8(call.path), Utf8(kTemporaryFile));
      EXPECT_EQ(call.number, 9u) << "replaces, and writes through";
      step = "replace cache";
    }
    if (!step.empty() && (steps.empty() || steps.back() != step)) {
      steps.push_back(step);
    }
  }
  EXPECT_EQ(steps, (std::vector<std::string>{"read cache", "walk", "compare", "make folder",
                                             "write temporary file", "replace cache"}));
}

TEST(DuplicateCache, That_is_damaged_counts_as_none_and_is_replaced) {
  SimulatedWindows machine;
  AddEachKind(machine);
  EXPECT_EQ(ScanData().status, QS_OK);
  const std::string whole = *machine.ContentOf(kCacheFile);
  std::string wrong_magic = whole;
  wrong_magic[7] = '2';
  for (const std::string& damaged :
       {std::string(), wrong_magic, whole.substr(0, whole.size() - 1), whole.substr(0, 12)}) {
    machine.AddFile(kCacheFile, damaged);
    const Outcome scan = RecordedScan(machine);
    EXPECT_EQ(scan.status, QS_OK);
    EXPECT_EQ(GroupsOf(scan.rows).size(), 2u);
    EXPECT_EQ(OpenCount(machine), 2 + 3 * 3);
    EXPECT_EQ(machine.ContentOf(kCacheFile), whole);
  }
}

TEST(DuplicateCache, That_is_below_the_scanned_root_is_a_file_like_others) {
  SimulatedWindows machine;
  machine.AddFile(Text(kHome) + u"\\a", Bytes(9000));
  machine.AddFile(Text(kHome) + u"\\b", Bytes(9000));
  const Request request = DuplicateRequest({Text(kHome)});
  EXPECT_EQ(Scan(request).performance.candidates, 2u);
  const Outcome second = Scan(request);
  EXPECT_EQ(second.status, QS_OK);
  EXPECT_EQ(second.performance.candidates, 3u);
  EXPECT_EQ(GroupsOf(second.rows).size(), 1u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
