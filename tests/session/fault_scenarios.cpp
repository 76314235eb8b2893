// What the sweeps run in this room; linked with them in the place of the list of the other rooms.

#include "faults/fault_scenario.h"
#include "session/session_fixture.h"

namespace quastel::faults {

namespace {

using session_tests::CleanOf;
using session_tests::CurrentPathOf;
using session_tests::kLarge;
using session_tests::Row;
using session_tests::ScanBlock;
using session_tests::ScanOf;
using session_tests::SessionHandle;
using session_tests::StateAfter;

// Folders in folders, a link, a long path, large and small files, and a hold.
void FurnishTree(SimulatedWindows& machine) {
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", u"30");
  machine.AddSizedFile(u"C:\\t\\a_name_that_needs_memory.zip", kLarge);
  machine.AddSizedFile(u"C:\\t\\b.log", 10);
  machine.AddSizedFile(u"C:\\t\\m\\c.log", kLarge + 1);
  machine.AddSizedFile(u"C:\\t\\m\\deep\\d.mkv", 11);
  machine.AddFolder(u"C:\\t\\n\\empty");
  machine.AddSizedFile(support::NestedTo(300, u"C:\\t\\long"), kLarge + 2);
  machine.AddLink(simulated::LinkKind::kJunction, u"C:\\t\\junction", u"C:\\other");
  machine.AddSizedFile(u"C:\\other\\e", kLarge);
}

class SessionScan : public Deed {
 public:
  explicit SessionScan(std::uint32_t mode) : mode_(mode) {}

  qs_status Do() override { return qs_session_start_scan(session_, u"C:\\t", mode_); }

  std::vector<std::string> Findings() override {
    std::vector<std::string> findings;
    for (const Row& row : session_tests::ReadReport(session_)) {
      findings.push_back(::testing::PrintToString(row));
    }
    return findings;
  }

  void CheckAfter(qs_status status) override {
    const ScanBlock block = ScanOf(session_);
    EXPECT_EQ(block.state, StateAfter(status));
    EXPECT_EQ(block.status, status);
    EXPECT_EQ(block.row_count, session_tests::RowCountOf(session_));
    EXPECT_GE(block.files_visited, block.row_count);
    // No report but a whole one may be cleaned.
    const bool cleanable = status == QS_OK && mode_ != QS_SESSION_INSPECT;
    EXPECT_EQ(session_.Clean({}), cleanable ? QS_OK : QS_UNSUPPORTED);
  }

 protected:
  SessionHandle session_;

 private:
  const std::uint32_t mode_;
};

// The same scan with a cancel when it opens its fourth folder.
class CancelledSessionScan : public SessionScan {
 public:
  explicit CancelledSessionScan(SimulatedWindows& machine)
      : SessionScan(QS_SESSION_ALL_FILES), machine_(machine) {
    EXPECT_EQ(Do(), QS_OK);
    possible_ = Findings();
    machine.SetHook([this](const simulated::CallRecord& record) {
      if (record.call == simulated::Call::kFindFirstBasic && ++folders_ == 4) {
        qs_session_cancel_scan(session_);
      }
    });
  }
  ~CancelledSessionScan() override { machine_.SetHook(nullptr); }

  qs_status Do() override {
    folders_ = 0;
    return SessionScan::Do();
  }

  // A folder that cannot be listed lets the scan come further before it is cancelled.
  std::vector<std::string> Possible() override { return possible_; }

  // Whatever fails behind the cancel: it stays a cancelled scan.
  bool Allows(qs_status status, bool out_of_memory) override {
    return folders_ >= 4 ? status == QS_CANCELLED : SessionScan::Allows(status, out_of_memory);
  }

 private:
  SimulatedWindows& machine_;
  std::vector<std::string> possible_;
  int folders_ = 0;
};

template <std::uint32_t kMode>
std::unique_ptr<Deed> MakeScan(SimulatedWindows&) {
  return std::make_unique<SessionScan>(kMode);
}

std::unique_ptr<Deed> MakeCancelledScan(SimulatedWindows& machine) {
  return std::make_unique<CancelledSessionScan>(machine);
}

}  // namespace

const std::vector<Scenario>& AllScenarios() {
  static const std::vector<Scenario> kScenarios = {
      {"SessionScan", FurnishTree, MakeScan<QS_SESSION_ALL_FILES>, 40, 30},
      {"SessionScanOfLargeFiles", FurnishTree, MakeScan<QS_SESSION_LARGE_FILES>, 40, 30},
      {"SessionScanForInspection", FurnishTree, MakeScan<QS_SESSION_INSPECT>, 40, 30},
      {"CancelledSessionScan", FurnishTree, MakeCancelledScan, 15, 15},
  };
  return kScenarios;
}

}  // namespace quastel::faults
