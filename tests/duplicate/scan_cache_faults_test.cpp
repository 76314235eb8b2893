// A cache that cannot be read or written costs time and nothing else: whatever fails, the report is
// that of a scan without a cache, and the file is the old or the new one.

#include <atomic>
#include <string>

#include "duplicate/duplicate_fixture.h"

namespace quastel::duplicate_tests {
namespace {

using simulated::Repeat;

// The calls about the cache, one after the other.
class CacheCalls {
 public:
  bool Includes(const CallRecord& call) {
    switch (call.call) {
      case Call::kFindFirstBasic:
        walked_ = true;
        return false;
      case Call::kCreateFolderTree:
        writing_ = true;
        return true;
      case Call::kFullPathName:  // the keys; no entry is found when the name
                                 // cannot be resolved
        return true;
      case Call::kQueryAttributes:  // of the roots
      case Call::kEnvironmentVariable:
        return false;
      default:
        return !walked_ || writing_ || IsCachePath(call.path);
    }
  }

 private:
  bool walked_ = false;
  bool writing_ = false;
};

void AddTwoGroups(SimulatedWindows& machine) {
  machine.AddFile(u"C:\\data\\a", Bytes(100));
  machine.AddFile(u"C:\\data\\b", Bytes(100));
  machine.AddFile(u"C:\\data\\c", Bytes(9000));
  machine.AddFile(u"C:\\data\\d", Bytes(9000));
  machine.AddFile(u"C:\\data\\e", Bytes(9000, 1));
}

struct Cache : ::testing::TestWithParam<bool> {
  Cache() {
    AddTwoGroups(machine);
    machine.SetProcessorCount(1);
    Request without_cache = DuplicateRequest({u"C:\\data"});
    without_cache.user_home.reset();
    uncached = Scan(without_cache);
    EXPECT_EQ(GroupsOf(uncached.rows).size(), 2u);
  }

  // The cache as it is before a round.
  void Reset() {
    if (machine.Exists(u"C:\\Users")) {
      machine.Remove(u"C:\\Users");
    }
    if (GetParam()) {
      EXPECT_EQ(ScanData().status, QS_OK);
    }
    before = machine.ContentOf(kCacheFile);
    machine.AdvanceClock(1000);
  }

  void CheckRound(const Outcome& scan) {
    EXPECT_EQ(scan.status, QS_OK);
    EXPECT_EQ(scan.rows, uncached.rows);
    EXPECT_EQ(scan.performance.candidates, uncached.performance.candidates);
    EXPECT_EQ(scan.performance.sampled_items, uncached.performance.sampled_items);
    EXPECT_EQ(scan.performance.hashed_items, uncached.performance.hashed_items);
    EXPECT_EQ(scan.performance.unhashed_groups, uncached.performance.unhashed_groups);
    EXPECT_EQ(machine.open_handles(), 0u);
    const std::optional<std::string> after = machine.ContentOf(kCacheFile);
    if (after != before) {
      ASSERT_TRUE(after.has_value());
      EXPECT_TRUE(ParseCache(*after).has_value()) << "neither the old file nor a whole new one";
    }
  }

  SimulatedWindows machine;
  Outcome uncached;
  std::optional<std::string> before;
};

TEST_P(Cache, That_fails_at_any_call_changes_nothing_in_the_report) {
  int rounds = 0;
  int injected = 0;
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE("cache call " + std::to_string(nth));
    Reset();
    CacheCalls cache_calls;
    int seen = 0;
    bool armed = false;
    machine.ClearFaults();
    machine.SetHook([&](const CallRecord& call) {
      if (cache_calls.Includes(call) && ++seen == nth) {
        armed = true;
        machine.ClearFaults();  // it is the first of its kind from here on
        machine.FailCall(call.call, 1);
      }
    });
    const Outcome scan = ScanData();
    machine.SetHook(nullptr);
    if (!armed) {
      break;
    }
    ++rounds;
    injected += static_cast<int>(machine.faults_injected());
    machine.ClearFaults();
    CheckRound(scan);
    if (HasFailure()) {
      return;
    }
  }
  EXPECT_GE(rounds, GetParam() ? 20 : 15);
  // Clocks and silent closings cannot fail.
  EXPECT_GE(injected, GetParam() ? 14 : 10);
}

TEST_P(Cache, Whose_calls_of_one_kind_all_fail_changes_nothing_in_the_report) {
  for (const Call kind : {Call::kCreateFolderTree, Call::kWriteTo, Call::kFlushFile,
                          Call::kRenameFile, Call::kRemoveFile, Call::kFullPathName}) {
    SCOPED_TRACE(simulated::NameOf(kind));
    Reset();
    machine.ClearFaults();
    machine.FailCall(kind, 1, Repeat::kFromThenOn);
    const Outcome scan = ScanData();
    EXPECT_TRUE(machine.faults_injected() > 0 || kind == Call::kRemoveFile);
    machine.ClearFaults();
    CheckRound(scan);
  }
}

TEST_P(Cache, That_cannot_be_replaced_leaves_no_temporary_file) {
  for (const Call kind : {Call::kWriteTo, Call::kFlushFile, Call::kCloseFile, Call::kRenameFile}) {
    SCOPED_TRACE(simulated::NameOf(kind));
    Reset();
    machine.ClearFaults();
    machine.FailCall(kind, 1, Repeat::kFromThenOn);
    const Outcome scan = ScanData();
    EXPECT_GT(machine.faults_injected(), 0u);
    machine.ClearFaults();
    CheckRound(scan);
    EXPECT_EQ(machine.ContentOf(kCacheFile), before);
    EXPECT_FALSE(machine.Exists(kTemporaryFile));
  }
}

INSTANTIATE_TEST_SUITE_P(All, Cache, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& named) {
                           return named.param ? "warm" : "cold";
                         });

struct Obstacle {
  const char* name;
  void (*put)(SimulatedWindows& machine);
};
void PrintTo(const Obstacle& obstacle, std::ostream* out) {
  *out << obstacle.name;
}

class CacheObstacle : public ::testing::TestWithParam<Obstacle> {};

TEST_P(CacheObstacle, Changes_nothing_in_the_report_and_leaves_the_old_cache) {
  SimulatedWindows machine;
  AddTwoGroups(machine);
  const Outcome cold = ScanData();
  machine.AdvanceClock(1000);
  GetParam().put(machine);
  const std::string before = machine.Describe();
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(scan.rows, cold.rows);
  EXPECT_EQ(machine.Describe(), before);
}

INSTANTIATE_TEST_SUITE_P(
    All, CacheObstacle,
    ::testing::Values(
        Obstacle{"locked_by_another_process",
                 [](SimulatedWindows& machine) { machine.Lock(kCacheFile); }},
        Obstacle{"read_only_cache",
                 [](SimulatedWindows& machine) {
                   machine.SetAttributes(kCacheFile, platform::kAttributeReadOnly);
                 }},
        Obstacle{"folder_closed_to_new_files",
                 [](SimulatedWindows& machine) { machine.Deny(kCacheFolder, {.opening = true}); }},
        Obstacle{"folder_in_place_of_the_temporary_file",
                 [](SimulatedWindows& machine) { machine.AddFolder(kTemporaryFile); }},
        Obstacle{"folder_in_place_of_the_cache",
                 [](SimulatedWindows& machine) {
                   machine.Remove(kCacheFile);
                   machine.AddFolder(kCacheFile);
                 }},
        Obstacle{"file_in_place_of_the_cache_folder",
                 [](SimulatedWindows& machine) {
                   machine.Remove(kCacheFolder);
                   machine.AddFile(kCacheFolder, "in the way");
                 }}),
    [](const ::testing::TestParamInfo<Obstacle>& named) { return named.param.name; });

}  // namespace
}  // namespace quastel::duplicate_tests
