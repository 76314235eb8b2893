// Another process acts between two calls of a deletion.
//
// Looking at an item and removing it are separate steps, and nothing is locked between them. These
// tests play the other process before every single call and state what holds all the same: what
// changes before the last look at it is seen, what goes is the one thing that the path names at
// that moment, and what a link leads to is out of reach when the link stands in the item's place.
// A folder above the item that becomes a junction behind its last look leads the removal astray;
// the tests say exactly from which call on.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fs/deletion_fixture.h"

namespace quastel::deletion_tests {
namespace {

const Text kItem = u"C:\\d\\sub\\f";
constexpr std::size_t kNever = static_cast<std::size_t>(-1);

void Clear(SimulatedWindows& windows, TextView path) {
  if (windows.Exists(path)) {
    windows.Remove(path);
  }
}

// The item, its neighbours, and two places elsewhere that look exactly alike.
void Furnish(SimulatedWindows& windows) {
  for (const Char* folder : {u"C:\\d\\sub", u"C:\\other", u"C:\\third\\sub"}) {
    windows.AddFile(Text(folder) + u"\\f", "hello");
    windows.AddFile(Text(folder) + u"\\f.txt", "hello");
    windows.AddFile(Text(folder) + u"\\g", "hello");
  }
  windows.AddFolder(u"C:\\empty");
}

// The places in the list of calls that decide. The other process acts before the call with the
// number n: a look is in time for what happened up to its own number.
struct Marks {
  std::size_t facts = kNever;  // the comparison with the snapshot
  std::size_t grandparent = kNever;
  std::size_t parent = kNever;
  std::size_t item = kNever;
};

struct Change : support::NamedCase {
  void (*apply)(SimulatedWindows& windows);
  // What goes when the change comes before call n of a permanent deletion.
  Lines (*gone)(std::size_t n, const Marks& marks);
};

bool Behind(std::size_t n, std::size_t look) {
  return look != kNever && n > look;
}
// The comparison of a guarded deletion has passed; an unguarded one has none to pass.
bool PastFacts(std::size_t n, const Marks& marks) {
  return marks.facts == kNever || n > marks.facts;
}
Lines Item(bool gone) {
  return gone ? Lines{"C:\\d\\sub\\f"} : Lines{};
}

const Change kFileChanges[] = {
    {{"The_file_grows"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddFile(kItem, "hello again");
     },
     [](std::size_t n, const Marks& m) { return Item(PastFacts(n, m)); }},
    {{"The_file_is_written_at_another_time"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddFile(kItem, "HELLO", {.last_write = kUsualTime + 1});
     },
     [](std::size_t n, const Marks& m) { return Item(PastFacts(n, m)); }},
    {{"The_file_vanishes"},
     [](SimulatedWindows& w) { Clear(w, kItem); },
     [](std::size_t, const Marks&) { return Lines{}; }},
    {{"An_empty_folder_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddFolder(kItem);
     },
     // Behind the last look the call for files meets a folder.
     [](std::size_t n, const Marks& m) { return Item(PastFacts(n, m) && !Behind(n, m.item)); }},
    {{"A_folder_with_a_file_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddFile(kItem + u"\\precious", "hello");
     },
     [](std::size_t, const Marks&) { return Lines{}; }},
    {{"A_junction_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddLink(LinkKind::kJunction, kItem, u"C:\\other");
     },
     [](std::size_t, const Marks&) { return Lines{}; }},
    {{"A_junction_to_an_empty_folder_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddLink(LinkKind::kJunction, kItem, u"C:\\empty");
     },
     [](std::size_t, const Marks&) { return Lines{}; }},
    {{"A_link_to_a_file_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddLink(LinkKind::kFileLink, kItem, u"C:\\other\\f");
     },
     // The link itself goes, not what it leads to.
     [](std::size_t n, const Marks& m) { return Item(Behind(n, m.item)); }},
    {{"A_placeholder_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddPlaceholder(kItem, 5);
     },
     [](std::size_t n, const Marks& m) { return Item(Behind(n, m.item)); }},
    {{"The_parent_becomes_a_junction"},
     [](SimulatedWindows& w) {
       Clear(w, u"C:\\d\\sub");
       w.AddLink(LinkKind::kJunction, u"C:\\d\\sub", u"C:\\other");
     },
     [](std::size_t n, const Marks& m) {
       return Behind(n, m.parent) ? Lines{"C:\\other\\f"} : Lines{};
     }},
    {{"The_parent_becomes_a_link_to_a_folder"},
     [](SimulatedWindows& w) {
       Clear(w, u"C:\\d\\sub");
       w.AddLink(LinkKind::kFolderLink, u"C:\\d\\sub", u"C:\\other");
     },
     [](std::size_t n, const Marks& m) {
       return Behind(n, m.parent) ? Lines{"C:\\other\\f"} : Lines{};
     }},
    {{"The_grandparent_becomes_a_junction"},
     [](SimulatedWindows& w) {
       Clear(w, u"C:\\d");
       w.AddLink(LinkKind::kJunction, u"C:\\d", u"C:\\third");
     },
     [](std::size_t n, const Marks& m) {
       return Behind(n, m.grandparent) ? Lines{"C:\\third\\sub\\f"} : Lines{};
     }},
    {{"The_parent_becomes_a_file"},
     [](SimulatedWindows& w) {
       Clear(w, u"C:\\d\\sub");
       w.AddFile(u"C:\\d\\sub", "hello");
     },
     [](std::size_t, const Marks&) { return Lines{}; }},
};

// The item is an empty folder at first.
const Change kFolderChanges[] = {
    {{"A_file_comes_into_it"},
     [](SimulatedWindows& w) { w.AddFile(kItem + u"\\precious", "hello"); },
     [](std::size_t, const Marks&) { return Lines{}; }},
    {{"A_file_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddFile(kItem, "hello");
     },
     [](std::size_t n, const Marks& m) { return Item(!Behind(n, m.item)); }},
    {{"A_junction_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddLink(LinkKind::kJunction, kItem, u"C:\\other");
     },
     // The junction itself goes, not what it leads to.
     [](std::size_t n, const Marks& m) { return Item(Behind(n, m.item)); }},
    {{"A_link_to_a_file_takes_its_place"},
     [](SimulatedWindows& w) {
       Clear(w, kItem);
       w.AddLink(LinkKind::kFileLink, kItem, u"C:\\other\\f");
     },
     [](std::size_t, const Marks&) { return Lines{}; }},
    {{"It_vanishes"},
     [](SimulatedWindows& w) { Clear(w, kItem); },
     [](std::size_t, const Marks&) { return Lines{}; }},
};

struct RaceOutcome {
  bool changed = false;  // call n was made
  std::int32_t answer = 0;
  Lines gone;  // since the change
  Lines added;
  Lines bin;
  std::vector<Text> recycled_after;
};

// One run on a machine of its own, with a change before call n (from 0).
RaceOutcome RunWithChange(const Export& deletion, void (*furnish)(SimulatedWindows&),
                          void (*change)(SimulatedWindows&), std::size_t n) {
  SimulatedWindows windows;
  Furnish(windows);
  furnish(windows);
  RaceOutcome outcome;
  Lines disk = DiskOf(windows);
  std::size_t calls = 0;
  std::size_t in_bin = 0;
  windows.SetHook([&](const simulated::CallRecord&) {
    if (calls++ == n) {
      change(windows);
      disk = DiskOf(windows);
      in_bin = windows.recycled().size();
      outcome.changed = true;
    }
  });
  outcome.answer = deletion.run(kItem.c_str(), {5, TicksFor(kUsualTime)});
  windows.SetHook(nullptr);
  EXPECT_EQ(windows.open_handles(), 0u);
  outcome.gone = PathsIn(GoneSince(disk, windows));
  outcome.added = NewSince(disk, windows);
  const std::vector<Text> bin = windows.recycled();
  outcome.bin = Utf8(bin);
  outcome.recycled_after.assign(bin.begin() + static_cast<std::ptrdiff_t>(in_bin), bin.end());
  return outcome;
}

Lines UndisturbedCalls(const Export& deletion, void (*furnish)(SimulatedWindows&)) {
  SimulatedWindows windows;
  Furnish(windows);
  furnish(windows);
  windows.SetRecording(true);
  EXPECT_EQ(deletion.run(kItem.c_str(), {5, TicksFor(kUsualTime)}), 1) << deletion.name;
  return CallsMade(windows);
}

// The last look at each thing before the removal or the shell.
Marks MarksIn(const Lines& calls) {
  Marks marks;
  for (std::size_t n = 0; n < calls.size() && calls[n] != "InitializeCom"; ++n) {
    const std::string& call = calls[n];
    if (call == "QueryFileFacts C:\\d\\sub\\f") {
      marks.facts = n;
    } else if (call == "QueryAttributes C:\\d") {
      marks.grandparent = n;
    } else if (call == "QueryAttributes C:\\d\\sub") {
      marks.parent = n;
    } else if (call == "QueryAttributes C:\\d\\sub\\f") {
      marks.item = n;
    }
  }
  return marks;
}

void NothingMore(SimulatedWindows&) {}
void ItemIsAnEmptyFolder(SimulatedWindows& windows) {
  windows.Remove(kItem);
  windows.AddFolder(kItem);
}
void OperationsAreAborted(SimulatedWindows& windows) {
  windows.SetOperationsAborted(true);
}

// ---- For good

void ExpectExactlyWhatIsOpen(const Export& deletion, void (*furnish)(SimulatedWindows&),
                             const Change& change) {
  const Lines calls = UndisturbedCalls(deletion, furnish);
  const Marks marks = MarksIn(calls);
  ASSERT_NE(marks.item, kNever);
  ASSERT_NE(marks.parent, kNever);
  ASSERT_NE(marks.grandparent, kNever);
  ASSERT_EQ(marks.facts != kNever, deletion.guarded);
  for (std::size_t n = 0; n < calls.size(); ++n) {
    SCOPED_TRACE(std::string(deletion.name) + ", before " + calls[n]);
    const RaceOutcome outcome = RunWithChange(deletion, furnish, change.apply, n);
    ASSERT_TRUE(outcome.changed);
    const Lines expected = change.gone(n, marks);
    EXPECT_EQ(outcome.gone, expected);
    EXPECT_EQ(outcome.answer, expected.empty() ? 0 : 1);
    EXPECT_EQ(outcome.added, Lines{});
    EXPECT_EQ(outcome.bin, Lines{});
  }
}

class FileRace : public ::testing::TestWithParam<Change> {};
INSTANTIATE_TEST_SUITE_P(All, FileRace, ::testing::ValuesIn(kFileChanges), support::CaseName());

TEST_P(FileRace, A_permanent_deletion_takes_no_more_than_its_windows_allow) {
  ExpectExactlyWhatIsOpen(kDeletePermanently, NothingMore, GetParam());
}

TEST_P(FileRace, A_guarded_deletion_takes_no_more_than_its_windows_allow) {
  ExpectExactlyWhatIsOpen(kDeleteSnapshotPermanently, NothingMore, GetParam());
}

class FolderRace : public ::testing::TestWithParam<Change> {};
INSTANTIATE_TEST_SUITE_P(All, FolderRace, ::testing::ValuesIn(kFolderChanges), support::CaseName());

TEST_P(FolderRace, A_permanent_deletion_takes_no_more_than_its_windows_allow) {
  ExpectExactlyWhatIsOpen(kDeletePermanently, ItemIsAnEmptyFolder, GetParam());
}

TEST_P(FolderRace, A_move_to_the_bin_takes_no_more_than_its_windows_allow) {
  // Before the last look a file in the folder's place is still seen, and goes into the bin.
  if (std::string(GetParam().name) != "A_file_takes_its_place") {
    ExpectExactlyWhatIsOpen(kMoveToRecycleBin, ItemIsAnEmptyFolder, GetParam());
    return;
  }
  const Lines calls = UndisturbedCalls(kMoveToRecycleBin, ItemIsAnEmptyFolder);
  const Marks marks = MarksIn(calls);
  for (std::size_t n = 0; n < calls.size(); ++n) {
    const RaceOutcome outcome =
        RunWithChange(kMoveToRecycleBin, ItemIsAnEmptyFolder, GetParam().apply, n);
    EXPECT_EQ(outcome.gone, Item(!Behind(n, marks.item)));
    EXPECT_EQ(outcome.bin, outcome.gone);
    EXPECT_EQ(outcome.answer, outcome.gone.empty() ? 0 : 1);
  }
}

TEST(Race, A_file_that_becomes_read_only_or_comes_into_use_stays) {
  for (const Export& deletion : {kDeletePermanently, kDeleteSnapshotPermanently}) {
    const std::size_t calls = UndisturbedCalls(deletion, NothingMore).size();
    for (std::size_t n = 0; n < calls; ++n) {
      const RaceOutcome read_only = RunWithChange(
          deletion, NothingMore,
          [](SimulatedWindows& w) { w.SetAttributes(kItem, platform::kAttributeReadOnly); }, n);
      EXPECT_EQ(read_only.answer, 0) << n;
      EXPECT_EQ(read_only.gone, Lines{}) << n;
      const RaceOutcome in_use = RunWithChange(
          deletion, NothingMore, [](SimulatedWindows& w) { w.Lock(kItem, 0); }, n);
      EXPECT_EQ(in_use.answer, 0) << n;
      EXPECT_EQ(in_use.gone, Lines{}) << n;
    }
  }
}

// ---- Into the bin

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

// Whatever the shell is led to, it is what the path names at that moment, and it can be had back.
void ExpectOnlyTheNamed(const Export& deletion, void (*furnish)(SimulatedWindows&),
                        const Change& change) {
  const Lines calls = UndisturbedCalls(deletion, furnish);
  const Marks marks = MarksIn(calls);
  ASSERT_NE(marks.item, kNever);
  for (std::size_t n = 0; n < calls.size(); ++n) {
    SCOPED_TRACE(std::string(deletion.name) + ", before " + calls[n]);
    const RaceOutcome outcome = RunWithChange(deletion, furnish, change.apply, n);
    ASSERT_TRUE(outcome.changed);
    EXPECT_EQ(outcome.added, Lines{});

    // Until the last look at the item, what a permanent deletion may take is what the bin gets.
    const Lines open = change.gone(n, marks);
    if (n <= marks.item) {
      EXPECT_EQ(outcome.gone, open);
      EXPECT_EQ(outcome.answer, open.empty() ? 0 : 1);
    }
    const bool astray = !open.empty() && open[0] != "C:\\d\\sub\\f";
    for (const std::string& path : outcome.gone) {
      const bool is_named = path == "C:\\d\\sub\\f" || StartsWith(path, "C:\\d\\sub\\f\\");
      EXPECT_TRUE(is_named || (astray && path == open[0])) << path;
      // An empty folder that was there at the last look goes for good; all else is in the bin.
      bool in_bin = false;
      for (const Text& recycled : outcome.recycled_after) {
        in_bin = in_bin || path == Utf8(recycled) || StartsWith(path, Utf8(recycled) + "\\");
      }
      EXPECT_TRUE(in_bin || (n <= marks.item && outcome.gone.size() == 1)) << path;
    }
  }
}

TEST_P(FileRace, A_move_to_the_bin_takes_nothing_but_what_the_path_names) {
  ExpectOnlyTheNamed(kMoveToRecycleBin, NothingMore, GetParam());
}

TEST_P(FileRace, A_guarded_move_to_the_bin_takes_nothing_but_what_the_path_names) {
  ExpectOnlyTheNamed(kMoveSnapshotToRecycleBin, NothingMore, GetParam());
}

TEST_P(FileRace, The_second_way_to_the_bin_takes_nothing_but_what_the_path_names) {
  ExpectOnlyTheNamed(kMoveToRecycleBin, OperationsAreAborted, GetParam());
  ExpectOnlyTheNamed(kMoveSnapshotToRecycleBin, OperationsAreAborted, GetParam());
}

// ---- The comparison alone

TEST_P(FileRace, A_comparison_changes_nothing_whatever_happens_meanwhile) {
  const Lines calls = UndisturbedCalls(kFileMatchesSnapshot, NothingMore);
  const std::size_t facts = MarksIn(calls).facts;
  ASSERT_NE(facts, kNever);
  for (std::size_t n = 0; n < calls.size(); ++n) {
    const RaceOutcome outcome =
        RunWithChange(kFileMatchesSnapshot, NothingMore, GetParam().apply, n);
    EXPECT_EQ(outcome.gone, Lines{});
    EXPECT_EQ(outcome.added, Lines{});
    if (n > facts) {
      EXPECT_EQ(outcome.answer, 1) << "what was asked is what counts";
    } else if (GetParam().name[0] != 'T' || StartsWith(GetParam().name, "The_file")) {
      EXPECT_EQ(outcome.answer, 0) << GetParam().name << " before " << calls[n];
    }
  }
}

}  // namespace
}  // namespace quastel::deletion_tests
