// Which files a duplicate scan opens, how often, and how much it reads: told by the record of
// calls.

#include <atomic>
#include <initializer_list>
#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "platform/file.h"
#include "platform/file_system.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::uint64_t kReadBlock = 1'048'576;

using OpensByPath = std::map<std::string, int>;

// The reads and seeks on each file, by one worker: "read 4096", "seek 904".
std::map<std::string, std::vector<std::string>> ReadsOf(const SimulatedWindows& machine) {
  std::map<std::string, std::vector<std::string>> reads;
  std::vector<std::string>* current = nullptr;
  for (const CallRecord& call : machine.record()) {
    if (call.call == Call::kOpenFile) {
      current = OpensCandidate(call) ? &reads[Utf8(call.path)] : nullptr;
    } else if (current != nullptr && call.call == Call::kReadFrom) {
      current->push_back("read " + std::to_string(call.number));
    } else if (current != nullptr && call.call == Call::kSeekTo && call.number != 0) {
      // Whether a file that was just opened is set to its beginning is nobody's business.
      current->push_back("seek " + std::to_string(call.number));
    }
  }
  return reads;
}

TEST(DuplicateAccess, Opens_no_file_whose_size_is_its_own) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  for (std::size_t size = 0; size < 300; ++size) {
    machine.AddFile(u"C:\\data\\f" + Wide(std::to_string(size)), std::string(size, 'x'));
  }
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.performance.candidates, 300u);
  EXPECT_EQ(OpensOf(machine), OpensByPath());
  EXPECT_EQ(machine.CallCount(Call::kStartThread), 0u);
}

TEST(DuplicateAccess, Opens_each_file_once_for_each_stage_that_it_enters) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  const std::string content = Bytes(9000);
  machine.AddFile(u"C:\\data\\unique size", Bytes(9001));
  machine.AddFile(u"C:\\data\\other head", ChangedAt(content, 0));
  machine.AddFile(u"C:\\data\\other tail", ChangedAt(content, 8999));
  machine.AddFile(u"C:\\data\\other middle", ChangedAt(content, 4500));
  machine.AddFile(u"C:\\data\\equal 1", content);
  machine.AddFile(u"C:\\data\\equal 2", content);
  // Read whole at first.
  machine.AddFile(u"C:\\data\\small 1", Bytes(150));
  machine.AddFile(u"C:\\data\\small 2", Bytes(150));
  machine.AddFile(u"C:\\data\\small 3", Bytes(150, 1));
  // Within one block there is no tail to read.
  machine.AddFile(u"C:\\data\\block 1", Bytes(4096));
  machine.AddFile(u"C:\\data\\block 2", Bytes(4096));
  machine.AddFile(u"C:\\data\\block 3", Bytes(4096, 1));
  const Outcome scan = ScanData();
  EXPECT_EQ(OpensOf(machine), (OpensByPath{
                                  {"C:\\data\\other head", 1},
                                  {"C:\\data\\other tail", 2},
                                  {"C:\\data\\other middle", 3},
                                  {"C:\\data\\equal 1", 3},
                                  {"C:\\data\\equal 2", 3},
                                  {"C:\\data\\small 1", 1},
                                  {"C:\\data\\small 2", 1},
                                  {"C:\\data\\small 3", 1},
                                  {"C:\\data\\block 1", 2},
                                  {"C:\\data\\block 2", 2},
                                  {"C:\\data\\block 3", 1},
                              }));
  EXPECT_EQ(GroupsOf(scan.rows).size(), 3u);
  EXPECT_EQ(scan.performance.sampled_items, 11u);
  EXPECT_EQ(scan.performance.hashed_items, 5u);
}

TEST(DuplicateAccess, Reads_blocks_at_both_ends_before_it_reads_a_file_whole) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  machine.SetRecording(true);
  const std::uint64_t size = 2 * kReadBlock + 5;
  machine.AddSizedFile(u"C:\\data\\a", size);
  machine.AddSizedFile(u"C:\\data\\b", size);
  machine.AddSizedFile(u"C:\\data\\c", size, 1);
  machine.AddFile(u"C:\\data\\d", Bytes(151));
  machine.AddFile(u"C:\\data\\e", Bytes(151));
  machine.AddFile(u"C:\\data\\f", Bytes(4097));
  machine.AddFile(u"C:\\data\\g", ChangedAt(Bytes(4097), 4096));
  machine.AddFile(u"C:\\data\\h", Bytes(90));
  machine.AddFile(u"C:\\data\\i", Bytes(90));
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 3u);

  const std::string mebibyte = "read " + std::to_string(kReadBlock);
  const std::vector<std::string> whole = {
      "read 4096", "seek " + std::to_string(size - 4096), "read 4096", mebibyte, mebibyte, mebibyte,
      mebibyte};
  auto reads = ReadsOf(machine);
  EXPECT_EQ(reads["C:\\data\\a"], whole) << "the last read meets the end of the file";
  EXPECT_EQ(reads["C:\\data\\b"], whole);
  EXPECT_EQ(reads["C:\\data\\c"], std::vector<std::string>{"read 4096"});
  EXPECT_EQ(reads["C:\\data\\d"], (std::vector<std::string>{"read 151", mebibyte, mebibyte}));
  EXPECT_EQ(reads["C:\\data\\f"], (std::vector<std::string>{"read 4096", "seek 1", "read 4096"}));
  EXPECT_EQ(reads["C:\\data\\h"], std::vector<std::string>{"read 150"});
}

TEST(DuplicateAccess, Reads_nothing_of_a_file_without_content_but_its_end) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  machine.AddFile(u"C:\\data\\a", "");
  machine.AddFile(u"C:\\data\\b", "");
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 1u);
  EXPECT_EQ(OpensOf(machine), (OpensByPath{{"C:\\data\\a", 1}, {"C:\\data\\b", 1}}));
}

TEST(DuplicateAccess, Asks_for_reading_alone) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  for (const std::size_t size : std::initializer_list<std::size_t>{100, 1000, 10'000}) {
    machine.AddFile(u"C:\\data\\a" + Wide(std::to_string(size)), Bytes(size));
    machine.AddFile(u"C:\\data\\b" + Wide(std::to_string(size)), Bytes(size));
  }
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 3u);
  int opened = 0;
  for (const CallRecord& call : machine.record()) {
    if (OpensCandidate(call)) {
      EXPECT_EQ(call.number, platform::kAccessRead) << Utf8(call.path);
      ++opened;
    }
  }
  EXPECT_EQ(opened, 2 + 2 * 2 + 2 * 3);
}

TEST(DuplicateAccess, Queries_nothing_about_a_file_that_the_walk_has_told) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(10'000));
  machine.AddFile(u"C:\\data\\b", Bytes(10'000));
  machine.SetRecording(true);
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 1u);
  for (const char16_t* path : {u"C:\\data\\a", u"C:\\data\\b"}) {
    EXPECT_EQ(machine.CallCountFor(Call::kQueryAttributes, path), 0u);
    EXPECT_EQ(machine.CallCountFor(Call::kQueryFileFacts, path), 0u);
  }
}

TEST(DuplicateAccess, Changes_no_file_but_the_cache) {
  SimulatedWindows machine;
  machine.AddFolder(kCacheFolder);
  for (const std::size_t size : std::initializer_list<std::size_t>{0, 100, 1000, 10'000}) {
    machine.AddFile(u"C:\\data\\a" + Wide(std::to_string(size)), Bytes(size));
    machine.AddFile(u"C:\\data\\b" + Wide(std::to_string(size)), Bytes(size));
  }
  const std::string before = machine.Describe();
  machine.SetRecording(true);
  EXPECT_EQ(GroupsOf(ScanData().rows).size(), 4u);
  for (const CallRecord& call : machine.record()) {
    const bool removes_or_moves =
        call.call == Call::kRemoveFile || call.call == Call::kRemoveFolder ||
        call.call == Call::kRenameFile || call.call == Call::kCreateFolderTree ||
        (call.call == Call::kOpenFile && call.number != platform::kAccessRead &&
         call.number != platform::kAccessQuery);
    EXPECT_TRUE(!removes_or_moves || IsCachePath(call.path)) << Utf8(call.path);
  }
  machine.Remove(kCacheFile);
  EXPECT_EQ(machine.Describe(), before);
}

// Others write to and delete the files meanwhile, in whatever stage the scan is.
class Sharing : public ::testing::TestWithParam<int> {};

TEST_P(Sharing, Lets_others_write_and_delete_a_file_that_is_being_read) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  for (const char16_t* path : {u"C:\\data\\a", u"C:\\data\\b", u"C:\\data\\c"}) {
    machine.AddFile(path, Bytes(10'000));
  }
  Text open_path;
  std::atomic<int> opens{0};
  std::atomic<bool> could_write{false};
  platform::Error removed = platform::Error::kNotReady;
  machine.SetHook([&](const CallRecord& call) {
    if (OpensCandidate(call)) {
      open_path = call.path;
      ++opens;
    } else if (call.call == Call::kReadFrom && opens == GetParam() && !could_write) {
      could_write =
          platform::OpenFile(open_path.c_str(), platform::kAccessWrite, platform::kShareAll,
                             platform::Disposition::kOpenExisting, platform::kAttributeNormal)
              .ok();
      removed = platform::RemoveFile(open_path.c_str());
    }
  });
  const Outcome scan = ScanData();
  machine.SetHook(nullptr);
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_TRUE(could_write);
  EXPECT_EQ(removed, platform::Error::kNone);
}

// Three files each for the head, the tail and the whole.
INSTANTIATE_TEST_SUITE_P(All, Sharing, ::testing::Values(1, 4, 7));

}  // namespace
}  // namespace quastel::duplicate_tests
