// How a cache is written.

#include <algorithm>
#include <random>

#include "duplicate/cache_bytes.h"
#include "duplicate/golden_cache.h"
#include "duplicate/open_record.h"
#include "platform/file_system.h"

namespace quastel::duplicate_tests {
namespace {

using StringLines = std::vector<std::string>;

class CacheWriter : public CacheTest {
 protected:
  // The calls without the writes between them, however many these are.
  StringLines CallsWithoutWrites() {
    StringLines calls = CallsIn(machine_);
    std::erase(calls, "WriteTo");
    return calls;
  }
  std::uint64_t Count(Call call) { return machine_.CallCount(call); }

  const CacheMap cache_ = NumberedEntries(3);
};

TEST_F(CacheWriter, Rewrites_the_golden_file_byte_for_byte) {
  Put(GoldenCache());
  const CacheMap loaded = Load();
  EXPECT_EQ(loaded.size(), 7u);
  machine_.Remove(location_);
  Save(loaded);
  ExpectFile(GoldenCache());
}

TEST_F(CacheWriter, Makes_the_folder_writes_beside_flushes_closes_and_moves_over) {
  Record();
  Save(cache_);
  const StringLines expected = {
      "CreateFolderTree " + Utf8(kFolder),
      "OpenFile " + Utf8(temporary_),
      "FlushFile",
      "CloseFile",
      "RenameFile " + Utf8(temporary_) + " 9",
  };
  EXPECT_EQ(CallsWithoutWrites(), expected);
  EXPECT_GE(Count(Call::kWriteTo), 1u);
  ExpectFile(FileOf(cache_));
}

TEST_F(CacheWriter, Replaces_the_old_file) {
  Put("old");
  Save(cache_);
  ExpectFile(FileOf(cache_));
}

TEST_F(CacheWriter, The_old_file_is_whole_until_it_is_replaced) {
  const std::string old = FileOf(NumberedEntries(50));
  Put(old);
  int looked = 0;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call != Call::kFullPathName) {
      EXPECT_TRUE(machine_.ContentOf(location_) == old) << simulated::NameOf(record.call);
      ++looked;
    }
  });
  Save(cache_);
  EXPECT_GE(looked, 6);
  machine_.SetHook(nullptr);
  ExpectFile(FileOf(cache_));
}

TEST_F(CacheWriter, Everything_is_written_before_the_file_is_closed_and_moved) {
  BeforeCall(machine_, Call::kRenameFile, 1, [this] {
    EXPECT_TRUE(machine_.ContentOf(temporary_) == FileOf(cache_));
    EXPECT_EQ(machine_.open_handles(), 0u);
  });
  Save(cache_);
  EXPECT_EQ(Count(Call::kRenameFile), 1u);
}

TEST_F(CacheWriter, Opens_the_temporary_file_for_writing_from_the_start_and_lets_others_look) {
  OpenRecord opens;
  Save(cache_);
  ASSERT_EQ(opens.calls().size(), 1u);
  const OpenCall& open = opens.calls()[0];
  EXPECT_EQ(open.path, Utf8(temporary_));
  EXPECT_EQ(open.access, platform::kAccessWrite);
  EXPECT_EQ(open.share & (platform::kShareRead | platform::kShareWrite),
            platform::kShareRead | platform::kShareWrite);
  EXPECT_EQ(open.disposition, platform::Disposition::kCreateAlways);
}

TEST_F(CacheWriter, A_leftover_temporary_file_is_written_over) {
  Put("old");
  machine_.AddFile(temporary_, std::string(100'000, 'x'));
  Save(cache_);
  ExpectFile(FileOf(cache_));
}

TEST_F(CacheWriter, An_empty_cache_is_a_file_with_a_count_of_0) {
  Put("old");
  Save({});
  ExpectFile(Head(0).text);
  EXPECT_TRUE(Load().empty());
}

TEST_F(CacheWriter, What_is_written_is_what_the_model_writes_and_reads) {
  std::mt19937 random(3);
  for (int round = 0; round < 50; ++round) {
    CacheMap cache;
    for (auto n = random() % 60; n > 0; --n) {
      Text key(1 + random() % 300, u' ');
      std::generate(key.begin(), key.end(), [&] { return static_cast<Char>(random()); });
      CacheEntry entry = EntryOf(std::string(1 + random() % 300, static_cast<char>(random())),
                                 std::string(random() % 2 * 8, static_cast<char>(random())));
      entry.size = std::uint64_t{random()} << 32 | random();
      entry.last_write = std::uint64_t{random()} << 32 | random();
      cache.emplace(std::move(key), std::move(entry));
    }
    Save(cache);
    ASSERT_TRUE(machine_.ContentOf(location_) == FileOf(cache)) << round;
    ASSERT_TRUE(Same(Load(), cache)) << round;
  }
}

TEST_F(CacheWriter, Entries_are_in_the_order_of_their_code_units) {
  const CacheMap cache = {
      {u"\uff5e", EntryOf("4")},
      {u"\U00010401", EntryOf("3")},  // begins with 0xD801
      {u"a", EntryOf("1")},
      {u"a\\", EntryOf("2")},
  };
  Save(cache);
  ExpectFile(Head(4)
                 .Entry(u"a", EntryOf("1"))
                 .Entry(u"a\\", EntryOf("2"))
                 .Entry(u"\U00010401", EntryOf("3"))
                 .Entry(u"\uff5e", EntryOf("4"))
                 .text);
}

// What no path and no hash is long enough for: the file is not one to be read, but nothing is
// written beside it or past the memory that was taken for it.
TEST_F(CacheWriter, Entries_longer_than_any_that_is_read_are_written_whole) {
  for (const std::size_t length :
       std::initializer_list<std::size_t>{32'767, 32'768, 70'000, 500'000}) {
    CacheMap cache = NumberedEntries(1'500);
    cache[Text(length, Char{'a'})] = EntryOf(std::string(60'000, 's'), std::string(60'000, 'h'));
    cache[Text(length, Char{'d'})] = EntryOf(std::string(300, 's'), "78563412");
    Save(cache);
    ExpectFile(FileOf(cache));
    EXPECT_TRUE(Load().empty());
  }
}

TEST_F(CacheWriter, Entries_are_written_as_they_are_expired_or_not) {
  CacheMap cache;
  cache[u"c:\\old"] = EntryOf("s");
  cache[u"c:\\old"].confirmed_time = 1;
  cache[u"c:\\future"] = EntryOf("s");
  cache[u"c:\\future"].confirmed_time = kNow * 2;
  cache[u"c:\\empty"] = EntryOf("", "78563412");
  Save(cache);
  ExpectFile(FileOf(cache));
  EXPECT_TRUE(Load().empty());
}

TEST_F(CacheWriter, Without_a_location_asks_the_system_nothing) {
  Record();
  SaveCache(Text(), cache_, nullptr);
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
}

TEST_F(CacheWriter, Without_a_separator_in_the_location_nothing_is_made) {
  Record();
  SaveCache(u"cache.bin", cache_, nullptr);
  SaveCache(u"C:cache.bin", cache_, nullptr);
  EXPECT_EQ(Count(Call::kCreateFolderTree), 0u);
  EXPECT_EQ(Count(Call::kOpenFile), 0u);
}

TEST_F(CacheWriter, The_folder_is_the_location_up_to_its_last_separator_of_either_kind) {
  for (const auto& [location, folder] : std::vector<std::pair<const Char*, const char*>>{
           {u"C:\\x\\y/c.bin", "C:\\x\\y"},
           {u"C:/x\\c.bin", "C:/x"},
           {u"\\\\server\\share\\x\\c.bin", "\\\\server\\share\\x"}}) {
    machine_.AddShare(u"\\\\server\\share");
    Record();
    SaveCache(location, cache_, nullptr);
    ASSERT_FALSE(machine_.record().empty());
    EXPECT_EQ(CallsIn(machine_)[0], std::string("CreateFolderTree ") + folder);
    EXPECT_TRUE(machine_.ContentOf(location) == FileOf(cache_)) << folder;
  }
}

TEST_F(CacheWriter, Cancelled_before_asks_the_system_nothing) {
  Put("old");
  Record();
  std::uint32_t cancel = 1;
  Save(cache_, &cancel);
  EXPECT_TRUE(machine_.record().empty()) << ::testing::PrintToString(CallsIn(machine_));
  ExpectFile("old");
}

TEST_F(CacheWriter, A_cancel_before_the_first_entry_leaves_the_old_file_and_no_temporary_one) {
  Put("old");
  for (const Call call : {Call::kCreateFolderTree, Call::kOpenFile}) {
    std::uint32_t cancel = 0;
    BeforeCall(machine_, call, 1, [&] { cancel = 1; });
    Save(cache_, &cancel);
    ExpectFile("old");
    EXPECT_EQ(Count(Call::kRenameFile), 0u);
    EXPECT_EQ(machine_.open_handles(), 0u);
  }
}

TEST_F(CacheWriter, A_cancel_between_the_entries_stops_leaves_the_old_file_and_no_temporary_one) {
  Put("old");
  const CacheMap many = NumberedEntries(20'000, 300);
  for (const std::uint64_t nth : {1u, 2u, 3u}) {
    machine_.SetRecording(false);
    std::uint32_t cancel = 0;
    std::uint64_t writes = 0;
    machine_.SetHook([&](const CallRecord& record) {
      if (record.call == Call::kWriteTo && ++writes == nth) {
        cancel = 1;
      }
    });
    Save(many, &cancel);
    ExpectFile("old");
    EXPECT_EQ(Count(Call::kRenameFile), 0u);
    EXPECT_LE(writes, nth + 1) << "the flag is looked at before each entry";
    EXPECT_EQ(machine_.open_handles(), 0u);
  }
}

TEST_F(CacheWriter, A_cancelled_temporary_file_is_closed_before_it_is_removed) {
  Put("old");
  std::uint32_t cancel = 0;
  BeforeCall(machine_, Call::kOpenFile, 1, [&] { cancel = 1; });
  Record();
  Save(cache_, &cancel);
  const StringLines expected = {
      "CreateFolderTree " + Utf8(kFolder),
      "OpenFile " + Utf8(temporary_),
      "CloseFile",
      "RemoveFile " + Utf8(temporary_),
  };
  EXPECT_EQ(CallsWithoutWrites(), expected);
}

TEST_F(CacheWriter, A_cancel_after_the_last_entry_gives_the_old_file_or_the_new_one) {
  for (const Call call : {Call::kFlushFile, Call::kCloseFile, Call::kRenameFile}) {
    Put("old");
    std::uint32_t cancel = 0;
    BeforeCall(machine_, call, 1, [&] { cancel = 1; });
    Save(cache_, &cancel);
    EXPECT_EQ(cancel, 1u);
    const std::string now = machine_.ContentOf(location_).value();
    EXPECT_TRUE(now == "old" || now == FileOf(cache_));
    EXPECT_FALSE(machine_.Exists(temporary_));
  }
}

TEST_F(CacheWriter, A_long_location_is_written_in_its_extended_form) {
  // The folder is within the shell's limit of 248, the file is not.
  const Text folder = support::NestedTo(240, u"C:\\deep");
  const Text location = folder + u"\\duplicate-hashes-v1.bin";
  Record();
  SaveCache(location, cache_, nullptr);
  EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, u"\\\\?\\" + location + u".tmp"), 1u);
  EXPECT_TRUE(machine_.ContentOf(location) == FileOf(cache_));
  EXPECT_FALSE(machine_.Exists(location + u".tmp"));
  EXPECT_TRUE(Same(LoadCache(location, nullptr), cache_));
}

TEST_F(CacheWriter, A_temporary_name_alone_may_be_a_long_path) {
  const Text location = support::PaddedTo(246, u"C:\\");
  SaveCache(location, cache_, nullptr);
  EXPECT_TRUE(machine_.ContentOf(location) == FileOf(cache_));
  EXPECT_FALSE(machine_.Exists(location + u".tmp"));
}

TEST_F(CacheWriter, A_folder_beyond_the_shell_s_limit_ends_writing_silently) {
  const Text location = support::NestedTo(300, u"C:\\deep") + u"\\c.bin";
  SaveCache(location, cache_, nullptr);
  EXPECT_EQ(Count(Call::kOpenFile), 0u);
  EXPECT_FALSE(machine_.Exists(location));
}

TEST_F(CacheWriter, A_profile_on_a_share_has_its_cache_there) {
  machine_.AddShare(u"\\\\server\\share");
  const Text location = duplicate::CacheLocationOf(u"\\\\server\\share\\u");
  SaveCache(location, cache_, nullptr);
  EXPECT_TRUE(machine_.ContentOf(location) == FileOf(cache_));
}

}  // namespace
}  // namespace quastel::duplicate_tests
