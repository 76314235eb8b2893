// What the tests of the product clean share: a tree whose files are all findings of one scan kind,
// cleans by path, and the clean's state as a value.

#ifndef QUASTEL_TESTS_CLEAN_CLEAN_FIXTURE_H_
#define QUASTEL_TESTS_CLEAN_CLEAN_FIXTURE_H_

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "scan/scan_fixture.h"
#include "simulated_windows/simulated_windows.h"
#include "support/calls.h"
#include "support/named_case.h"
#include "support/text.h"

namespace quastel::clean_tests {

using scan_tests::kDefaultModified;
using scan_tests::kLarge;
using scan_tests::Request;
using scan_tests::Row;
using scan_tests::ScanHandle;
using simulated::Call;
using simulated::CallRecord;
using simulated::Denial;
using simulated::FileOptions;
using simulated::LinkKind;
using simulated::Repeat;
using simulated::SimulatedWindows;
using support::Utf8;
using support::Wide;

using Ids = std::vector<std::uint64_t>;
using Lines = std::vector<std::string>;
using Paths = std::vector<Text>;

// The tree that is scanned, and the folder of the one copy of all duplicates that is never named.
inline constexpr TextView kTree = u"C:\\t";
inline constexpr TextView kKept = u"C:\\kept";
inline constexpr TextView kKeptCopy = u"C:\\kept\\copy";
// On a drive of its own: a rule may name C:\ itself.
inline constexpr TextView kRulesPath = u"D:\\rules.xml";

inline constexpr std::uint64_t kDefaultLastWrite = FileOptions{}.last_write;

struct KindCase : support::NamedCase {
  std::uint32_t kind;
};
inline constexpr KindCase kKinds[] = {
    {{"Junk"}, QS_SCAN_KIND_JUNK_RULES},
    {{"LargeFiles"}, QS_SCAN_KIND_LARGE_FILES},
    {{"Duplicates"}, QS_SCAN_KIND_DUPLICATES},
};

// The state of a clean as a caller sees it.
struct CleanBlock {
  std::uint32_t state = QS_STATE_IDLE;
  std::uint64_t requested = 0;
  std::uint64_t deleted = 0;
  std::uint64_t failed = 0;
  std::uint64_t processed = 0;
  std::uint64_t bytes_freed = 0;
  qs_status status = QS_OK;

  friend bool operator==(const CleanBlock&, const CleanBlock&) = default;
};
void PrintTo(const CleanBlock& block, std::ostream* out);

// Of a clean that has ended with this status.
CleanBlock Ended(qs_status status, std::uint64_t requested, std::uint64_t deleted,
                 std::uint64_t failed, std::uint64_t bytes_freed);

// The detailed poll alone, for cleans that go on meanwhile.
CleanBlock DetailOf(qs_product_scan* scan);
// Both polls, which must agree.
CleanBlock BlockOf(qs_product_scan* scan);

qs_status Clean(qs_product_scan* scan, const Ids& ids);

// The findings with a deleted mark.
Ids MarksOf(qs_product_scan* scan);

// Every text and number of the report, the deleted marks aside, and of the scan's own state.
std::string ReportWithoutMarks(qs_product_scan* scan);

// Findings that no scan would come across, appended to whatever the handle's report holds.
void AppendRows(qs_product_scan* scan, std::vector<ReportRow> rows);
// A finding that fits a file which the simulation made without options.
ReportRow FindingOf(RowKind kind, std::uint64_t group_id, std::int64_t size, TextView path);

// "RemoveFile C:\t\f", in order, with " failed" behind it where it was.
Lines RemovalsOf(const SimulatedWindows& machine);

Request DuplicateRequest(Paths roots);
Request JunkRequest();
// A document with one category and a rule for each folder.
std::string FolderRules(const Paths& folders);

// C:\t, in which every file that AddFinding makes is found by a scan of the kind.
class CleanTest : public ::testing::Test {
 protected:
  explicit CleanTest(std::uint32_t kind = QS_SCAN_KIND_LARGE_FILES);
  ~CleanTest() override;

  std::uint64_t finding_size() const;

  // `name` is a path below C:\t; answers the whole path.
  Text AddFinding(TextView name, FileOptions options = {});
  // f000, f001, ...
  Paths AddFindings(std::size_t count);

  // Scans and empties the record, in which everything is written down from then on.
  void ScanTree();
  Request TreeRequest();

  // The ids of the findings with these paths; no path may stand in the report twice.
  Ids IdsOf(const Paths& paths);
  Ids IdsOfAll();  // all but that of the kept copy

  qs_status CleanIds(const Ids& ids) { return Clean(scan_, ids); }
  qs_status CleanPaths(const Paths& paths) { return Clean(scan_, IdsOf(paths)); }
  CleanBlock Block() { return BlockOf(scan_); }
  // Which of the paths still exist.
  Lines LeftOf(const Paths& paths) const;

  const std::uint32_t kind_;
  SimulatedWindows machine_;
  ScanHandle scan_;
};

class CleanOfEachKindTest : public CleanTest, public ::testing::WithParamInterface<KindCase> {
 protected:
  CleanOfEachKindTest() : CleanTest(GetParam().kind) {}
};

}  // namespace quastel::clean_tests

#endif  // QUASTEL_TESTS_CLEAN_CLEAN_FIXTURE_H_
