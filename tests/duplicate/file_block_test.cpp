// Hashing one block at either end of a file.

#include <limits>
#include <optional>

#include "duplicate/file_hash.h"
#include "duplicate/machine.h"
#include "duplicate/open_record.h"
#include "duplicate/textbook_xxh32.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::BlockPlace;
using duplicate::HashFileBlock;
using Block = std::optional<std::string>;

class FileBlock : public HashingTest {
 protected:
  static Block TextOf(std::uint64_t begin, std::uint64_t size) {
    return TextbookText(Pattern(size, 1, begin));
  }
  void AddFile(std::uint64_t size) { machine_.AddSizedFile(u"C:\\file", size, 1); }
};

TEST_F(FileBlock, Is_the_first_or_the_last_4096_bytes_or_all_there_is) {
  for (const std::uint64_t size :
       {1u, 150u, 151u, 4095u, 4096u, 4097u, 8191u, 8192u, 8193u, 100'000u}) {
    AddFile(size);
    const std::uint64_t length = std::min<std::uint64_t>(size, 4096);
    const auto given = static_cast<std::int64_t>(size);
    EXPECT_EQ(HashFileBlock(u"C:\\file", given, BlockPlace::kStart), TextOf(0, length)) << size;
    EXPECT_EQ(HashFileBlock(u"C:\\file", given, BlockPlace::kEnd), TextOf(size - length, length))
        << size;
  }
}

TEST_F(FileBlock, Takes_one_open_with_the_sequential_hint_and_one_read) {
  AddFile(10'000);
  OpenRecord opens;
  Record();
  EXPECT_EQ(HashFileBlock(u"C:\\file", 10'000, BlockPlace::kEnd), TextOf(10'000 - 4096, 4096));
  const std::vector<std::string> calls = {"OpenFile C:\\file", "SeekTo 5904", "ReadFrom 4096",
                                          "CloseFile"};
  EXPECT_EQ(CallsIn(machine_), calls);
  const std::vector<OpenCall> expected = {
      {"C:\\file", 0x80000000, 7, platform::Disposition::kOpenExisting, 0x08000080}};
  EXPECT_EQ(opens.calls(), expected);
}

TEST_F(FileBlock, Of_no_size_is_the_hash_of_no_bytes_and_reads_nothing) {
  AddFile(10);
  for (const BlockPlace place : {BlockPlace::kStart, BlockPlace::kEnd}) {
    EXPECT_EQ(HashFileBlock(u"C:\\file", 0, place), Block("055dcc02"));
  }
  EXPECT_EQ(machine_.CallCount(Call::kReadFrom), 0u);
}

TEST_F(FileBlock, A_file_that_shrank_has_none) {
  for (const std::uint64_t there : {0u, 1u, 4095u}) {
    AddFile(there);
    EXPECT_EQ(HashFileBlock(u"C:\\file", 4096, BlockPlace::kStart), std::nullopt) << there;
    EXPECT_EQ(HashFileBlock(u"C:\\file", 4096, BlockPlace::kEnd), std::nullopt) << there;
    EXPECT_EQ(HashFileBlock(u"C:\\file", 100'000, BlockPlace::kStart), std::nullopt) << there;
  }
  AddFile(99'999);
  EXPECT_EQ(HashFileBlock(u"C:\\file", 100'000, BlockPlace::kEnd), std::nullopt);
  EXPECT_EQ(HashFileBlock(u"C:\\file", 100'000, BlockPlace::kStart), TextOf(0, 4096));
}

TEST_F(FileBlock, The_size_is_the_one_that_is_given) {
  AddFile(100'000);
  EXPECT_EQ(HashFileBlock(u"C:\\file", 200, BlockPlace::kEnd), TextOf(0, 200));
  EXPECT_EQ(HashFileBlock(u"C:\\file", 5000, BlockPlace::kEnd), TextOf(904, 4096));
  EXPECT_EQ(HashFileBlock(u"C:\\file", std::numeric_limits<std::int64_t>::max(), BlockPlace::kEnd),
            std::nullopt);
}

TEST_F(FileBlock, A_negative_size_has_none_and_opens_nothing) {
  AddFile(10);
  for (const std::int64_t size : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
    EXPECT_EQ(HashFileBlock(u"C:\\file", size, BlockPlace::kStart), std::nullopt);
    EXPECT_EQ(HashFileBlock(u"C:\\file", size, BlockPlace::kEnd), std::nullopt);
  }
  EXPECT_EQ(machine_.CallCount(Call::kOpenFile), 0u);
}

TEST_F(FileBlock, Whatever_fails_gives_none_and_closes_the_file) {
  AddFile(10'000);
  for (const BlockPlace place : {BlockPlace::kStart, BlockPlace::kEnd}) {
    std::uint64_t nth = 1;
    for (; nth < 20; ++nth) {
      machine_.ClearFaults();
      machine_.FailAnyCall(nth, Repeat::kOnce);
      const Block block = HashFileBlock(u"C:\\file", 10'000, place);
      if (machine_.faults_injected() == 0) {
        break;
      }
      EXPECT_EQ(block, std::nullopt) << nth;
      EXPECT_EQ(machine_.open_handles(), 0u) << nth;
    }
    EXPECT_GE(nth, 3u);
    EXPECT_LT(nth, 20u);
  }
  machine_.ClearFaults();
  EXPECT_EQ(HashFileBlock(u"C:\\missing", 10, BlockPlace::kStart), std::nullopt);
  machine_.Lock(u"C:\\file");
  EXPECT_EQ(HashFileBlock(u"C:\\file", 10, BlockPlace::kStart), std::nullopt);
  machine_.Unlock(u"C:\\file");
}

TEST_F(FileBlock, A_long_path_is_opened_in_its_extended_form) {
  const Text path = support::NestedTo(400, u"C:\\deep");
  machine_.AddSizedFile(path, 5000, 1);
  Record();
  EXPECT_EQ(HashFileBlock(path.c_str(), 5000, BlockPlace::kStart), TextOf(0, 4096));
  EXPECT_EQ(machine_.CallCountFor(Call::kOpenFile, u"\\\\?\\" + path), 1u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
