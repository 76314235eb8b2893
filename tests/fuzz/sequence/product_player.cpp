#include "fuzz/sequence/product_player.h"

#include <cstring>

#include "fuzz/demand.h"
#include "fuzz/sequence/comparison.h"

namespace quastel::fuzz::sequence {
namespace {

struct Hold {
  const Char* value;
  std::uint32_t milliseconds;
};
constexpr Hold kHolds[] = {
    {u"30", 30}, {u"abc", 0}, {u"-1", 5000}, {u"9000", 5000}, {u"1234567890123456", 0},
    {u" 7x", 7}};

std::uint64_t SleptIn(const simulated::SimulatedWindows& machine) {
  std::uint64_t sum = 0;
  for (const std::uint32_t sleep : machine.sleeps()) {
    sum += sleep;
  }
  return sum;
}

}  // namespace

ProductPlayer::ProductPlayer(World& world, Watch& watch, CallSequenceSeen& seen)
    : world_(world), watch_(watch), seen_(seen) {
  Recreate();
}

ProductPlayer::~ProductPlayer() {
  Demand(qs_product_scan_destroy(scan_) == QS_OK, "an idle scan can be destroyed");
}

void ProductPlayer::Recreate() {
  if (scan_ != nullptr) {
    Demand(qs_product_scan_destroy(scan_) == QS_OK, "an idle scan can be destroyed");
  }
  scan_ = nullptr;
  Demand(qs_product_scan_create(&scan_) == QS_OK && scan_ != nullptr, "a scan can be made");
  rows_.clear();
  kind_ = 0;
  status_ = {};
  performance_ = {};
  performance_.size = sizeof(performance_);
  clean_ = {};
  clean_.size = sizeof(clean_);
  DemandSteady();
}

void ProductPlayer::Play(Input& input) {
  switch (input.Below(9)) {
    case 0:
    case 1:
    case 2:
      Scan(input);
      break;
    case 3:
    case 4:
    case 5:
      Clean(input);
      break;
    case 6:
      ReadRows(input);
      break;
    case 7:
      RefuseRequest(input);
      break;
    default:
      if (input.OneIn(3)) {
        Recreate();
      } else {
        CancelNothing();
      }
      break;
  }
  DemandSteady();
}

void ProductPlayer::CancelNothing() {
  Demand(qs_product_scan_cancel(scan_) == QS_OK && qs_product_scan_cancel_clean(scan_) == QS_OK,
         "a cancel without anything to cancel does nothing");
}

void ProductPlayer::DemandSteady() {
  qs_product_scan_status status;
  std::memset(&status, 0xAB, sizeof status);
  Demand(qs_product_scan_poll(scan_, &status) == QS_OK &&
             std::memcmp(&status, &status_, sizeof status) == 0,
         "the state of an idle scan stays");
  qs_product_scan_performance performance;
  std::memset(&performance, 0xAB, sizeof performance);
  performance.size = sizeof performance;
  Demand(qs_product_scan_get_performance(scan_, &performance) == QS_OK &&
             std::memcmp(&performance, &performance_, sizeof performance) == 0,
         "the performance of an idle scan stays");
  qs_product_clean_detail detail;
  std::memset(&detail, 0xAB, sizeof detail);
  detail.size = sizeof detail;
  Demand(qs_product_scan_poll_clean_detailed(scan_, &detail) == QS_OK &&
             std::memcmp(&detail, &clean_, sizeof detail) == 0,
         "the state of an idle clean stays");
  qs_product_clean_status clean;
  std::memset(&clean, 0xAB, sizeof clean);
  Demand(qs_product_scan_poll_clean(scan_, &clean) == QS_OK && clean.state == detail.state &&
             clean.requested == detail.requested && clean.processed == detail.processed &&
             clean.status == detail.status && clean.reserved == 0 && clean.reserved2 == 0,
         "both polls of a clean agree");
  std::uint64_t count = 0;
  Demand(qs_product_scan_report_count(scan_, &count) == QS_OK && count == rows_.size(),
         "the number of rows of an idle scan stays");
  Demand(world_.machine().open_handles() == 0, "nothing is left open");
}

void ProductPlayer::ReadRows(Input& input) {
  for (std::size_t n = 1 + input.Below(3); n > 0; --n) {
    const std::uint64_t index = input.Below(rows_.size() + 2);
    if (index < rows_.size()) {
      ReadRowSomehow(scan_, index, rows_[static_cast<std::size_t>(index)], input);
      continue;
    }
    std::uint64_t needed = 7;
    std::uint64_t parent = 7;
    qs_product_scan_row row = {};
    row.item_id = 7;
    Demand(
        qs_product_scan_report_row(scan_, index, nullptr, 0, &needed, nullptr, 0, &needed, nullptr,
                                   0, &needed, nullptr, 0, &needed, &row) == QS_NOT_FOUND &&
            qs_product_scan_report_row_parent_group_id(scan_, index, &parent) == QS_NOT_FOUND,
        "there is no row behind the last");
    Demand(needed == 7 && row.item_id == 7 && parent == 7,
           "a row that is not there stores nothing");
  }
}

// Requests that are refused change nothing at all.
void ProductPlayer::RefuseRequest(Input& input) {
  const Char* const root = u"C:\\t";
  const Char* const empty = u"";
  const Char* const none = nullptr;
  qs_product_scan_request request = {};
  request.size = sizeof request;
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = &root;
  request.root_count = 1;
  const qs_product_scan_request* given = &request;
  switch (input.Below(9)) {
    case 0:
      request.size = static_cast<std::uint32_t>(input.Below(56));
      break;
    case 1:
      request.kind = 3 + static_cast<std::uint32_t>(input.Number(3));
      break;
    case 2:
      request.roots = nullptr;
      break;
    case 3:
      request.roots = &empty;
      break;
    case 4:
      request.roots = &none;
      break;
    case 5:
      request.root_count = 0;
      break;
    case 6:
      request.protect_system = 1;
      request.user_home = kUserHome;
      break;
    case 7:
      request.protect_system = 2;
      request.user_home = empty;
      request.system_root = kSystemRoot;
      break;
    default:
      given = nullptr;
      break;
  }
  const Watch::Quiet quiet;
  Demand(qs_product_scan_start(scan_, given) == QS_INVALID_ARGUMENT, "such a request is refused");
  ++seen_.refused;
}

void ProductPlayer::Scan(Input& input) {
  ProductRequest request(world_, input);
  const Plan plan = Plan::From(input);
  simulated::SimulatedWindows& machine = world_.machine();
  machine.SetProcessorCount(1u << input.Below(3));
  const bool held = input.OneIn(8);
  const Hold hold = input.OneOf(kHolds);
  machine.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS",
                         held ? std::optional<Text>(hold.value) : std::nullopt);
  world_.ForgetTouched();
  const Disk before = world_.Look();
  const ScanOutcome expected = request.Outcome(world_, before);
  const std::uint64_t changes = world_.changes();
  const std::uint64_t slept = SleptIn(machine);
  machine.ClearFaults();
  if (plan.meeting != Meeting::kParked && input.OneIn(12)) {
    machine.FailAnyCall(1 + input.Byte(),
                        input.OneIn(2) ? simulated::Repeat::kOnce : simulated::Repeat::kFromThenOn);
  }

  Outside outside;
  qs_status status = QS_OK;
  watch_.Begin({.cache = request.WritesCache()});
  seen_.met += Fly(
      watch_, plan, [&] { status = qs_product_scan_start(scan_, request.record()); },
      [&] { Meet(input, plan.IsRace(), false, outside); });
  watch_.End();
  const bool disturbed = machine.faults_injected() > 0 || world_.changes() != changes;
  machine.ClearFaults();

  if (!disturbed && !outside.cancelled && status != QS_CANCELLED) {
    Demand(SleptIn(machine) - slept == (held ? hold.milliseconds : 0), "the scan was held so long");
  }
  DemandDisk(world_, before, request.WritesCache());
  TakeScan(request, expected, status, plan, outside, disturbed);
  if (!disturbed && status == QS_OK && !rows_.empty()) {
    ++seen_.scans[kind_];
  }
}

}  // namespace quastel::fuzz::sequence
