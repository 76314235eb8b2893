// The entries of the cache in memory: how they are found, added and put in order.

#include "duplicate/hash_cache.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/text.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::HashCache;
using support::Utf8;
using support::Wide;

std::vector<std::string> KeysOf(const HashCache& cache) {
  std::vector<std::string> keys;
  for (const HashCache::Index index : cache.InKeyOrder()) {
    keys.push_back(Utf8(cache[index].key));
  }
  return keys;
}

TEST(HashCache, Without_entries_finds_nothing) {
  HashCache cache;
  EXPECT_TRUE(cache.empty());
  EXPECT_EQ(cache.Find(u"a"), HashCache::kNone);
  EXPECT_EQ(cache.size(), 0u);
  EXPECT_EQ(KeysOf(cache), std::vector<std::string>());
}

TEST(HashCache, Finds_what_was_added_and_nothing_else) {
  HashCache cache;
  const HashCache::Index b = cache.FindOrAdd(u"b");
  const HashCache::Index a = cache.FindOrAdd(u"a");
  EXPECT_NE(a, b);
  EXPECT_EQ(cache.Find(u"a"), a);
  EXPECT_EQ(cache.Find(u"b"), b);
  EXPECT_EQ(cache.FindOrAdd(u"b"), b);
  EXPECT_EQ(cache.Find(u"ab"), HashCache::kNone);
  EXPECT_EQ(cache.Find(u""), HashCache::kNone);
  EXPECT_EQ(cache.size(), 2u);
  EXPECT_EQ(KeysOf(cache), (std::vector<std::string>{"a", "b"}));
}

// Among a thousand keys many meet in the table, and it grows while they are added.
TEST(HashCache, Finds_each_of_many_keys_in_whatever_order_they_came) {
  for (const int step : {1, 7, 999}) {
    SCOPED_TRACE(step);
    HashCache cache;
    std::vector<HashCache::Index> indexes(1000);
    std::set<HashCache::Index> all;
    for (int i = 0; i < 1000; ++i) {
      const int number = i * step % 1000;
      const auto place = static_cast<std::size_t>(number);
      indexes[place] = cache.FindOrAdd(Wide(std::to_string(10'000 + number)));
      all.insert(indexes[place]);
      ASSERT_EQ(cache.Find(Wide(std::to_string(10'000 + number))), indexes[place]);
    }
    EXPECT_EQ(all.size(), 1000u);
    std::vector<std::string> keys;
    for (int number = 0; number < 1000; ++number) {
      keys.push_back(std::to_string(10'000 + number));
      ASSERT_EQ(cache.FindOrAdd(Wide(keys.back())), indexes[static_cast<std::size_t>(number)]);
      ASSERT_EQ(cache.Find(Wide(keys.back() + "x")), HashCache::kNone);
    }
    EXPECT_EQ(cache.size(), 1000u);
    EXPECT_EQ(KeysOf(cache), keys);
  }
}

// As a scan looks them up: folder by folder, in order within each, with new files in between. So
// few searches need no table, and so many do.
TEST(HashCache, Finds_keys_of_a_file_in_the_order_of_a_walk) {
  for (const int in_folder : {1, 2, 50}) {
    SCOPED_TRACE(in_folder);
    HashCache cache;
    for (int number = 0; number < 1000; ++number) {
      cache.FindOrAdd(Wide(std::to_string(10'000 + number)));
    }
    for (int folder = 1000 / in_folder - 1; folder >= 0; --folder) {
      for (int i = 0; i < in_folder; ++i) {
        const int number = folder * in_folder + i;
        const std::string key = std::to_string(10'000 + number);
        ASSERT_EQ(cache.Find(Wide(key)), static_cast<HashCache::Index>(number));
        if (number % 7 == 0) {
          ASSERT_EQ(cache.Find(Wide(key + "-new")), HashCache::kNone);
        }
      }
    }
    EXPECT_EQ(cache.Find(u"0"), HashCache::kNone) << "before the first";
    EXPECT_EQ(cache.Find(u"99999"), HashCache::kNone) << "behind the last";
  }
}

TEST(HashCache, Finds_keys_that_came_behind_a_search_of_the_order) {
  HashCache cache;
  for (int number = 0; number < 100; ++number) {
    cache.FindOrAdd(Wide(std::to_string(10'000 + number)));
  }
  EXPECT_EQ(cache.Find(u"10050"), 50u);
  EXPECT_EQ(cache.FindOrAdd(u"10050-new"), 100u) << "out of order";
  EXPECT_EQ(cache.FindOrAdd(u"90000"), 101u);
  EXPECT_EQ(cache.Find(u"10050-new"), 100u);
  EXPECT_EQ(cache.Find(u"90000"), 101u);
  EXPECT_EQ(cache.Find(u"10051"), 51u);
  EXPECT_EQ(cache.FindOrAdd(u"10099"), 99u);
}

// In key order nothing is looked for, and the table that an earlier search made has to grow.
TEST(HashCache, Takes_many_keys_in_order_behind_a_search) {
  HashCache cache;
  cache.FindOrAdd(u"10000");
  EXPECT_EQ(cache.Find(u"10000"), 0u);
  for (int number = 10'001; number < 11'000; ++number) {
    cache.FindOrAdd(Wide(std::to_string(number)));
  }
  EXPECT_EQ(cache.size(), 1000u);
  for (int number = 10'000; number < 11'000; ++number) {
    ASSERT_EQ(cache.Find(Wide(std::to_string(number))),
              static_cast<HashCache::Index>(number - 10'000));
  }
}

TEST(HashCache, Keeps_texts_that_are_no_hashes) {
  HashCache cache;
  duplicate::DigestText kept;
  {
    std::string text = "no hash|but a text";
    kept = cache.Keep(text);
    text.assign(text.size(), '#');
  }
  EXPECT_EQ(kept.Get(), "no hash|but a text");
  EXPECT_EQ(cache.Keep("").Get(), "");
  EXPECT_EQ(cache.Keep("0a1b2c3d|78563412").Get(), "0a1b2c3d|78563412");
}

}  // namespace
}  // namespace quastel::duplicate_tests
