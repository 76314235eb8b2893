// Files that cannot be read, go away or change while they are compared: they drop out, and the scan
// goes on.

#include <atomic>
#include <initializer_list>
#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

constexpr std::size_t kSmall = 100;
constexpr std::size_t kLarge = 9000;

// At the opening of a file for one of the stages that it goes through.
struct Stage : support::NamedCase {
  std::size_t size;
  int opening;
};

const Stage kSample = {{"small_sample"}, kSmall, 1};
const Stage kHead = {{"head"}, kLarge, 1};
const Stage kTail = {{"tail"}, kLarge, 2};
const Stage kWhole = {{"whole"}, kLarge, 3};

struct Trouble : support::NamedCase {
  void (*make)(SimulatedWindows& machine, const Text& path, std::size_t size);
};

void DenyOpening(SimulatedWindows& machine, const Text& path, std::size_t) {
  machine.Deny(path, {.opening = true});
}
void LockByAnother(SimulatedWindows& machine, const Text& path, std::size_t) {
  machine.Lock(path);
}
void Vanish(SimulatedWindows& machine, const Text& path, std::size_t) {
  machine.Remove(path);
}
void FailReading(SimulatedWindows& machine, const Text&, std::size_t) {
  machine.ClearFaults();
  machine.FailCall(Call::kReadFrom, 1);
}
void FailSeeking(SimulatedWindows& machine, const Text&, std::size_t) {
  machine.ClearFaults();
  machine.FailCall(Call::kSeekTo, 1);
}
void ShrinkToNothing(SimulatedWindows& machine, const Text& path, std::size_t) {
  machine.SetContent(path, "");
}
void ShrinkByAByte(SimulatedWindows& machine, const Text& path, std::size_t size) {
  machine.SetContent(path, Bytes(size - 1));
}
void Grow(SimulatedWindows& machine, const Text& path, std::size_t size) {
  machine.SetContent(path, Bytes(size + 1));
}
void Change(SimulatedWindows& machine, const Text& path, std::size_t size) {
  machine.SetContent(path, Bytes(size, 77));
}

const Trouble kCannotBeOpened = {{"cannot_be_opened"}, DenyOpening};
const Trouble kIsLocked = {{"is_locked"}, LockByAnother};
const Trouble kVanishes = {{"vanishes"}, Vanish};
const Trouble kCannotBeRead = {{"cannot_be_read"}, FailReading};
const Trouble kCannotBePositioned = {{"cannot_be_positioned"}, FailSeeking};
const Trouble kShrinksToNothing = {{"shrinks_to_nothing"}, ShrinkToNothing};
const Trouble kShrinksByAByte = {{"shrinks_by_a_byte"}, ShrinkByAByte};
const Trouble kGrows = {{"grows"}, Grow};
const Trouble kChanges = {{"changes"}, Change};

struct DropOutCase {
  Stage stage;
  Trouble trouble;
};
void PrintTo(const DropOutCase& c, std::ostream* out) {
  *out << c.trouble.name << " at the " << c.stage.name;
}

class DropOut : public ::testing::TestWithParam<DropOutCase> {
 protected:
  DropOut() { machine_.SetProcessorCount(1); }

  void Add(std::initializer_list<char> names) {
    for (const char name : names) {
      machine_.AddFile(PathOf(name), Bytes(GetParam().stage.size));
    }
  }

  // Scans, with the trouble at the chosen opening of each of these files.
  Outcome ScanWithTrouble(std::string_view names) {
    std::map<Text, int> openings;
    int troubles = 0;
    machine_.SetHook([&](const CallRecord& call) {
      if (OpensCandidate(call) && ++openings[call.path] == GetParam().stage.opening &&
          names.find(static_cast<char>(call.path.back())) != std::string_view::npos) {
        ++troubles;
        GetParam().trouble.make(machine_, call.path, GetParam().stage.size);
      }
    });
    const Outcome scan = ScanData();
    machine_.SetHook(nullptr);
    EXPECT_EQ(troubles, static_cast<int>(names.size()));
    EXPECT_EQ(scan.status, QS_OK);
    EXPECT_EQ(scan.poll.state, QS_STATE_DONE);
    EXPECT_EQ(machine_.open_handles(), 0u);
    return scan;
  }

  static Text PathOf(char name) { return u"C:\\data\\" + Text(1, static_cast<Char>(name)); }

  SimulatedWindows machine_;
};

TEST_P(DropOut, Leaves_the_other_files_a_group) {
  Add({'a', 'b', 'c'});
  EXPECT_EQ(GroupsOf(ScanWithTrouble("b").rows), (Groups{{"C:\\data\\a", "C:\\data\\c"}}));
}

TEST_P(DropOut, Of_the_first_file_gives_the_group_the_name_of_the_next) {
  Add({'a', 'b', 'c'});
  const Outcome scan = ScanWithTrouble("a");
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\b", "C:\\data\\c"}}));
}

TEST_P(DropOut, Of_one_of_two_leaves_no_group) {
  Add({'a', 'b'});
  EXPECT_EQ(ScanWithTrouble("a").rows.size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    All, DropOut,
    ::testing::Values(DropOutCase{kSample, kCannotBeOpened}, DropOutCase{kSample, kIsLocked},
                      DropOutCase{kSample, kVanishes}, DropOutCase{kSample, kCannotBeRead},
                      DropOutCase{kSample, kShrinksToNothing},
                      DropOutCase{kSample, kShrinksByAByte}, DropOutCase{kSample, kGrows},
                      DropOutCase{kSample, kChanges}, DropOutCase{kHead, kCannotBeOpened},
                      DropOutCase{kHead, kIsLocked}, DropOutCase{kHead, kVanishes},
                      DropOutCase{kHead, kCannotBeRead}, DropOutCase{kHead, kShrinksToNothing},
                      DropOutCase{kHead, kShrinksByAByte}, DropOutCase{kHead, kGrows},
                      DropOutCase{kHead, kChanges}, DropOutCase{kTail, kCannotBeOpened},
                      DropOutCase{kTail, kIsLocked}, DropOutCase{kTail, kVanishes},
                      DropOutCase{kTail, kCannotBeRead}, DropOutCase{kTail, kCannotBePositioned},
                      DropOutCase{kTail, kShrinksToNothing}, DropOutCase{kTail, kShrinksByAByte},
                      DropOutCase{kTail, kGrows}, DropOutCase{kTail, kChanges},
                      DropOutCase{kWhole, kCannotBeOpened}, DropOutCase{kWhole, kIsLocked},
                      DropOutCase{kWhole, kVanishes}, DropOutCase{kWhole, kCannotBeRead},
                      DropOutCase{kWhole, kShrinksToNothing}, DropOutCase{kWhole, kShrinksByAByte},
                      DropOutCase{kWhole, kGrows}, DropOutCase{kWhole, kChanges}),
    [](const ::testing::TestParamInfo<DropOutCase>& named) {
      return std::string(named.param.stage.name) + "_" + named.param.trouble.name;
    });

// What is missing of several files is not the same in them.
class MissingText : public DropOut {};

TEST_P(MissingText, Never_equals_another_missing_text) {
  Add({'a', 'b', 'c', 'd'});
  EXPECT_EQ(GroupsOf(ScanWithTrouble("bd").rows), (Groups{{"C:\\data\\a", "C:\\data\\c"}}));
}

TEST_P(MissingText, Of_every_file_leaves_no_group) {
  Add({'a', 'b', 'c'});
  EXPECT_EQ(ScanWithTrouble("abc").rows.size(), 0u);
}

TEST_P(MissingText, Counts_neither_as_sampled_nor_as_hashed) {
  Add({'a', 'b', 'c'});
  const Outcome scan = ScanWithTrouble("b");
  EXPECT_EQ(scan.performance.candidates, 3u);
  // A file whose second look failed had a first one.
  EXPECT_EQ(scan.performance.sampled_items, GetParam().stage.opening == 1 ? 2u : 3u);
  EXPECT_EQ(scan.performance.hashed_items, GetParam().stage.size == kSmall ? 0u : 2u);
}

TEST_P(MissingText, Is_not_remembered) {
  Add({'a', 'b', 'c'});
  ScanWithTrouble("b");
  const CacheRecords cache = CacheOf(machine_);
  const bool sampled = GetParam().stage.opening == 3;
  ASSERT_EQ(cache.size(), sampled ? 3u : 2u);
  EXPECT_EQ(cache.front().key, u"c:\\data\\a");
  EXPECT_EQ(cache.back().key, u"c:\\data\\c");
  if (sampled) {
    EXPECT_EQ(cache[1].sample, SampleOf(Bytes(kLarge)));
    EXPECT_EQ(cache[1].hash, "");
  }
}

TEST_P(MissingText, Is_found_by_the_next_scan_when_the_trouble_is_over) {
  Add({'a', 'b', 'c'});
  ScanWithTrouble("b");
  machine_.ClearFaults();
  machine_.AddFile(PathOf('b'), Bytes(GetParam().stage.size));
  EXPECT_EQ(GroupsOf(ScanData().rows), (Groups{{"C:\\data\\a", "C:\\data\\b", "C:\\data\\c"}}));
}

INSTANTIATE_TEST_SUITE_P(
    All, MissingText,
    ::testing::Values(DropOutCase{kSample, kCannotBeOpened}, DropOutCase{kSample, kCannotBeRead},
                      DropOutCase{kHead, kCannotBeOpened}, DropOutCase{kHead, kCannotBeRead},
                      DropOutCase{kHead, kShrinksToNothing}, DropOutCase{kTail, kCannotBeOpened},
                      DropOutCase{kTail, kCannotBeRead}, DropOutCase{kTail, kShrinksByAByte},
                      DropOutCase{kWhole, kCannotBeOpened}, DropOutCase{kWhole, kCannotBeRead}),
    [](const ::testing::TestParamInfo<DropOutCase>& named) {
      return std::string(named.param.stage.name) + "_" + named.param.trouble.name;
    });

TEST(DropOuts, Of_a_read_in_the_middle_of_a_large_file_take_it_out) {
  constexpr std::uint64_t kBlock = 1'048'576;
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  for (const char16_t* path : {u"C:\\data\\a", u"C:\\data\\b", u"C:\\data\\c"}) {
    machine.AddSizedFile(path, 3 * kBlock + 1);
  }
  // Three heads and three tails, then the reads of the first file.
  for (const std::uint64_t read : std::initializer_list<std::uint64_t>{7, 8, 9, 10, 11}) {
    if (machine.Exists(u"C:\\Users")) {
      machine.Remove(u"C:\\Users");
    }
    machine.ClearFaults();
    machine.FailCall(Call::kReadFrom, read);
    const Outcome scan = ScanData();
    EXPECT_EQ(machine.faults_injected(), 1u);
    EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\b", "C:\\data\\c"}})) << read;
  }
}

TEST(DropOuts, Of_a_folder_that_vanishes_before_it_is_compared_leave_the_rest) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  for (const char16_t* path :
       {u"C:\\data\\a", u"C:\\data\\b", u"C:\\data\\gone\\c", u"C:\\data\\gone\\d"}) {
    machine.AddFile(path, Bytes(9000));
  }
  scan_tests::InsideCall(machine, Call::kVolumePathName, 1,
                         [&] { machine.Remove(u"C:\\data\\gone"); });
  const Outcome scan = ScanData();
  machine.SetHook(nullptr);
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\b"}}));
  EXPECT_EQ(scan.performance.candidates, 4u);
}

TEST(DropOuts, Of_a_folder_that_cannot_be_listed_leave_the_rest) {
  SimulatedWindows machine;
  machine.AddFile(u"C:\\data\\a", Bytes(9000));
  machine.AddFile(u"C:\\data\\b", Bytes(9000));
  machine.AddFile(u"C:\\data\\shut\\c", Bytes(9000));
  machine.Deny(u"C:\\data\\shut", {.listing = true});
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a", "C:\\data\\b"}}));
  EXPECT_EQ(scan.performance.candidates, 2u);
}

TEST(DropOuts, Without_a_read_buffer_leave_what_needs_none) {
  SimulatedWindows machine;
  machine.SetProcessorCount(1);
  for (const std::size_t size : std::initializer_list<std::size_t>{kSmall, kLarge}) {
    machine.AddFile(u"C:\\data\\a" + Wide(std::to_string(size)), Bytes(size));
    machine.AddFile(u"C:\\data\\b" + Wide(std::to_string(size)), Bytes(size));
  }
  // The thread of the last stage cannot keep its buffer.
  machine.FailCall(Call::kSetFiberValue, 1, simulated::Repeat::kFromThenOn);
  const Outcome scan = ScanData();
  EXPECT_EQ(scan.status, QS_OK);
  EXPECT_EQ(GroupsOf(scan.rows), (Groups{{"C:\\data\\a100", "C:\\data\\b100"}}));
  EXPECT_EQ(scan.performance.hashed_items, 0u);
  EXPECT_GT(machine.faults_injected(), 0u);
}

}  // namespace
}  // namespace quastel::duplicate_tests
