// What a cache file loads as.

#include <limits>
#include <thread>

#include "duplicate/cache_bytes.h"
#include "duplicate/golden_cache.h"
#include "duplicate/open_record.h"
#include "platform/file.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::LoadDuplicateCache;
using StringLines = std::vector<std::string>;

class CacheReader : public CacheTest {
 protected:
  // One entry, confirmed at this time.
  static Bytes ConfirmedAt(std::uint64_t time) {
    CacheEntry entry = EntryOf("0a1b2c3d");
    entry.confirmed_time = time;
    return Head(1).Entry(u"c:\\a", entry);
  }
  static Bytes OneEntry() { return Head(1).Entry(u"c:\\a", EntryOf("0a1b2c3d", "78563412")); }
};

TEST_F(CacheReader, Reads_the_golden_file) {
  Put(GoldenCache());
  const std::string small = "74656e20627974657321" + std::string(280, '0');
  const StringLines expected = {
      "\\\\server\\share\\b.txt size 7 written 8 confirmed 133499999999999991 sample "
      "'0a1b2c3d|0a1b2c3d' hash ''",
      "c:\\data\\a.txt size 78187493530 written 638000000000000000 confirmed 133499999999999999 "
      "sample '0a1b2c3d' hash ''",
      "c:\\data\\film.mkv size 4096 written 18364758544493064720 confirmed 133497408000000000 "
      "sample '055dcc02|78563412' hash 'ff53d132'",
      "c:\\data\\small.txt size 10 written 638000000000000001 confirmed 133500000000000000 sample "
      "'" +
          small + "' hash ''",
      "c:\\data\\\u00e9t\u00e9.bin size 18446744073709551615 written 0 confirmed "
      "133499987654321099 sample 'aabbccdd|00112233' hash '00000000'",
      "c:\\data\\\U00010401 size 1 written 1 confirmed 133499999999999995 sample 'cc' hash ''",
      "c:\\data\\\uff5e size 2 written 2 confirmed 133499999999999994 sample 'dd' hash "
      "'12345678'",
  };
  EXPECT_EQ(Lines(Load()), expected);
  EXPECT_EQ(Lines(ModelRead(GoldenCache(), kNow)), expected) << "the test's own reader";
}

TEST_F(CacheReader, Without_a_location_asks_the_system_nothing) {
  Record();
  EXPECT_TRUE(LoadDuplicateCache(Text(), nullptr).empty());
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(CacheReader, Cancelled_before_asks_the_system_nothing) {
  Put(OneEntry());
  Record();
  std::uint32_t cancel = 1;
  EXPECT_TRUE(Load(&cancel).empty());
  EXPECT_EQ(cancel, 1u);
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(CacheReader, A_flag_that_is_not_set_changes_nothing) {
  Put(OneEntry());
  std::uint32_t cancel = 0;
  EXPECT_EQ(Load(&cancel).size(), 1u);
}

TEST_F(CacheReader, Takes_the_time_once_and_opens_once) {
  Put(FileOf(NumberedEntries(20)));
  Record();
  EXPECT_EQ(Load().size(), 20u);
  EXPECT_EQ(machine_.CallCount(Call::kSystemFileTime), 1u);
  EXPECT_EQ(machine_.CallCount(Call::kOpenFile), 1u);
  EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, location_), 1u);
}

TEST_F(CacheReader, The_time_of_the_start_counts_for_every_entry) {
  Put(ConfirmedAt(kNow - 72 * kHour));
  BeforeCall(machine_, Call::kOpenFile, 1, [this] { machine_.AdvanceClock(1000); });
  EXPECT_EQ(Load().size(), 1u);
}

TEST_F(CacheReader, Changes_nothing_on_the_disk) {
  Put(OneEntry());
  const std::string disk = machine_.Describe();
  EXPECT_EQ(Load().size(), 1u);
  EXPECT_EQ(machine_.Describe(), disk);
}

TEST_F(CacheReader, Opens_for_reading_and_lets_others_read_and_write) {
  Put(OneEntry());
  OpenRecord opens;
  EXPECT_EQ(Load().size(), 1u);
  ASSERT_EQ(opens.calls().size(), 1u);
  const OpenCall& open = opens.calls()[0];
  EXPECT_EQ(open.access, platform::kAccessRead);
  EXPECT_EQ(open.share & (platform::kShareRead | platform::kShareWrite),
            platform::kShareRead | platform::kShareWrite);
  EXPECT_EQ(open.disposition, platform::Disposition::kOpenExisting);
}

TEST_F(CacheReader, A_file_that_cannot_be_opened_is_empty) {
  EXPECT_TRUE(Load().empty()) << "no folder";
  machine_.AddFolder(kFolder);
  EXPECT_TRUE(Load().empty()) << "no file";
  machine_.AddFolder(location_);
  EXPECT_TRUE(Load().empty()) << "a folder";
  machine_.Remove(location_);
  Put(OneEntry());
  EXPECT_EQ(Load().size(), 1u);
  machine_.Lock(location_);
  EXPECT_TRUE(Load().empty()) << "locked";
  machine_.Unlock(location_);
  machine_.Deny(location_, {.opening = true});
  EXPECT_TRUE(Load().empty()) << "denied";
}

TEST_F(CacheReader, Is_read_while_another_process_reads_it) {
  Put(OneEntry());
  machine_.Lock(location_, platform::kShareRead | platform::kShareWrite);
  EXPECT_EQ(Load().size(), 1u);
  machine_.Unlock(location_);
}

TEST_F(CacheReader, A_count_of_0_is_an_empty_cache) {
  ExpectLoads(Head(0), 0);
  ExpectLoads(Head(0).Entry(u"c:\\a", EntryOf("0a1b2c3d")), 0);
}

TEST_F(CacheReader, A_count_of_200_001_is_an_empty_cache) {
  ExpectLoads(Head(200'001).Entry(u"c:\\a", EntryOf("0a1b2c3d")), 0);
  ExpectLoads(Head(0xFFFFFFFF).Entry(u"c:\\a", EntryOf("0a1b2c3d")), 0);
  ExpectLoads(Head(200'000).Entry(u"c:\\a", EntryOf("0a1b2c3d")), 0);
}

TEST_F(CacheReader, Another_magic_is_an_empty_cache) {
  for (std::size_t i = 0; i < 8; ++i) {
    Bytes bytes = OneEntry();
    bytes.text[i] = static_cast<char>(bytes.text[i] ^ 0x20);
    ExpectLoads(bytes, 0);
  }
  ExpectLoads(Bytes().Raw("FWDCACH2").Raw(OneEntry().text.substr(8)), 0);
}

TEST_F(CacheReader, A_file_that_ends_within_its_head_is_an_empty_cache) {
  for (std::size_t length = 0; length < 12; ++length) {
    ExpectLoads(Bytes().Raw(OneEntry().text.substr(0, length)), 0);
  }
}

TEST_F(CacheReader, Fewer_entries_than_the_count_says_are_an_empty_cache) {
  ExpectLoads(Head(2).Entry(u"c:\\a", EntryOf("0a1b2c3d")), 0);
  ExpectLoads(Head(1), 0);
}

TEST_F(CacheReader, What_follows_the_last_entry_is_ignored) {
  ExpectLoads(OneEntry().Raw("anything").U32(0xFFFFFFFF), 1);
  ExpectLoads(OneEntry().Entry(u"c:\\b", EntryOf("0a1b2c3d")), 1);
  ExpectLoads(OneEntry().Raw(std::string(100'000, '\xff')), 1);
}

TEST_F(CacheReader, What_follows_the_last_entry_is_not_read) {
  Put(OneEntry().Raw(std::string(64 * kMebibyte, 'x')));
  std::uint64_t asked = 0;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kReadFrom) {
      asked += record.number;
    }
  });
  EXPECT_EQ(Load().size(), 1u);
  EXPECT_LE(asked, 2 * kMebibyte);
}

TEST_F(CacheReader, A_hash_of_9_characters_makes_the_whole_file_an_empty_cache) {
  for (std::size_t length = 0; length <= 8; ++length) {
    ExpectLoads(Head(2)
                    .Entry(u"c:\\a", EntryOf("0a1b2c3d", std::string(length, 'h')))
                    .Entry(u"c:\\b", EntryOf("0a1b2c3d")),
                2);
  }
  ExpectLoads(Head(2)
                  .Entry(u"c:\\a", EntryOf("0a1b2c3d"))
                  .Entry(u"c:\\b", EntryOf("0a1b2c3d", "123456789")),
              0);
  ExpectLoads(Head(2)
                  .Entry(u"c:\\a", EntryOf("0a1b2c3d", "123456789"))
                  .Entry(u"c:\\b", EntryOf("0a1b2c3d")),
              0);
}

TEST_F(CacheReader, A_sample_of_301_characters_makes_the_whole_file_an_empty_cache) {
  for (const std::size_t length : {1u, 8u, 17u, 299u, 300u}) {
    ExpectLoads(Head(2)
                    .Entry(u"c:\\a", EntryOf(std::string(length, 's')))
                    .Entry(u"c:\\b", EntryOf("0a1b2c3d")),
                2);
  }
  ExpectLoads(
      Head(2).Entry(u"c:\\a", EntryOf("0a1b2c3d")).Entry(u"c:\\b", EntryOf(std::string(301, 's'))),
      0);
}

TEST_F(CacheReader, A_path_of_32768_units_makes_the_whole_file_an_empty_cache) {
  ExpectLoads(Head(2)
                  .Entry(support::Repeated(32'767, u'p'), EntryOf("0a1b2c3d"))
                  .Entry(u"", EntryOf("0a1b2c3d")),
              2);
  ExpectLoads(Head(2)
                  .Entry(u"c:\\a", EntryOf("0a1b2c3d"))
                  .Entry(support::Repeated(32'768, u'p'), EntryOf("0a1b2c3d")),
              0);
}

TEST_F(CacheReader, A_length_over_its_limit_counts_in_an_entry_that_would_be_dropped_too) {
  CacheEntry old = EntryOf("0a1b2c3d", "123456789");
  old.confirmed_time = 1;
  ExpectLoads(Head(2).Entry(u"c:\\a", EntryOf("0a1b2c3d")).Entry(u"c:\\b", old), 0);
}

TEST_F(CacheReader, An_entry_that_was_confirmed_exactly_72_hours_ago_is_kept) {
  ExpectLoads(ConfirmedAt(kNow - 2'592'000'000'000), 1);
}

TEST_F(CacheReader, An_entry_that_is_a_second_or_a_tick_older_is_dropped) {
  ExpectLoads(ConfirmedAt(kNow - 2'592'000'000'001), 0);
  ExpectLoads(ConfirmedAt(kNow - 2'592'010'000'000), 0);
  ExpectLoads(ConfirmedAt(0), 0);
}

TEST_F(CacheReader, An_entry_from_the_future_is_dropped) {
  ExpectLoads(ConfirmedAt(kNow - 1), 1);
  ExpectLoads(ConfirmedAt(kNow), 1);
  ExpectLoads(ConfirmedAt(kNow + 1), 0);
  ExpectLoads(ConfirmedAt(kNow + 72 * kHour), 0);
  ExpectLoads(ConfirmedAt(std::numeric_limits<std::uint64_t>::max()), 0);
}

TEST_F(CacheReader, A_clock_near_its_beginning_does_not_wrap) {
  machine_.SetSystemFileTime(5);
  Put(ConfirmedAt(0));
  EXPECT_EQ(Load().size(), 1u);
  Put(ConfirmedAt(6));
  EXPECT_EQ(Load().size(), 0u);
  machine_.SetSystemFileTime(2'592'000'000'000);
  Put(ConfirmedAt(0));
  EXPECT_EQ(Load().size(), 1u);
}

TEST_F(CacheReader, An_entry_with_an_empty_sample_is_dropped_even_with_a_hash) {
  ExpectLoads(Head(3)
                  .Entry(u"c:\\a", EntryOf("", "78563412"))
                  .Entry(u"c:\\b", EntryOf("0a1b2c3d"))
                  .Entry(u"c:\\c", EntryOf("")),
              1);
}

TEST_F(CacheReader, Dropped_entries_take_none_of_the_others_along) {
  CacheEntry old = EntryOf("0a1b2c3d");
  old.confirmed_time = kNow - 73 * kHour;
  CacheEntry future = EntryOf("0a1b2c3d");
  future.confirmed_time = kNow + 1;
  ExpectLoads(Head(5)
                  .Entry(u"c:\\a", old)
                  .Entry(u"c:\\b", EntryOf("0a1b2c3d"))
                  .Entry(u"c:\\c", future)
                  .Entry(u"c:\\d", EntryOf("", "78563412"))
                  .Entry(u"c:\\e", EntryOf("0a1b2c3d|78563412")),
              2);
}

TEST_F(CacheReader, Of_two_entries_with_one_key_the_last_wins) {
  CacheEntry second = EntryOf("bbbbbbbb", "78563412");
  second.size = 99;
  ExpectLoads(Head(3)
                  .Entry(u"c:\\a", EntryOf("aaaaaaaa"))
                  .Entry(u"c:\\b", EntryOf("0a1b2c3d"))
                  .Entry(u"c:\\a", second),
              2);
  EXPECT_EQ(Load().at(u"c:\\a").sample, "bbbbbbbb");
  EXPECT_EQ(Load().at(u"c:\\a").size, 99u);
}

TEST_F(CacheReader, Entries_in_any_order_are_read) {
  ExpectLoads(Head(3)
                  .Entry(u"c:\\z", EntryOf("0a1b2c3d"))
                  .Entry(u"c:\\a", EntryOf("0a1b2c3d"))
                  .Entry(u"c:\\m", EntryOf("0a1b2c3d")),
              3);
}

TEST_F(CacheReader, Keys_and_texts_are_taken_by_the_byte) {
  const Text odd = {u'C', u':', u'/', 0, 0xD801, 0xFFFF, u'x'};
  ExpectLoads(Head(1).Entry(odd, EntryOf(std::string("\0\xff|", 3), std::string("\0\n", 2))), 1);
  EXPECT_TRUE(Load().contains(odd));
}

TEST_F(CacheReader, The_extremes_of_every_number_are_read) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  CacheEntry most = EntryOf("0a1b2c3d");
  most.size = kMost;
  most.last_write = kMost;
  CacheEntry least = EntryOf("0a1b2c3d");
  least.size = 0;
  least.last_write = 0;
  ExpectLoads(Head(2).Entry(u"c:\\a", most).Entry(u"c:\\b", least), 2);
}

TEST_F(CacheReader, A_cancel_while_reading_discards_everything) {
  Put(FileOf(NumberedEntries(3)));
  std::uint32_t cancel = 0;
  BeforeCall(machine_, Call::kReadFrom, 1, [&] { cancel = 1; });
  EXPECT_TRUE(Load(&cancel).empty());
  cancel = 0;
  BeforeCall(machine_, Call::kOpenFile, 1, [&] { cancel = 1; });
  EXPECT_TRUE(Load(&cancel).empty());
}

TEST_F(CacheReader, A_cancel_in_the_middle_of_a_large_file_stops_reading) {
  Put(FileOf(NumberedEntries(20'000, 300)));
  std::uint64_t reads = 0;
  machine_.SetHook([&](const CallRecord& record) { reads += record.call == Call::kReadFrom; });
  EXPECT_EQ(Load().size(), 20'000u);
  const std::uint64_t all = reads;
  ASSERT_GE(all, 2u);
  for (const std::uint64_t nth : {std::uint64_t{1}, all / 2, all - 1}) {
    std::uint32_t cancel = 0;
    std::uint64_t seen = 0;
    machine_.SetHook([&](const CallRecord& record) {
      if (record.call == Call::kReadFrom && ++seen == nth) {
        cancel = 1;
      }
    });
    EXPECT_TRUE(Load(&cancel).empty()) << nth;
    EXPECT_LE(seen, nth + 1) << "the flag is looked at before each entry";
  }
}

TEST_F(CacheReader, A_cancel_from_another_thread_is_no_race) {
  Put(FileOf(NumberedEntries(5000)));
  for (int round = 0; round < 10; ++round) {
    std::uint32_t cancel = 0;
    std::thread other([&] { std::atomic_ref<std::uint32_t>(cancel).store(1); });
    const std::size_t size = Load(&cancel).size();
    other.join();
    EXPECT_TRUE(size == 0 || size == 5000) << size;
  }
}

TEST_F(CacheReader, A_long_location_is_opened_in_its_extended_form) {
  const Text location = support::NestedTo(400, u"C:\\deep");
  machine_.AddFile(location, OneEntry().text);
  Record();
  EXPECT_EQ(LoadDuplicateCache(location, nullptr).size(), 1u);
  EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, u"\\\\?\\" + location), 1u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
