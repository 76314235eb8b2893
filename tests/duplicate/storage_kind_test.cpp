#include "duplicate/storage_kind.h"

#include <string>
#include <vector>

#include "duplicate/duplicate_fixture.h"
#include "duplicate/open_record.h"
#include "support/named_case.h"

namespace quastel::duplicate_tests {
namespace {

using duplicate::ProbeStorageKind;
using duplicate::StorageKind;
using duplicate::WorkerCountFor;
using simulated::SeekPenaltyAnswer;

using Texts = std::vector<Text>;

constexpr SeekPenaltyAnswer kSolid = SeekPenaltyAnswer::kNoPenalty;
constexpr SeekPenaltyAnswer kSpinning = SeekPenaltyAnswer::kPenalty;

// The queries about volumes, in order.
std::vector<std::string> QueriesOf(const SimulatedWindows& machine) {
  std::vector<std::string> queries;
  for (const CallRecord& call : machine.record()) {
    queries.push_back(std::string(simulated::NameOf(call.call)) + " " + Utf8(call.path));
  }
  return queries;
}

struct DriveCase : support::NamedCase {
  std::uint32_t type;
  SeekPenaltyAnswer answer;
  StorageKind kind;
};

class ProbedDrive : public ::testing::TestWithParam<DriveCase> {};

TEST_P(ProbedDrive, Has_the_kind_that_its_type_and_its_device_say) {
  SimulatedWindows machine;
  machine.AddDrive('D', {GetParam().type, GetParam().answer});
  EXPECT_EQ(ProbeStorageKind({u"D:\\data"}), GetParam().kind);
  EXPECT_EQ(machine.open_handles(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    All, ProbedDrive,
    ::testing::Values(
        DriveCase{{"fixed_without_penalty"}, 3, kSolid, StorageKind::kSolidState},
        DriveCase{{"fixed_with_penalty"}, 3, kSpinning, StorageKind::kRotational},
        DriveCase{
            {"fixed_that_answers_nothing"}, 3, SeekPenaltyAnswer::kFails, StorageKind::kUnknown},
        DriveCase{
            {"fixed_that_answers_too_little"}, 3, SeekPenaltyAnswer::kShort, StorageKind::kUnknown},
        DriveCase{{"unknown_type"}, 0, kSolid, StorageKind::kUnknown},
        DriveCase{{"no_root"}, 1, kSolid, StorageKind::kUnknown},
        DriveCase{{"removable"}, 2, kSolid, StorageKind::kUnknown},
        DriveCase{{"removable_with_penalty"}, 2, kSpinning, StorageKind::kUnknown},
        DriveCase{{"remote"}, 4, kSpinning, StorageKind::kUnknown},
        DriveCase{{"optical"}, 5, kSpinning, StorageKind::kUnknown},
        DriveCase{{"memory"}, 6, kSolid, StorageKind::kUnknown}),
    support::CaseName());

TEST(StorageProbe, Asks_the_device_below_the_volume_of_the_root) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  machine.SetRecording(true);
  const OpenRecord opens;
  EXPECT_EQ(ProbeStorageKind({u"D:\\data\\below"}), StorageKind::kSolidState);

  ASSERT_EQ(opens.calls().size(), 1u);
  EXPECT_EQ(opens.calls()[0],
            (OpenCall{"\\\\.\\D:", 0, 7, platform::Disposition::kOpenExisting, 0}));
  EXPECT_EQ(QueriesOf(machine), (std::vector<std::string>{
                                    "VolumePathName D:\\data\\below",
                                    "QueryDriveType D:\\",
                                    "OpenFile \\\\.\\D:",
                                    "QuerySeekPenalty ",
                                    "CloseFile ",
                                }));
  EXPECT_EQ(machine.record()[0].number, 260u) << "the capacity of the buffer";
}

TEST(StorageProbe, Of_no_root_is_unknown_and_asks_nobody) {
  SimulatedWindows machine;
  machine.SetRecording(true);
  EXPECT_EQ(ProbeStorageKind({}), StorageKind::kUnknown);
  EXPECT_EQ(machine.record().size(), 0u);
}

TEST(StorageProbe, Of_a_network_share_is_unknown_without_opening_a_device) {
  SimulatedWindows machine;
  machine.AddShare(u"\\\\server\\share");
  machine.SetRecording(true);
  EXPECT_EQ(ProbeStorageKind({u"\\\\server\\share\\data"}), StorageKind::kUnknown);
  EXPECT_EQ(QueriesOf(machine), (std::vector<std::string>{"VolumePathName \\\\server\\share\\data",
                                                          "QueryDriveType \\\\server\\share\\"}));
}

TEST(StorageProbe, Of_a_volume_without_a_drive_letter_in_front_is_unknown) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  machine.SetRecording(true);
  EXPECT_EQ(ProbeStorageKind({u"\\\\?\\D:\\data"}), StorageKind::kUnknown);
  EXPECT_EQ(machine.CallCount(Call::kOpenFile), 0u);
}

TEST(StorageProbe, Of_a_drive_that_is_not_there_is_unknown) {
  SimulatedWindows machine;
  EXPECT_EQ(ProbeStorageKind({u"Q:\\data"}), StorageKind::kUnknown);
}

struct FailingCall : support::NamedCase {
  Call call;
};

class FailingProbe : public ::testing::TestWithParam<FailingCall> {};

TEST_P(FailingProbe, Is_unknown_and_leaves_no_handle_open) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  EXPECT_EQ(ProbeStorageKind({u"D:\\data"}), StorageKind::kSolidState);
  machine.ClearFaults();
  machine.FailCall(GetParam().call, 1);
  EXPECT_EQ(ProbeStorageKind({u"D:\\data"}), StorageKind::kUnknown);
  EXPECT_EQ(machine.faults_injected(), 1u);
  EXPECT_EQ(machine.open_handles(), 0u);
}

TEST_P(FailingProbe, Is_not_mended_by_a_rotational_root_behind) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  machine.AddDrive('E', {3, kSpinning});
  machine.FailCall(GetParam().call, 1);
  machine.SetRecording(true);
  EXPECT_EQ(ProbeStorageKind({u"D:\\data", u"E:\\data"}), StorageKind::kUnknown);
  EXPECT_EQ(machine.CallCount(Call::kVolumePathName), 1u) << "the first failure is the answer";
}

INSTANTIATE_TEST_SUITE_P(All, FailingProbe,
                         ::testing::Values(FailingCall{{"VolumePathName"}, Call::kVolumePathName},
                                           FailingCall{{"DriveType"}, Call::kQueryDriveType},
                                           FailingCall{{"OpenDevice"}, Call::kOpenFile},
                                           FailingCall{{"SeekPenalty"}, Call::kQuerySeekPenalty}),
                         support::CaseName());

// D: and E: are solid, R: turns, U: does not say.
struct RootsCase : support::NamedCase {
  Texts roots;
  StorageKind kind;
  std::uint64_t devices_opened;
};

class ProbeOfSeveralRoots : public ::testing::TestWithParam<RootsCase> {};

TEST_P(ProbeOfSeveralRoots, Ends_with_the_first_root_that_decides) {
  SimulatedWindows machine;
  machine.AddDrive('D');
  machine.AddDrive('E');
  machine.AddDrive('R', {3, kSpinning});
  machine.AddDrive('U', {3, SeekPenaltyAnswer::kFails});
  EXPECT_EQ(ProbeStorageKind(GetParam().roots), GetParam().kind);
  EXPECT_EQ(machine.CallCount(Call::kOpenFile), GetParam().devices_opened);
}

INSTANTIATE_TEST_SUITE_P(
    All, ProbeOfSeveralRoots,
    ::testing::Values(
        RootsCase{{"all_solid"}, {u"D:\\", u"E:\\x"}, StorageKind::kSolidState, 2},
        RootsCase{{"one_rotational_among_solid"},
                  {u"D:\\", u"R:\\", u"E:\\"},
                  StorageKind::kRotational,
                  2},
        RootsCase{{"rotational_last"}, {u"D:\\", u"E:\\", u"R:\\"}, StorageKind::kRotational, 3},
        RootsCase{{"unknown_last"}, {u"D:\\", u"E:\\", u"U:\\"}, StorageKind::kUnknown, 3},
        RootsCase{{"unknown_before_rotational"}, {u"U:\\", u"R:\\"}, StorageKind::kUnknown, 1},
        RootsCase{{"rotational_before_unknown"}, {u"R:\\", u"U:\\"}, StorageKind::kRotational, 1}),
    support::CaseName());

struct CountCase {
  std::size_t items;
  StorageKind kind;
  std::uint32_t processors;
  std::size_t workers;
};
void PrintTo(const CountCase& c, std::ostream* out) {
  *out << c.items << " items, kind " << static_cast<std::uint32_t>(c.kind) << ", " << c.processors
       << " processors";
}

class WorkerCount : public ::testing::TestWithParam<CountCase> {};

TEST_P(WorkerCount, Is_the_smallest_of_items_processors_and_the_limit_of_the_storage) {
  SimulatedWindows machine;
  machine.SetProcessorCount(GetParam().processors);
  EXPECT_EQ(WorkerCountFor(GetParam().items, GetParam().kind), GetParam().workers);
}

INSTANTIATE_TEST_SUITE_P(All, WorkerCount,
                         ::testing::Values(CountCase{0, StorageKind::kRotational, 64, 0},
                                           CountCase{0, StorageKind::kSolidState, 64, 0},
                                           CountCase{0, StorageKind::kUnknown, 0, 0},
                                           CountCase{1, StorageKind::kRotational, 64, 1},
                                           CountCase{2, StorageKind::kRotational, 64, 2},
                                           CountCase{3, StorageKind::kRotational, 64, 2},
                                           CountCase{1000, StorageKind::kRotational, 1, 1},
                                           CountCase{1000, StorageKind::kRotational, 64, 2},
                                           CountCase{15, StorageKind::kSolidState, 64, 15},
                                           CountCase{16, StorageKind::kSolidState, 64, 16},
                                           CountCase{17, StorageKind::kSolidState, 64, 16},
                                           CountCase{1000, StorageKind::kSolidState, 15, 15},
                                           CountCase{1000, StorageKind::kSolidState, 17, 16},
                                           CountCase{7, StorageKind::kUnknown, 64, 7},
                                           CountCase{8, StorageKind::kUnknown, 64, 8},
                                           CountCase{9, StorageKind::kUnknown, 64, 8},
                                           CountCase{1000, StorageKind::kUnknown, 7, 7},
                                           CountCase{1000, StorageKind::kRotational, 0, 1},
                                           CountCase{1000, StorageKind::kSolidState, 0, 1},
                                           CountCase{1000, StorageKind::kUnknown, 0, 1}));

}  // namespace
}  // namespace quastel::duplicate_tests
