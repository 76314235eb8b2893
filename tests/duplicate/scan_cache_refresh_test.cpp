// What a duplicate scan changes in the hash cache at its end.

#include <string>

#include "duplicate/duplicate_fixture.h"

namespace quastel::duplicate_tests {
namespace {

CacheRecord Unseen(TextView key) {
  return {.key = Text(key), .size = 5, .last_write = 6, .sample = "unseen", .hash = "12345678"};
}

CacheRecord Whole(TextView key, std::string_view content, std::uint64_t confirmed = kClockAtFirst) {
  return {.key = Text(key),
          .size = content.size(),
          .confirmed = confirmed,
          .sample = SampleOf(content),
          .hash = HashOf(content)};
}

TEST(CacheRefresh, Keeps_the_entries_of_files_that_were_not_seen) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  const CacheRecords unseen = {Unseen(u"c:\\a"), Unseen(u"c:\\data\\a.old"), Unseen(u"d:\\z")};
  AddCache(machine, unseen);
  machine.AdvanceClock(1000);
  const std::uint64_t now = kClockAtFirst + 10'000'000;
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 1u);
  EXPECT_EQ(CacheOf(machine),
            (CacheRecords{unseen[0], Whole(u"c:\\data\\a", Bytes(9000), now), unseen[1],
                          Whole(u"c:\\data\\b", Bytes(9000), now), unseen[2]}));
}

TEST(CacheRefresh, Lets_the_entries_of_unseen_files_grow_old) {
  SimulatedWindows machine;
  machine.AddFolder(u"C:\\data");
  CacheRecord old = Unseen(u"c:\\old");
  old.confirmed -= 2'592'000'000'000;
  CacheRecord too_old = Unseen(u"c:\\too old");
  too_old.confirmed = old.confirmed - 1;
  CacheRecord future = Unseen(u"c:\\future");
  ++future.confirmed;
  AddCache(machine, {future, old, too_old});
  EXPECT_EQ(ScanData().status, QS_OK);
  EXPECT_EQ(CacheOf(machine), CacheRecords{old});
}

TEST(CacheRefresh, Leaves_the_entry_of_a_file_that_needed_no_sample_as_it_was) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  const CacheRecord entry = Whole(u"c:\\data\\a", Bytes(9000));
  AddCache(machine, {entry});
  machine.AdvanceClock(1000);
  EXPECT_EQ(ScanData().status, QS_OK);
  EXPECT_EQ(CacheOf(machine), CacheRecords{entry}) << "it has the only file of its size";
}

TEST(CacheRefresh, Leaves_the_outdated_entry_of_a_file_that_could_not_be_sampled) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  machine.Deny(u"C:\\data\\a", {.opening = true});
  CacheRecord entry = Whole(u"c:\\data\\a", Bytes(8000));
  AddCache(machine, {entry});
  EXPECT_EQ(ScanData().rows.size(), 0u);
  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), 2u);
  EXPECT_EQ(cache[0], entry);
  EXPECT_EQ(cache[1].sample, HeadOf(Bytes(9000)));
}

TEST(CacheRefresh, Leaves_the_entry_of_a_file_whose_second_look_failed) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  CacheRecord head_alone = Whole(u"c:\\data\\a", Bytes(9000));
  head_alone.sample = HeadOf(Bytes(9000));
  head_alone.hash.clear();
  AddCache(machine, {head_alone});
  machine.Deny(u"C:\\data\\a", {.opening = true});
  machine.AdvanceClock(1000);
  EXPECT_EQ(ScanData().rows.size(), 0u);
  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), 2u);
  EXPECT_EQ(cache[0], head_alone) << "not even confirmed";
  EXPECT_EQ(cache[1].sample, SampleOf(Bytes(9000)));
  EXPECT_EQ(cache[1].hash, "");

  // Nothing is lost for good.
  machine.Deny(u"C:\\data\\a", {});
  EXPECT_EQ(GroupsOf(ScanData().rows), (Groups{{"C:\\data\\a", "C:\\data\\b"}}));
}

TEST(CacheRefresh, Leaves_the_entry_whose_sample_would_become_too_long) {
  SimulatedWindows machine;
  CacheRecords records;
  for (const char16_t* name : {u"a", u"b"}) {
    machine.AddFile(Text(u"C:\\data\\") + name, Bytes(9000));
    records.push_back({.key = Text(u"c:\\data\\") + name,
                       .size = 9000,
                       .sample = std::string(292, 'h'),
                       .hash = HashOf(Bytes(9000))});
  }
  AddCache(machine, records);
  machine.AdvanceClock(1000);
  // With the tail and its mark it has one character more than an entry may have.
  const Outcome scan = ScanData();
  ASSERT_EQ(scan.rows.size(), 2u);
  EXPECT_EQ(Utf8(scan.rows[0].location).size(), 5 + 301u + 9);
  EXPECT_EQ(CacheOf(machine), records) << "not even confirmed";
}

TEST(CacheRefresh, Notes_the_sample_that_is_just_short_enough) {
  SimulatedWindows machine;
  CacheRecords records;
  for (const char16_t* name : {u"a", u"b"}) {
    machine.AddFile(Text(u"C:\\data\\") + name, Bytes(9000));
    records.push_back(
        {.key = Text(u"c:\\data\\") + name, .size = 9000, .sample = std::string(291, 'h')});
  }
  AddCache(machine, records);
  EXPECT_EQ(ScanData().rows.size(), 2u);
  for (const CacheRecord& record : CacheOf(machine)) {
    EXPECT_EQ(record.sample.size(), 300u);
    EXPECT_EQ(record.hash, HashOf(Bytes(9000)));
  }
}

TEST(CacheRefresh, Notes_the_sample_of_a_file_that_could_not_be_hashed) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  CacheRecord sampled = Whole(u"c:\\data\\a", Bytes(9000));
  sampled.hash.clear();
  AddCache(machine, {sampled});
  machine.Deny(u"C:\\data\\a", {.opening = true});
  machine.AdvanceClock(1000);
  EXPECT_EQ(ScanData().rows.size(), 0u);
  sampled.confirmed += 10'000'000;
  EXPECT_EQ(CacheOf(machine),
            (CacheRecords{sampled, Whole(u"c:\\data\\b", Bytes(9000), sampled.confirmed)}));
}

TEST(CacheRefresh, Keeps_the_sample_of_a_file_that_lost_its_copy_but_not_its_hash) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  machine.AddFile(u"C:\\data\\c", Bytes(9000, 1));
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 1u);
  machine.Remove(u"C:\\data\\b");
  machine.AdvanceClock(1000);
  EXPECT_EQ(ScanData().rows.size(), 0u);
  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), 3u);
  CacheRecord without_hash = Whole(u"c:\\data\\a", Bytes(9000), kClockAtFirst + 10'000'000);
  without_hash.hash.clear();
  EXPECT_EQ(cache[0], without_hash);
  EXPECT_EQ(cache[1], Whole(u"c:\\data\\b", Bytes(9000))) << "its file is gone: not seen";
}

TEST(CacheRefresh, Replaces_what_is_known_of_another_state_of_the_file) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000, 1));
  CacheRecord outdated = Whole(u"c:\\data\\a", Bytes(9000, 1));
  --outdated.last_write;
  AddCache(machine, {outdated});
  EXPECT_EQ(ScanData().rows.size(), 0u);
  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), 2u);
  CacheRecord expected = Whole(u"c:\\data\\a", Bytes(9000));
  expected.sample = HeadOf(Bytes(9000));
  expected.hash.clear();
  EXPECT_EQ(cache[0], expected) << "the old full hash must not stay";
}

TEST(CacheRefresh, Adds_entries_up_to_200000_and_updates_those_it_has) {
  constexpr std::size_t kMost = 200'000;
  SimulatedWindows machine;
  for (const char16_t* path : {u"C:\\data\\new 1", u"C:\\data\\new 2", u"C:\\data\\old"}) {
    machine.AddFile(path, Bytes(9000));
  }
  CacheRecords full;
  for (std::size_t i = 0; i < kMost - 2; ++i) {
    full.push_back(Unseen(u"c:\\a\\" + Wide(std::to_string(1'000'000 + i))));
  }
  full.push_back(Whole(u"c:\\data\\old", Bytes(8000)));
  AddCache(machine, full);
  machine.AdvanceClock(1000);
  const std::uint64_t now = kClockAtFirst + 10'000'000;
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 1u);

  full.back() = Whole(u"c:\\data\\new 1", Bytes(9000), now);
  full.push_back(Whole(u"c:\\data\\old", Bytes(9000), now));
  ASSERT_EQ(full.size(), kMost);
  EXPECT_TRUE(CacheOf(machine) == full);
  const CacheRecords cache = CacheOf(machine);
  ASSERT_EQ(cache.size(), kMost);
  EXPECT_EQ(cache[kMost - 2], full[kMost - 2]);
  EXPECT_EQ(cache[kMost - 1], full[kMost - 1]);
}

}  // namespace
}  // namespace quastel::duplicate_tests
