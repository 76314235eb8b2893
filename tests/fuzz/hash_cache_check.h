// What holds for the reader and the writer of the hash cache whatever the file's bytes are.

#ifndef QUASTEL_TESTS_FUZZ_HASH_CACHE_CHECK_H_
#define QUASTEL_TESTS_FUZZ_HASH_CACHE_CHECK_H_

#include <cstddef>
#include <string_view>

namespace quastel::fuzz {

// What a file turned out to be.
struct HashCacheSeen {
  bool whole = false;        // all of its entries could be read
  std::size_t entries = 0;   // that still hold
  std::size_t dropped = 0;   // that are too old, from the future or without a sample
  bool about_files = false;  // of files that the scan met
};

// The bytes are the cache file. They are read, written back, and used by a whole duplicate scan.
HashCacheSeen CheckHashCache(std::string_view bytes);

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_HASH_CACHE_CHECK_H_
