// What the tests of the session share: the handle, its report and its two states as values, and the
// disk as lines.

#ifndef QUASTEL_TESTS_SESSION_SESSION_FIXTURE_H_
#define QUASTEL_TESTS_SESSION_SESSION_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "base/text.h"
#include "base/ticks.h"
#include "quastel_core.h"
#include "scan/scan_fixture.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel::session_tests {

using scan_tests::InsideCall;
using scan_tests::InsideEveryCall;
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

// The smallest size that the mode for large files keeps, and the largest that it does not.
inline constexpr std::uint64_t kLarge = 10'485'761;
inline constexpr std::uint64_t kNotLarge = 10'485'760;

// What a file that the simulation made without a time of its own is reported with.
inline constexpr std::uint64_t kDefaultModified = FileOptions{}.last_write + kTicksAt1601;

struct Row {
  Text path;
  Text name;
  std::uint64_t size = 0;
  std::uint64_t modified = kDefaultModified;
  std::uint32_t deleted = 0;

  friend bool operator==(const Row&, const Row&) = default;
};
void PrintTo(const Row& row, std::ostream* out);

// The state of a scan as a caller sees it.
struct ScanBlock {
  std::uint32_t state = QS_STATE_IDLE;
  std::uint64_t files_visited = 0;
  std::uint64_t bytes_visited = 0;
  std::uint64_t row_count = 0;
  qs_status status = QS_OK;

  friend bool operator==(const ScanBlock&, const ScanBlock&) = default;
};
void PrintTo(const ScanBlock& block, std::ostream* out);

// And that of a clean.
struct CleanBlock {
  std::uint32_t state = QS_STATE_IDLE;
  std::uint64_t requested = 0;
  std::uint64_t processed = 0;
  qs_status status = QS_OK;

  friend bool operator==(const CleanBlock&, const CleanBlock&) = default;
};
void PrintTo(const CleanBlock& block, std::ostream* out);

// The state in which a scan or clean ends with this status.
std::uint32_t StateAfter(qs_status status);
// Of a clean that has ended with this status.
CleanBlock Ended(qs_status status, std::uint64_t requested, std::uint64_t processed);

// One handle; destroying it must work.
class SessionHandle {
 public:
  SessionHandle();
  ~SessionHandle();
  SessionHandle(const SessionHandle&) = delete;
  SessionHandle& operator=(const SessionHandle&) = delete;

  operator qs_session*() const { return session_; }
  qs_status Scan(const Text& root, std::uint32_t mode = QS_SESSION_ALL_FILES) const;
  qs_status Clean(const Ids& ids) const;

 private:
  qs_session* session_ = nullptr;
};

std::uint64_t RowCountOf(qs_session* session);
Row ReadRow(qs_session* session, std::uint64_t index);
std::vector<Row> ReadReport(qs_session* session);
Paths PathsOf(const std::vector<Row>& rows);
// The rows with a deleted mark.
Ids MarksOf(qs_session* session);
// The row of each path, which must be there once.
Ids IdsOf(qs_session* session, const Paths& paths);
Ids UpTo(std::uint64_t count);  // 0, 1, ... count - 1

ScanBlock ScanOf(qs_session* session);
CleanBlock CleanOf(qs_session* session);
Text CurrentPathOf(qs_session* session);

// Everything that a handle shows, as bytes: equal texts mean that nothing changed.
std::string EverythingOf(qs_session* session);

// The disk, one sorted line for each path.
Lines DiskOf(const SimulatedWindows& machine);
// The paths of what was there before and is not any more, or not as it was.
Lines GoneSince(const Lines& before, const SimulatedWindows& machine);
// What is there now and was not before.
Lines NewSince(const Lines& before, const SimulatedWindows& machine);

// "RemoveFile C:\t\f", in order, with " failed" behind it where it was.
Lines RemovalsOf(const SimulatedWindows& machine);

// Names the rows of a test over faults that come once and those that stay.
struct RepeatName {
  std::string operator()(const ::testing::TestParamInfo<Repeat>& row) const {
    return row.param == Repeat::kOnce ? "once" : "from_then_on";
  }
};

// C:\t with the files f000, f001, ... of 1, 2, ... bytes.
class SessionTest : public ::testing::Test {
 protected:
  ~SessionTest() override;

  Text AddFile(TextView name, std::uint64_t size, FileOptions options = {});
  Paths AddFiles(std::size_t count);
  // Scans C:\t and empties the record, in which everything is written down from then on.
  void ScanTree(std::uint32_t mode = QS_SESSION_ALL_FILES);
  // Which of the paths still exist.
  Lines LeftOf(const Paths& paths) const;

  SimulatedWindows machine_;
  SessionHandle session_;
};

}  // namespace quastel::session_tests

#endif  // QUASTEL_TESTS_SESSION_SESSION_FIXTURE_H_
