// The cache file, made and read by hand: an independent writer and reader to compare with.

#ifndef QUASTEL_TESTS_DUPLICATE_CACHE_BYTES_H_
#define QUASTEL_TESTS_DUPLICATE_CACHE_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "duplicate/hash_cache.h"
#include "duplicate/machine.h"
#include "support/cache_entries.h"

namespace quastel::duplicate_tests {

using support::CacheEntry;
using support::CacheMap;
using support::CacheOf;

// What the library has, and each key once.
CacheMap EntriesOf(const duplicate::HashCache& cache);

CacheMap LoadCache(const Text& location, std::uint32_t* cancel);
void SaveCache(const Text& location, const CacheMap& entries, std::uint32_t* cancel);

inline constexpr std::uint64_t kNow = 133'500'000'000'000'000;
inline constexpr std::uint64_t kHour = 36'000'000'000;

// `bytes` as they are, then numbers in little-endian order.
struct Bytes {
  std::string text;

  Bytes& Raw(std::string_view bytes);
  Bytes& U32(std::uint32_t value);
  Bytes& U64(std::uint64_t value);
  Bytes& Path(TextView path);              // with its length
  Bytes& Short(std::string_view content);  // with its length
  Bytes& Entry(TextView key, const CacheEntry& entry);
};

Bytes Head(std::uint32_t count);

// What the file of a map must look like: 200,000 entries at the most.
std::string FileOf(const CacheMap& cache);

// What a file must load as.
CacheMap ModelRead(std::string_view bytes, std::uint64_t now);

bool Same(const CacheMap& a, const CacheMap& b);
std::vector<std::string> Lines(const CacheMap& cache);

CacheEntry EntryOf(std::string sample, std::string full_hash = "");

// Entries with keys "c:\data\file0000000" and up.
CacheMap NumberedEntries(std::size_t count, std::size_t sample_length = 17);

// A machine whose clock shows kNow.
class CacheTest : public ::testing::Test {
 protected:
  static constexpr const Char* kHome = u"C:\\u";
  static constexpr const Char* kFolder = u"C:\\u\\AppData\\Local\\Vantrelloc\\Ferrowynd\\cache";

  CacheTest() { machine_.SetSystemFileTime(kNow); }
  ~CacheTest() override { EXPECT_EQ(machine_.open_handles(), 0u); }

  void Put(std::string_view bytes) { machine_.AddFile(location_, bytes); }
  void Put(const Bytes& bytes) { Put(bytes.text); }
  CacheMap Load(std::uint32_t* cancel = nullptr) { return LoadCache(location_, cancel); }
  void Save(const CacheMap& cache, std::uint32_t* cancel = nullptr) {
    SaveCache(location_, cache, cancel);
  }
  void Record() {
    machine_.ClearRecord();
    machine_.SetRecording(true);
  }

  // Puts a file and expects what the model reads in it.
  void ExpectLoads(const Bytes& bytes, std::size_t entries);
  // The cache file has this content, and nothing was left beside it.
  void ExpectFile(const std::string& content);

  SimulatedWindows machine_;
  const Text location_ = Text(kFolder) + u"\\duplicate-hashes-v1.bin";
  const Text temporary_ = location_ + u".tmp";
};

}  // namespace quastel::duplicate_tests

#endif  // QUASTEL_TESTS_DUPLICATE_CACHE_BYTES_H_
