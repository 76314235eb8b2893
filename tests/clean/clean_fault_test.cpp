// A whole clean of each kind in which any one system call or allocation fails, once or from then
// on, or at any call of which the system dies.

#include <algorithm>
#include <functional>
#include <iostream>
#include <set>
#include <utility>

#include "clean/clean_fixture.h"
#include "faults/allocation_faults.h"

namespace quastel::clean_tests {
namespace {

using faults::AllocationFaults;

constexpr std::uint64_t kTooMany = 20'000;

// One machine for each round: a clean cannot be repeated.
class World {
 public:
  explicit World(std::uint32_t kind) : kind_(kind) {
    machine.AddDrive('D');
    machine.SetTimeZoneOffset(60);  // a time that could not be converted is another one
    const std::uint64_t size = FileSize();
    named_ = {u"C:\\t\\a",
              u"C:\\t\\a folder with a long name\\b",
              u"C:\\t\\s\\deeper\\c",
              u"C:\\t\\s\\d",
              u"C:\\t\\s\\read only",
              LongFolder() + u"\\e"};
    for (const Text& path : named_) {
      machine.AddSizedFile(path, size);
    }
    machine.SetAttributes(u"C:\\t\\s\\read only", platform::kAttributeReadOnly);
    machine.AddSizedFile(u"C:\\t\\kept", size);
    machine.AddSizedFile(u"C:\\precious\\a", size);
    machine.AddLink(LinkKind::kJunction, u"C:\\t\\junction", u"C:\\precious");
    machine.AddFile(kRulesPath, FolderRules({Text(kTree)}));
    Request request = kind == QS_SCAN_KIND_JUNK_RULES   ? JunkRequest()
                      : kind == QS_SCAN_KIND_DUPLICATES ? DuplicateRequest({Text(kTree)})
                                                        : Request::LargeFiles({Text(kTree)});
    EXPECT_EQ(scan.Start(request), QS_OK);
    for (const Row& row : scan_tests::ReadReport(scan)) {
      if (row.numbers.kind != QS_ROW_GROUP && row.name != u"kept") {
        ids.push_back(row.numbers.item_id);
      }
    }
    EXPECT_EQ(ids.size(), named_.size());
    before_ = Lines();
    machine.ClearFaults();
  }

  // The call of the library, and nothing but that.
  qs_status Do() { return qs_product_scan_start_clean(scan, ids.data(), ids.size()); }

  std::uint64_t FileSize() const { return kind_ == QS_SCAN_KIND_LARGE_FILES ? kLarge : 9; }

  // What holds after every round. A clean that failed before it ran has left no trace.
  void CheckAfter(qs_status status) {
    machine.ClearFaults();
    EXPECT_EQ(machine.open_handles(), 0u);
    const CleanBlock block = BlockOf(scan);
    Ids gone;
    for (const Row& row : scan_tests::ReadReport(scan)) {
      if (row.numbers.kind != QS_ROW_GROUP && !machine.Exists(row.path)) {
        gone.push_back(row.numbers.item_id);
        EXPECT_NE(row.name, u"kept");
      }
    }
    EXPECT_EQ(MarksOf(scan), gone) << "a mark stands for a file that went, and each one has it";
    EXPECT_EQ(block.deleted, gone.size());
    if (status == QS_FAILED && block.state == QS_STATE_IDLE) {
      EXPECT_EQ(block, CleanBlock{});
    } else {
      EXPECT_EQ(block,
                Ended(status, ids.size(), block.deleted, block.failed, block.deleted * FileSize()));
      EXPECT_LE(block.processed, ids.size());
    }
    CheckDisk();
    CleanTheRest(gone);
  }

  SimulatedWindows machine;
  ScanHandle scan;
  Ids ids;

 private:
  static Text LongFolder() { return support::NestedTo(280, u"C:\\t\\l"); }

  std::set<std::string> Lines() const {
    std::set<std::string> lines;
    const std::string text = machine.Describe();
    for (std::size_t begin = 0; begin < text.size();) {
      const std::size_t end = text.find('\n', begin);
      lines.insert(text.substr(begin, end - begin));
      begin = end + 1;
    }
    return lines;
  }

  // Only named files have gone, and of a junk clean the folders that they were in.
  void CheckDisk() const {
    std::set<std::string> allowed;
    for (const Text& path : named_) {
      allowed.insert(Utf8(path));
      if (kind_ == QS_SCAN_KIND_JUNK_RULES) {
        allowed.insert(Utf8(path.substr(0, path.rfind(u'\\'))));
      }
    }
    const std::set<std::string> now = Lines();
    for (const std::string& line : before_) {
      const bool may_go = allowed.count(line.substr(0, line.find(" file "))) == 1 ||
                          allowed.count(line.substr(0, line.find(" folder size"))) == 1;
      EXPECT_TRUE(now.count(line) == 1 || may_go) << line;
    }
    for (const std::string& line : now) {
      EXPECT_EQ(before_.count(line), 1u) << line;
    }
    EXPECT_TRUE(machine.Exists(u"C:\\t\\kept"));
    EXPECT_TRUE(machine.Exists(u"C:\\precious\\a"));
  }

  void CleanTheRest(const Ids& gone) {
    machine.SetAttributes(u"C:\\t\\s\\read only", platform::kAttributeArchive);
    Ids rest;
    for (const std::uint64_t id : ids) {
      if (std::find(gone.begin(), gone.end(), id) == gone.end()) {
        rest.push_back(id);
      }
    }
    EXPECT_EQ(Clean(scan, rest), QS_OK);
    EXPECT_EQ(BlockOf(scan).deleted, rest.size());
    for (const Text& path : named_) {
      EXPECT_FALSE(machine.Exists(path)) << Utf8(path);
    }
    CheckDisk();
  }

  const std::uint32_t kind_;
  Paths named_;
  std::set<std::string> before_;
};

class CleanFaults : public ::testing::TestWithParam<KindCase> {
 protected:
  static constexpr std::uint64_t kNamed = 6;
  // One is read-only.
  static constexpr std::uint64_t kDeletable = 5;
  using Arm = std::function<void(SimulatedWindows& machine, std::uint64_t nth)>;
  using Check = std::function<void(World& world, qs_status status)>;

  std::uint64_t SweepCalls(const Arm& arm, const Check& check) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("call " + std::to_string(nth));
      World world(GetParam().kind);
      arm(world.machine, nth);
      const qs_status status = world.Do();
      const bool met = world.machine.faults_injected() > 0;
      check(world, status);
      if (!met) {
        EXPECT_EQ(BlockOf(world.scan).deleted, kDeletable);
      }
      world.CheckAfter(status);
      if (HasFailure() || !met) {
        return nth - 1;
      }
    }
    ADD_FAILURE() << "the sweep does not end";
    return kTooMany;
  }

  // A clean that was not cancelled has tried every file.
  static void CheckComplete(World& world, qs_status status) {
    const CleanBlock block = BlockOf(world.scan);
    EXPECT_EQ(block.processed, kNamed);
    EXPECT_EQ(status, block.deleted == 0 ? QS_FAILED : QS_OK);
  }

  static void Report(std::uint64_t rounds, std::uint64_t fewest) {
    EXPECT_GE(rounds, fewest) << "the sweep has missed something";
    std::cout << "[  rounds  ] " << rounds << std::endl;
  }

  std::uint64_t fewest_calls() const {
    return GetParam().kind == QS_SCAN_KIND_JUNK_RULES ? 120 : 80;
  }
};

TEST_P(CleanFaults, Each_call_that_fails_once_costs_one_file_at_the_most) {
  Report(
      SweepCalls([](auto& machine, std::uint64_t nth) { machine.FailAnyCall(nth, Repeat::kOnce); },
                 [](World& world, qs_status status) {
                   CheckComplete(world, status);
                   EXPECT_GE(BlockOf(world.scan).deleted, kDeletable - 1);
                 }),
      fewest_calls());
}

TEST_P(CleanFaults, Every_call_that_fails_from_one_on_leaves_what_was_deleted_before) {
  std::set<std::uint64_t> counts;
  Report(SweepCalls([](auto& machine,
                       std::uint64_t nth) { machine.FailAnyCall(nth, Repeat::kFromThenOn); },
                    [&](World& world, qs_status status) {
                      CheckComplete(world, status);
                      counts.insert(BlockOf(world.scan).deleted);
                    }),
         fewest_calls());
  EXPECT_EQ(counts.size(), kDeletable + 1) << "0, 1, 2, ... files";
}

TEST_P(CleanFaults, When_the_system_dies_at_any_call_only_named_files_are_gone) {
  std::set<std::uint64_t> counts;
  Report(SweepCalls([](auto& machine, std::uint64_t nth) { machine.CrashAtCall(nth); },
                    [&](World& world, qs_status status) {
                      CheckComplete(world, status);
                      counts.insert(BlockOf(world.scan).deleted);
                    }),
         fewest_calls());
  EXPECT_EQ(counts.size(), kDeletable + 1);
}

TEST_P(CleanFaults, A_cancel_stays_one_whatever_else_fails) {
  // It comes when the third file's facts are asked for, if the clean gets that far.
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t cancelled_rounds = 0;
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE("call " + std::to_string(nth));
      World world(GetParam().kind);
      world.machine.FailAnyCall(nth, repeat);
      std::uint64_t facts = 0;
      world.machine.SetHook([&](const CallRecord& call) {
        if (call.call == Call::kQueryFileFacts && ++facts == 3) {
          EXPECT_EQ(qs_product_scan_cancel_clean(world.scan), QS_OK);
        }
      });
      const qs_status status = world.Do();
      world.machine.SetHook(nullptr);
      const bool met = world.machine.faults_injected() > 0;
      if (facts >= 3) {
        ++cancelled_rounds;
        EXPECT_EQ(status, QS_CANCELLED);
        EXPECT_LE(BlockOf(world.scan).processed, 4u) << "one may have failed before its facts";
      } else {
        CheckComplete(world, status);
      }
      world.CheckAfter(status);
      if (HasFailure() || !met) {
        break;
      }
    }
    EXPECT_GE(cancelled_rounds, repeat == Repeat::kOnce ? 20u : 5u);
  }
}

class CleanMemory : public CleanFaults {
 protected:
  struct Round {
    qs_status status = QS_OK;
    std::uint64_t injected = 0;
  };

  static Round DoWith(World& world, std::uint64_t nth, Repeat repeat) {
    Round round;
    AllocationFaults faults(nth, repeat);
    round.status = world.Do();
    round.injected = faults.injected();
    return round;
  }
};

TEST_P(CleanMemory, Its_lack_at_any_allocation_ends_the_clean_or_fails_a_file) {
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    std::uint64_t nth = 1;
    std::uint64_t before_it_ran = 0;
    std::uint64_t failed_in_between = 0;
    for (; nth < kTooMany; ++nth) {
      SCOPED_TRACE("allocation " + std::to_string(nth) +
                   (repeat == Repeat::kOnce ? " once" : " from then on"));
      World world(GetParam().kind);
      const Round round = DoWith(world, nth, repeat);
      const CleanBlock block = BlockOf(world.scan);
      if (round.injected == 0) {
        EXPECT_EQ(round.status, QS_OK);
        EXPECT_EQ(block, Ended(QS_OK, kNamed, kDeletable, 1, kDeletable * world.FileSize()));
        break;
      }
      EXPECT_TRUE(round.status == QS_OK || round.status == QS_FAILED) << round.status;
      if (round.status == QS_OK) {
        EXPECT_EQ(block.processed, kNamed) << "a success has tried every file";
        EXPECT_GT(block.deleted, 0u);
      } else if (block.state == QS_STATE_IDLE) {
        ++before_it_ran;
      } else {
        ++failed_in_between;
      }
      world.CheckAfter(round.status);
      if (HasFailure()) {
        return;
      }
    }
    Report(nth - 1, 10);
    EXPECT_GT(before_it_ran, 0u) << "the tables of a request need memory";
    EXPECT_TRUE(repeat == Repeat::kOnce || failed_in_between > 0);
  }
}

TEST_P(CleanMemory, Its_lack_after_a_cancel_ends_the_clean_as_cancelled) {
  std::uint64_t cancelled_rounds = 0;
  std::uint64_t nth = 1;
  for (; nth < kTooMany; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    World world(GetParam().kind);
    bool cancelled = false;
    world.machine.SetHook([&](const CallRecord& call) {
      if (call.call == Call::kFullPathName && !cancelled) {
        cancelled = true;
        EXPECT_EQ(qs_product_scan_cancel_clean(world.scan), QS_OK);
      }
    });
    const Round round = DoWith(world, nth, Repeat::kFromThenOn);
    world.machine.SetHook(nullptr);
    if (round.injected == 0) {
      EXPECT_EQ(round.status, QS_CANCELLED);
      break;
    }
    if (cancelled) {
      ++cancelled_rounds;
      EXPECT_EQ(round.status, QS_CANCELLED);
      EXPECT_EQ(BlockOf(world.scan).state, QS_STATE_CANCELLED);
    } else {
      EXPECT_EQ(round.status, QS_FAILED);
    }
    world.CheckAfter(round.status);
    if (HasFailure()) {
      return;
    }
  }
  Report(nth - 1, 5);
  EXPECT_GT(cancelled_rounds, 0u);
}

TEST_P(CleanMemory, Is_not_needed_by_polls_and_cancels) {
  World world(GetParam().kind);
  EXPECT_EQ(world.Do(), QS_OK);
  qs_product_clean_detail detail = {};
  detail.size = sizeof(detail);
  qs_product_clean_status status = {};
  qs_status answers[3] = {};
  std::uint64_t allocations = 99;
  {
    AllocationFaults faults(1, Repeat::kFromThenOn);
    answers[0] = qs_product_scan_poll_clean_detailed(world.scan, &detail);
    answers[1] = qs_product_scan_poll_clean(world.scan, &status);
    answers[2] = qs_product_scan_cancel_clean(world.scan);
    allocations = faults.allocations();
  }
  EXPECT_EQ(answers[0], QS_OK);
  EXPECT_EQ(answers[1], QS_OK);
  EXPECT_EQ(answers[2], QS_OK);
  EXPECT_EQ(allocations, 0u);
  EXPECT_EQ(detail.deleted, kDeletable);
  EXPECT_EQ(status.processed, kNamed);
}

INSTANTIATE_TEST_SUITE_P(Of, CleanFaults, ::testing::ValuesIn(kKinds), support::CaseName());
INSTANTIATE_TEST_SUITE_P(Of, CleanMemory, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
