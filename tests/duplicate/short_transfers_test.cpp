// Hashes, samples and the cache when reads and writes move less than they were asked to.

#include "duplicate/short_transfers.h"

#include <optional>

#include "duplicate/cache_bytes.h"
#include "duplicate/file_hash.h"
#include "duplicate/sample.h"
#include "duplicate/textbook_xxh32.h"

namespace quastel::duplicate_tests {
namespace {

class ShortTransfersOfFiles : public HashingTest {};
class ShortTransfersOfTheCache : public CacheTest {};

TEST_F(ShortTransfersOfFiles, A_hash_covers_the_whole_file_however_little_a_read_delivers) {
  machine_.AddSizedFile(u"C:\\file", 5000, 4);
  for (const std::uint32_t most : {1u, 7u, 15u, 16u, 17u, 63u, 64u, 1000u, 4999u}) {
    const ShortReads reads(most);
    EXPECT_EQ(HashAnswer(u"C:\\file"), Written(TextbookText(Pattern(5000, 4)), kHashCapacity))
        << most;
  }
}

TEST_F(ShortTransfersOfFiles, A_block_that_is_not_delivered_by_one_read_has_no_hash) {
  machine_.AddSizedFile(u"C:\\file", 5000, 4);
  const ShortReads reads(4095);
  EXPECT_EQ(duplicate::HashFileBlock(u"C:\\file", 5000, duplicate::BlockPlace::kStart),
            std::nullopt);
  EXPECT_EQ(duplicate::HashFileBlock(u"C:\\file", 5000, duplicate::BlockPlace::kEnd), std::nullopt);
  EXPECT_EQ(duplicate::HashFileBlock(u"C:\\file", 4095, duplicate::BlockPlace::kStart),
            TextbookText(Pattern(4095, 4)));
}

TEST_F(ShortTransfersOfFiles, A_sample_takes_what_its_one_read_of_each_region_delivers) {
  machine_.AddFile(u"C:\\file", std::string(1000, '\x11'));
  const ShortReads reads(20);
  const std::string slot = std::string(40, '1') + std::string(60, '0');
  std::string text;
  EXPECT_EQ(duplicate::SampleFile(u"C:\\file", 1000, text), QS_OK);
  EXPECT_EQ(text, slot + slot + slot);
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 3u);
  EXPECT_EQ(duplicate::SampleFile(u"C:\\file", 100, text), QS_OK);
  EXPECT_EQ(text, std::string(40, '1') + std::string(260, '0'));
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 4u);
}

TEST_F(ShortTransfersOfTheCache, A_file_loads_wholly_or_not_at_all_however_little_a_read_delivers) {
  const CacheMap cache = NumberedEntries(100, 300);
  Put(FileOf(cache));
  for (const std::uint32_t most : {1u, 3u, 11u, 100u, 4096u}) {
    const ShortReads reads(most);
    const CacheMap loaded = Load();
    EXPECT_TRUE(loaded.empty() || Same(loaded, cache)) << most;
  }
}

TEST_F(ShortTransfersOfTheCache, A_write_that_falls_short_never_replaces_the_old_file_by_a_part) {
  const CacheMap cache = NumberedEntries(100, 300);
  for (const std::uint32_t most : {0u, 1u, 100u, 4096u}) {
    Put("old");
    const ShortWrites writes(most);
    Save(cache);
    const std::string now = machine_.ContentOf(location_).value();
    EXPECT_TRUE(now == "old" || now == FileOf(cache)) << most;
    EXPECT_FALSE(machine_.Exists(temporary_)) << most;
    EXPECT_EQ(machine_.open_handles(), 0u);
  }
}

}  // namespace
}  // namespace quastel::duplicate_tests
