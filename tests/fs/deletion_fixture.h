// What the tests of the five deletion exports share: the exports in one table, the disk as lines,
// and the calls that were made as text.

#ifndef QUASTEL_TESTS_FS_DELETION_FIXTURE_H_
#define QUASTEL_TESTS_FS_DELETION_FIXTURE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel::deletion_tests {

using simulated::Call;
using simulated::LinkKind;
using simulated::Repeat;
using simulated::SimulatedWindows;
using support::Utf8;
using Lines = std::vector<std::string>;

inline constexpr std::uint64_t kTicksOf1601 = 504911232000000000;
// The time of every file that a test makes without saying more, in UTC and as a row reports it.
inline constexpr std::uint64_t kUsualTime = 133'000'000'000'000'000;

// As a scan reports the time of a file, while local time is UTC.
constexpr std::int64_t TicksFor(std::uint64_t utc) {
  return static_cast<std::int64_t>(utc + kTicksOf1601);
}

struct Snapshot {
  std::int64_t size = 0;
  std::int64_t last_write = TicksFor(kUsualTime);
};

// The five exports in one form; the unguarded ones ignore the snapshot.
struct Export : support::NamedCase {
  std::int32_t (*run)(const Char* path, const Snapshot& snapshot);
  bool removes;
  bool guarded;
  bool recycles;
};

inline constexpr Export kDeletePermanently = {
    {"DeletePermanently"},
    [](const Char* path, const Snapshot&) { return qs_delete_permanently(path); },
    true,
    false,
    false};
inline constexpr Export kMoveToRecycleBin = {
    {"MoveToRecycleBin"},
    [](const Char* path, const Snapshot&) { return qs_move_to_recycle_bin(path); },
    true,
    false,
    true};
inline constexpr Export kFileMatchesSnapshot = {{"FileMatchesSnapshot"},
                                                [](const Char* path, const Snapshot& s) {
                                                  return qs_file_matches_snapshot(path, s.size,
                                                                                  s.last_write);
                                                },
                                                false,
                                                true,
                                                false};
inline constexpr Export kDeleteSnapshotPermanently = {{"DeleteSnapshotPermanently"},
                                                      [](const Char* path, const Snapshot& s) {
                                                        return qs_delete_snapshot_permanently(
                                                            path, s.size, s.last_write);
                                                      },
                                                      true,
                                                      true,
                                                      false};
inline constexpr Export kMoveSnapshotToRecycleBin = {{"MoveSnapshotToRecycleBin"},
                                                     [](const Char* path, const Snapshot& s) {
                                                       return qs_move_snapshot_to_recycle_bin(
                                                           path, s.size, s.last_write);
                                                     },
                                                     true,
                                                     true,
                                                     true};

inline constexpr Export kExports[] = {kDeletePermanently, kMoveToRecycleBin, kFileMatchesSnapshot,
                                      kDeleteSnapshotPermanently, kMoveSnapshotToRecycleBin};

inline Lines DiskOf(const SimulatedWindows& windows) {
  Lines lines;
  std::istringstream text(windows.Describe());
  for (std::string line; std::getline(text, line);) {
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// What was there before and is not any more, or not as it was.
inline Lines GoneSince(const Lines& before, const SimulatedWindows& windows) {
  const Lines now = DiskOf(windows);
  Lines gone;
  std::set_difference(before.begin(), before.end(), now.begin(), now.end(),
                      std::back_inserter(gone));
  return gone;
}

// What is there now and was not before: a deletion makes nothing.
inline Lines NewSince(const Lines& before, const SimulatedWindows& windows) {
  const Lines now = DiskOf(windows);
  Lines added;
  std::set_difference(now.begin(), now.end(), before.begin(), before.end(),
                      std::back_inserter(added));
  return added;
}

// The path at the beginning of a line of the disk, for tests whose names hold no blanks.
inline Lines PathsIn(const Lines& lines) {
  Lines paths;
  for (const std::string& line : lines) {
    paths.push_back(line.substr(0, line.find(' ')));
  }
  return paths;
}

// Every recorded call in order: its name, its path, and its flags where it has some.
inline Lines CallsMade(const SimulatedWindows& windows) {
  Lines calls;
  for (const simulated::CallRecord& record : windows.record()) {
    std::string line = simulated::NameOf(record.call);
    if (!record.path.empty()) {
      line += " " + Utf8(record.path);
    }
    if (record.call == Call::kSetOperationFlags || record.call == Call::kShellDelete) {
      char flags[24];
      std::snprintf(flags, sizeof flags, " 0x%llx", static_cast<unsigned long long>(record.number));
      line += flags;
    }
    calls.push_back(line);
  }
  return calls;
}

class DeletionTest : public ::testing::Test {
 protected:
  static constexpr std::size_t kFileSize = 5;

  // A file of five bytes, which kFile tells.
  void AddFile(TextView path) { windows_.AddFile(path, "hello"); }

  static constexpr Snapshot kFile = {kFileSize, TicksFor(kUsualTime)};

  std::int32_t Run(const Export& deletion, const Text& path, const Snapshot& snapshot = kFile) {
    SCOPED_TRACE(std::string(deletion.name) + " " + Utf8(path));
    const std::int32_t answer = deletion.run(path.c_str(), snapshot);
    EXPECT_TRUE(answer == 0 || answer == 1) << answer;
    EXPECT_EQ(windows_.open_handles(), 0u);
    return answer;
  }

  // The calls of one run, from the first.
  Lines CallsOf(const Export& deletion, const Text& path, const Snapshot& snapshot = kFile) {
    windows_.SetRecording(true);
    windows_.ClearRecord();
    Run(deletion, path, snapshot);
    windows_.SetRecording(false);
    return CallsMade(windows_);
  }

  // The answer is 0, and nothing at all has happened to any disk.
  void ExpectRefused(const Export& deletion, const Text& path, const Snapshot& snapshot = kFile) {
    SCOPED_TRACE(std::string(deletion.name) + " " + Utf8(path));
    const std::string before = windows_.Describe();
    const std::size_t in_bin = windows_.recycled().size();
    EXPECT_EQ(Run(deletion, path, snapshot), 0);
    EXPECT_EQ(windows_.Describe(), before);
    EXPECT_EQ(windows_.recycled().size(), in_bin);
  }

  // The answer is 1, and of everything on the disks `item` alone has gone; a file goes where the
  // export sends it.
  void ExpectDone(const Export& deletion, const Text& path, const Text& item,
                  const Snapshot& snapshot = kFile) {
    SCOPED_TRACE(std::string(deletion.name) + " " + Utf8(path));
    const auto facts = windows_.Find(item);
    ASSERT_TRUE(facts.has_value()) << "there is nothing to delete";
    const Lines before = DiskOf(windows_);
    const std::size_t nodes = windows_.node_count();
    std::vector<Text> bin = windows_.recycled();
    EXPECT_EQ(Run(deletion, path, snapshot), 1);
    EXPECT_EQ(NewSince(before, windows_), Lines{});
    if (!deletion.removes) {
      EXPECT_EQ(GoneSince(before, windows_), Lines{});
      EXPECT_EQ(windows_.recycled(), bin);
      return;
    }
    EXPECT_EQ(GoneSince(before, windows_).size(), 1u);
    EXPECT_EQ(windows_.node_count(), nodes - 1);
    EXPECT_FALSE(windows_.Exists(item));
    if (deletion.recycles && !facts->is_folder) {
      bin.push_back(item);
    }
    EXPECT_EQ(Utf8(windows_.recycled()), Utf8(bin));
  }

  SimulatedWindows windows_;
};

// The same for each of several exports.
class EachDeletion : public DeletionTest, public ::testing::WithParamInterface<Export> {
 protected:
  void ExpectRefused(const Text& path, const Snapshot& snapshot = kFile) {
    DeletionTest::ExpectRefused(GetParam(), path, snapshot);
  }
  void ExpectDone(const Text& path, const Text& item, const Snapshot& snapshot = kFile) {
    DeletionTest::ExpectDone(GetParam(), path, item, snapshot);
  }
};

}  // namespace quastel::deletion_tests

#endif  // QUASTEL_TESTS_FS_DELETION_FIXTURE_H_
