// Damaged cache files: each loads wholly or not at all, and for no more memory than it has bytes.

#include <algorithm>
#include <random>

#include "duplicate/allocation_meter.h"
#include "duplicate/cache_bytes.h"
#include "duplicate/golden_cache.h"
#include "support/instrumented.h"

namespace quastel::duplicate_tests {
namespace {

class CacheDamage : public CacheTest {
 protected:
  // Three entries with every kind of text, in as few bytes as that takes.
  static std::string SmallFile() {
    return Head(3)
        .Entry(u"c:\\a", EntryOf("0a1b2c3d", "78563412"))
        .Entry(u"c:\\bc", EntryOf("s"))
        .Entry(u"c:\\d", EntryOf("055dcc02|78563412", "h"))
        .text;
  }

  // Whatever the bytes are, they load as the model reads them.
  ::testing::AssertionResult LoadsLikeTheModel(const std::string& bytes) {
    machine_.SetContent(location_, bytes);
    const CacheMap loaded = Load();
    const CacheMap expected = ModelRead(bytes, kNow);
    if (Same(loaded, expected)) {
      return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "loaded " << ::testing::PrintToString(Lines(loaded)) << "\nexpected "
           << ::testing::PrintToString(Lines(expected));
  }

  // What loading these bytes asks for, all together.
  std::size_t MemoryFor(const std::string& bytes) {
    Put(bytes);
    const AllocationMeter meter;
    const CacheMap cache = Load();
    return meter.bytes();
  }
};

TEST_F(CacheDamage, The_undamaged_files_load) {
  Put(SmallFile());
  EXPECT_EQ(Load().size(), 3u);
  Put(GoldenCache());
  EXPECT_EQ(Load().size(), 7u);
}

TEST_F(CacheDamage, A_file_that_is_cut_off_anywhere_is_an_empty_cache) {
  for (const std::string& file : {SmallFile(), GoldenCache()}) {
    Put(file);
    for (std::size_t length = 0; length < file.size(); ++length) {
      machine_.SetContent(location_, file.substr(0, length));
      ASSERT_TRUE(Load().empty()) << length << " bytes";
    }
  }
}

// What comes behind the length would make good fields if the text itself were passed over.
TEST_F(CacheDamage, A_text_that_is_longer_than_the_rest_of_the_file_is_not_passed_over) {
  const Bytes good = Bytes().U64(1).U64(2).U64(kNow).Short("0a1b2c3d").Short("78563412");
  for (const std::uint32_t length : {30u, 31u, 1000u, 32'767u}) {
    Put(Head(1).U32(length).Raw(good.text));
    EXPECT_TRUE(Load().empty()) << "path of " << length;
  }
  for (const std::uint32_t length : {13u, 14u, 300u}) {
    Put(Head(1).Path(u"c:\\a").U64(1).U64(2).U64(kNow).U32(length).Short("78563412"));
    EXPECT_TRUE(Load().empty()) << "sample of " << length;
  }
  Put(Head(1).Path(u"c:\\a").U64(1).U64(2).U64(kNow).Short("0a1b2c3d").U32(8).Raw("7856341"));
  EXPECT_TRUE(Load().empty()) << "hash";
}

// Of these an instrumented build takes some for each byte, others each time.
TEST_F(CacheDamage, Every_value_of_every_byte_loads_wholly_or_not_at_all) {
  const std::string file = SmallFile();
  Put(file);
  std::uint64_t changes = 0;
  for (std::size_t at = 0; at < file.size(); ++at) {
    std::string damaged = file;
    for (int change = 1; change < 256; ++change) {
      if (!support::IsDone(++changes, 7)) {
        continue;
      }
      damaged[at] = static_cast<char>(file[at] ^ change);
      ASSERT_TRUE(LoadsLikeTheModel(damaged)) << "byte " << at << " changed by " << change;
    }
  }
}

TEST_F(CacheDamage, Every_bit_of_the_golden_file_loads_wholly_or_not_at_all) {
  const std::string file = GoldenCache();
  Put(file);
  std::uint64_t changes = 0;
  for (std::size_t at = 0; at < file.size(); ++at) {
    std::string damaged = file;
    for (int bit = 0; bit < 8; ++bit) {
      if (!support::IsDone(++changes, 3)) {
        continue;
      }
      damaged[at] = static_cast<char>(file[at] ^ (1 << bit));
      ASSERT_TRUE(LoadsLikeTheModel(damaged)) << "byte " << at << ", bit " << bit;
    }
  }
}

TEST_F(CacheDamage, A_byte_that_is_missing_or_too_many_loads_wholly_or_not_at_all) {
  const std::string file = SmallFile();
  Put(file);
  for (std::size_t at = 0; at < file.size(); ++at) {
    std::string damaged = file;
    damaged.erase(at, 1);
    ASSERT_TRUE(LoadsLikeTheModel(damaged)) << at;
    damaged = file;
    damaged.insert(at, 1, '\0');
    ASSERT_TRUE(LoadsLikeTheModel(damaged)) << at;
  }
}

TEST_F(CacheDamage, Garbage_of_any_length_loads_like_the_model_reads_it) {
  std::mt19937 random(1);
  Put("");
  for (int round = 0; round < 3000; ++round) {
    std::string garbage(random() % 700, '\0');
    // Small numbers make plausible lengths.
    const std::uint32_t range = round % 2 == 0 ? 256 : 4;
    std::generate(garbage.begin(), garbage.end(),
                  [&] { return static_cast<char>(random() % range); });
    // Without a head most garbage would end at the magic.
    const std::string head = round % 3 == 0 ? "" : Head(random() % 4).text;
    ASSERT_TRUE(LoadsLikeTheModel(head + garbage)) << round;
  }
}

TEST_F(CacheDamage, Random_pieces_of_good_files_load_like_the_model_reads_them) {
  std::mt19937 random(2);
  const std::string file = FileOf(NumberedEntries(40, 33));
  Put(file);
  for (int round = 0; round < 1000; ++round) {
    std::string damaged = file;
    for (auto n = random() % 3; n > 0; --n) {
      const std::size_t from = random() % damaged.size();
      const std::size_t length = random() % 60;
      if (random() % 2 == 0) {
        damaged.erase(from, length);
      } else {
        damaged.insert(random() % damaged.size(), damaged.substr(from, length));
      }
    }
    damaged[random() % damaged.size()] ^= static_cast<char>(random() % 256);
    ASSERT_TRUE(LoadsLikeTheModel(damaged)) << round;
  }
}

TEST_F(CacheDamage, A_file_that_changes_between_the_reads_loads_wholly_or_not_at_all) {
  const CacheMap many = NumberedEntries(20'000, 300);
  const std::string file = FileOf(many);
  for (std::uint64_t nth = 1; nth <= 8; ++nth) {
    Put(file);
    BeforeCall(machine_, Call::kReadFrom, nth,
               [&] { machine_.SetContent(location_, file.substr(0, file.size() / 3)); });
    const CacheMap loaded = Load();
    EXPECT_TRUE(loaded.empty() || Same(loaded, many)) << nth;
  }
}

// What a small honest file takes is the yardstick: a lie may cost nothing on top.
TEST_F(CacheDamage, Lengths_that_the_file_does_not_hold_cost_no_memory) {
  const std::size_t honest = MemoryFor(Head(1).Entry(u"c:\\a", EntryOf("0a1b2c3d")).text);
  const auto expect_cheap = [&](const char* lie, const std::string& bytes) {
    const std::size_t memory = MemoryFor(bytes);
    EXPECT_LE(memory, honest + 16 * bytes.size() + 1024) << lie << "; honest: " << honest;
    EXPECT_TRUE(Load().empty()) << lie;
  };
  expect_cheap("200,000 entries and none there", Head(200'000).text);
  expect_cheap("200,000 entries and one there",
               Head(200'000).Entry(u"c:\\a", EntryOf("0a1b2c3d")).text);
  expect_cheap("a path of 32,767 units and nothing there", Head(1).U32(32'767).text);
  expect_cheap("a path of 32,767 units and half a unit there", Head(1).U32(32'767).Raw("x").text);
  expect_cheap("a path of 32,767 units in each of 200,000 entries",
               Head(200'000).U32(32'767).Raw(std::string(60, 'x')).text);
  expect_cheap("a path of 2^32 - 1 units", Head(1).U32(0xFFFFFFFF).Raw(std::string(60, 'x')).text);
  expect_cheap("a path of 2^31 units", Head(1).U32(0x80000000).Raw(std::string(60, 'x')).text);
  expect_cheap("a sample of 300 bytes and nothing there",
               Head(1).Path(u"c:\\a").U64(1).U64(1).U64(1).U32(300).text);
  expect_cheap("a sample of 2^32 - 1 bytes",
               Head(1).Path(u"c:\\a").U64(1).U64(1).U64(1).U32(0xFFFFFFFF).text);
  expect_cheap("a hash of 2^32 - 1 bytes",
               Head(1).Path(u"c:\\a").U64(1).U64(1).U64(1).Short("s").U32(0xFFFFFFFF).text);
}

TEST_F(CacheDamage, Memory_grows_with_the_file_and_no_faster) {
  for (const std::size_t count : {100u, 1000u, 10'000u}) {
    std::string file = FileOf(NumberedEntries(count));
    EXPECT_LE(MemoryFor(file), 2 * kMebibyte + 16 * file.size()) << count;
    // The same with a lie at its end.
    file.resize(file.size() - 1);
    EXPECT_LE(MemoryFor(file), 2 * kMebibyte + 16 * file.size()) << count;
  }
}

TEST_F(CacheDamage, A_huge_file_without_the_magic_is_not_read_through) {
  machine_.AddSizedFile(location_, 100'000 * kMebibyte, simulated::kZeroSeed);
  std::uint64_t asked = 0;
  machine_.SetHook([&](const CallRecord& record) {
    if (record.call == Call::kReadFrom) {
      asked += record.number;
    }
  });
  std::size_t memory = 0;
  {
    const AllocationMeter meter;
    EXPECT_TRUE(Load().empty());
    memory = meter.bytes();
  }
  EXPECT_LE(asked, 2 * kMebibyte);
  EXPECT_LE(memory, 4 * kMebibyte);
}

}  // namespace
}  // namespace quastel::duplicate_tests
