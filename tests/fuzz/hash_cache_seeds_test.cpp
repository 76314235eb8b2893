// The seeds of the cache file. What a seed is called says what the reader makes of it; the ones
// that the fuzzer found are called after their bytes.

#include <gtest/gtest.h>

#include "fuzz/hash_cache_check.h"
#include "fuzz/seeds.h"

namespace quastel::fuzz {
namespace {

TEST(HashCacheSeeds, Are_read_whole_or_not_at_all_as_their_names_say) {
  std::size_t whole = 0;
  std::size_t damaged = 0;
  std::size_t dropped = 0;
  std::size_t about_files = 0;
  for (const Seed& seed : SeedsOf("hash_cache")) {
    SCOPED_TRACE(seed.name);
    const HashCacheSeen seen = CheckHashCache(seed.bytes);
    EXPECT_FALSE(seen.whole && seed.name.starts_with("bad_"));
    EXPECT_FALSE(!seen.whole && seed.name.starts_with("good_"));
    whole += seen.whole ? 1 : 0;
    damaged += seen.whole ? 0 : 1;
    dropped += seen.dropped;
    about_files += seen.about_files ? 1 : 0;
  }
  EXPECT_GE(whole, 10u);
  EXPECT_GE(damaged, 10u);
  EXPECT_GE(dropped, 3u);
  EXPECT_GE(about_files, 4u);
}

TEST(HashCacheSeeds, Cut_off_anywhere_break_nothing) {
  std::size_t files = 0;
  for (const Seed& seed : SeedsOf("hash_cache")) {
    if (!seed.name.starts_with("good_")) {
      continue;
    }
    SCOPED_TRACE(seed.name);
    // Fields are 4 bytes and more: every third place is within each of them.
    for (std::size_t size = seed.bytes.size() % 3; size < seed.bytes.size(); size += 3) {
      CheckHashCache(std::string_view(seed.bytes).substr(0, size));
    }
    ++files;
  }
  EXPECT_GE(files, 10u);
}

}  // namespace
}  // namespace quastel::fuzz
