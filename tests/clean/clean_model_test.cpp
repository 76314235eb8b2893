// Random trees, scans, changes and selections, against a model that knows nothing but the rules:
// what was selected, is unchanged and is reached without a link is gone, and everything else is as
// it was, byte for byte.

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "clean/clean_fixture.h"
#include "clean/clean_prediction.h"
#include "clean/random_world.h"
#include "support/instrumented.h"

namespace quastel::clean_tests {
namespace {

// An instrumented build does a sixth of the rounds: it is about ten times as slow.
constexpr std::uint32_t kRounds = support::Rounds(3'000, 500);

// What the disk shows.
using Disk = std::map<std::string, std::string>;  // by path

Disk DiskOf(const SimulatedWindows& machine) {
  Disk disk;
  const std::string text = machine.Describe();
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find('\n', begin);
    const std::string line = text.substr(begin, end - begin);
    disk[line.substr(0, line.find(' '))] = line;
    begin = end + 1;
  }
  return disk;
}

struct Tally {
  std::uint64_t deleted = 0, failed = 0, folders = 0, refused = 0, events = 0;
  std::uint64_t statuses[8] = {};
};

class CleanModel : public ::testing::TestWithParam<KindCase> {
 protected:
  std::uint32_t kind() const { return GetParam().kind; }

  Ids SomeIds(const std::vector<Row>& rows, Random& random) {
    Ids ids;
    const std::uint32_t share = 1 + random.Below(4);
    for (const Row& row : rows) {
      if (row.numbers.kind != QS_ROW_GROUP && row.numbers.deleted == 0 && random.Below(4) < share) {
        ids.push_back(row.numbers.item_id);
      }
    }
    random.Shuffle(ids);
    if (kind() == QS_SCAN_KIND_DUPLICATES && !random.OneIn(4)) {
      SpareOneOfEachSet(rows, ids);
    }
    if (!ids.empty() && random.OneIn(30)) {
      const std::uint64_t bad[] = {ids[0], rows.size(), QS_NO_ITEM_ID};
      ids.insert(ids.begin() + random.Below(static_cast<std::uint32_t>(ids.size())),
                 bad[random.Below(3)]);
    }
    return ids;
  }

  static void SpareOneOfEachSet(const std::vector<Row>& rows, Ids& ids) {
    std::map<std::uint64_t, std::uint64_t> last;
    for (const Row& row : rows) {
      if (row.numbers.deleted == 0) {
        last[row.numbers.group_id] = row.numbers.item_id;
      }
    }
    for (const auto& [group, id] : last) {
      std::erase(ids, id);
    }
  }

  std::vector<Event> SomeEvents(const Maker& maker, std::size_t files, Random& random) {
    std::vector<Event> events;
    const Paths paths = maker.Below(kTree, false);
    for (std::uint32_t n = random.OneIn(3) ? random.Below(4) : 0; n > 0 && !paths.empty(); --n) {
      Event event;
      event.after = random.Below(static_cast<std::uint32_t>(files) + 1);
      event.path = random.OneOf(paths);
      if (random.OneIn(3)) {
        event.what = Event::kAppears;
        event.path = FolderOf(event.path) + u"\\newcomer" + Wide(std::to_string(n));
      } else {
        event.what = random.OneIn(2) ? Event::kVanishes : Event::kIsTouched;
      }
      events.push_back(event);
    }
    return events;
  }

  static void Play(World& world, const Event& event) {
    SimulatedWindows& machine = world.machine;
    switch (event.what) {
      case Event::kVanishes:
        if (machine.Exists(event.path)) {
          machine.Remove(event.path);
        }
        break;
      case Event::kIsTouched:
        if (machine.Exists(event.path)) {
          machine.SetLastWrite(event.path, 1);
        }
        break;
      default:
        if (machine.Exists(FolderOf(event.path))) {
          machine.AddFile(event.path, "new");
        }
        break;
    }
  }

  void CleanOnce(World& world, Maker& maker, qs_product_scan* scan, Random& random, Tally& tally) {
    const std::vector<Row> rows = scan_tests::ReadReport(scan);
    const Ids ids = SomeIds(rows, random);
    const std::vector<Event> events = SomeEvents(maker, ids.size(), random);
    const std::optional<Prediction> prediction = Model(world, rows, kind()).Predict(ids, events);
    const CleanBlock block_before = BlockOf(scan);
    Disk expected = DiskOf(world.machine);

    std::vector<bool> played(events.size());
    if (!events.empty()) {
      world.machine.SetHook([&](const CallRecord&) {
        const std::uint64_t processed = DetailOf(scan).processed;
        for (std::size_t i = 0; i < events.size(); ++i) {
          if (!played[i] && events[i].after == processed) {
            played[i] = true;
            Play(world, events[i]);
            ++tally.events;
          }
        }
      });
    }
    const qs_status status = Clean(scan, ids);
    world.machine.SetHook(nullptr);
    maker.ForgetWhatIsGone();
    const Disk disk = DiskOf(world.machine);
    ++tally.statuses[status];
    ASSERT_EQ(world.machine.open_handles(), 0u);
    if (!prediction) {
      ASSERT_EQ(status, QS_INVALID_ARGUMENT);
      ASSERT_EQ(disk, expected);
      ASSERT_EQ(BlockOf(scan), block_before);
      ASSERT_EQ(scan_tests::ReadReport(scan), rows);
      ++tally.refused;
      return;
    }
    ASSERT_EQ(status, prediction->status);
    ASSERT_EQ(BlockOf(scan), prediction->block);

    // The report is as before, but for the marks.
    std::vector<Row> marked = rows;
    for (Row& row : marked) {
      if (prediction->marks.count(row.numbers.item_id) == 1) {
        row.numbers.deleted = 1;
      }
    }
    ASSERT_EQ(scan_tests::ReadReport(scan), marked);

    // And so is the disk, but for what the clean removed and what happened meanwhile.
    Disk now = disk;
    for (const std::string& path : prediction->removed) {
      ASSERT_EQ(expected.count(path), 1u) << path;
      expected.erase(path);
      ASSERT_EQ(now.count(path), 0u) << path;
    }
    std::set<std::string> vanished;
    for (std::size_t i = 0; i < events.size(); ++i) {
      if (played[i] && events[i].what == Event::kVanishes) {
        vanished.insert(Utf8(events[i].path));
      }
    }
    for (std::size_t i = 0; i < events.size(); ++i) {
      const std::string path = Utf8(events[i].path);
      if (!played[i]) {
        continue;
      }
      if (events[i].what == Event::kIsTouched && vanished.count(path) == 0) {
        ASSERT_EQ(now.count(path), expected.count(path)) << path;
      }
      expected.erase(path);
      now.erase(path);
    }
    ASSERT_EQ(now, expected);
    tally.deleted += prediction->block.deleted;
    tally.failed += prediction->block.failed;
    tally.folders += prediction->folders;
  }
};

TEST_P(CleanModel, What_was_selected_and_is_unchanged_is_gone_and_all_else_is_as_it_was) {
  Tally tally;
  for (std::uint32_t seed = 1; seed <= kRounds / 3; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed * 4 + kind());
    World world;
    Maker maker(world, random, kind());
    maker.Furnish();
    ScanHandle scan;
    ASSERT_EQ(scan.Start(maker.ScanRequest()), QS_OK);
    for (std::uint32_t n = random.Below(12); n > 0; --n) {
      maker.Change();
    }
    CleanOnce(world, maker, scan, random, tally);
    if (HasFatalFailure()) {
      return;
    }
    // What was in the way goes away, or something else comes; then the rest.
    if (random.OneIn(2)) {
      maker.Calm();
    } else {
      maker.Change();
    }
    CleanOnce(world, maker, scan, random, tally);
    if (HasFatalFailure()) {
      return;
    }
  }
  std::cout << "[  tally   ] " << tally.deleted << " deleted, " << tally.failed << " failed, "
            << tally.folders << " folders, " << tally.refused << " refused, " << tally.events
            << " events, statuses " << tally.statuses[QS_OK] << "/" << tally.statuses[QS_FAILED]
            << std::endl;
  EXPECT_GT(tally.deleted, kRounds);
  EXPECT_GT(tally.failed, kRounds / 2);
  EXPECT_EQ(tally.folders > kRounds / 10, kind() == QS_SCAN_KIND_JUNK_RULES);
  EXPECT_GT(tally.refused, kRounds / 300);
  EXPECT_GT(tally.events, kRounds / 10);
  EXPECT_GT(tally.statuses[QS_FAILED], kRounds / 300);
}

INSTANTIATE_TEST_SUITE_P(Of, CleanModel, ::testing::ValuesIn(kKinds), support::CaseName());

}  // namespace
}  // namespace quastel::clean_tests
