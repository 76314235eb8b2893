// Caches of the largest size.

#include <chrono>
#include <iostream>

#include "duplicate/cache_bytes.h"

namespace quastel::duplicate_tests {
namespace {

class LargeCache : public CacheTest {};

TEST_F(LargeCache, Of_250_000_entries_exactly_200_000_are_written_the_first_in_key_order) {
  const CacheMap all = NumberedEntries(250'000);
  Save(all);
  ExpectFile(FileOf(all));
  const CacheMap loaded = Load();
  ASSERT_EQ(loaded.size(), 200'000u);
  EXPECT_EQ(Utf8(loaded.begin()->first), "c:\\data\\file0000000");
  EXPECT_EQ(Utf8(loaded.rbegin()->first), "c:\\data\\file0199999");
}

TEST_F(LargeCache, The_limit_is_met_exactly) {
  CacheMap all = NumberedEntries(200'000, 1);
  Save(all);
  EXPECT_TRUE(Same(Load(), all));
  // A key before all others pushes the last one out.
  all.emplace(u"a", EntryOf("first"));
  Save(all);
  const CacheMap loaded = Load();
  EXPECT_EQ(loaded.size(), 200'000u);
  EXPECT_TRUE(loaded.contains(u"a"));
  EXPECT_FALSE(loaded.contains(u"c:\\data\\file0199999"));
  EXPECT_TRUE(loaded.contains(u"c:\\data\\file0199998"));
}

TEST_F(LargeCache, A_file_of_200_000_entries_loads_whole) {
  const CacheMap all = NumberedEntries(200'000);
  const std::string file = FileOf(all);
  Put(file);
  const std::uint64_t reads = machine_.CallCount(Call::kReadFrom);
  const auto begin = std::chrono::steady_clock::now();
  const CacheMap loaded = Load();
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  EXPECT_TRUE(Same(loaded, all));
  std::cout << "200,000 entries, " << file.size() << " bytes: " << elapsed.count() << " ms, "
            << machine_.CallCount(Call::kReadFrom) - reads << " reads\n";
}

TEST_F(LargeCache, A_file_of_200_000_entries_is_cut_off_in_its_last_byte) {
  std::string file = FileOf(NumberedEntries(200'000, 8));
  file.pop_back();
  Put(file);
  EXPECT_TRUE(Load().empty());
}

TEST_F(LargeCache, A_file_of_200_001_entries_that_are_all_there_is_an_empty_cache) {
  Bytes bytes = Head(200'001);
  for (int i = 0; i < 200'001; ++i) {
    bytes.Entry(u"c:\\a", EntryOf("s"));
  }
  Put(bytes);
  EXPECT_TRUE(Load().empty());
  // With one less in the count the last one is what follows the last entry.
  bytes.text.replace(8, 4, Bytes().U32(200'000).text);
  Put(bytes);
  EXPECT_EQ(Load().size(), 1u);
}

TEST_F(LargeCache, The_largest_entries_are_written_and_read) {
  CacheMap cache;
  for (int i = 0; i < 40; ++i) {
    Text key = support::Repeated(32'767, static_cast<Char>(u'a' + i));
    cache.emplace(std::move(key), EntryOf(std::string(300, 's'), "78563412"));
  }
  Save(cache);
  ExpectFile(FileOf(cache));
  EXPECT_TRUE(Same(Load(), cache));
}

}  // namespace
}  // namespace quastel::duplicate_tests
