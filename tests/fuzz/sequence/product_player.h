// One product scan and what it must be like after each call.

#ifndef QUASTEL_TESTS_FUZZ_SEQUENCE_PRODUCT_PLAYER_H_
#define QUASTEL_TESTS_FUZZ_SEQUENCE_PRODUCT_PLAYER_H_

#include <cstdint>
#include <utility>
#include <vector>

#include "fuzz/call_sequences_check.h"
#include "fuzz/input.h"
#include "fuzz/sequence/flight.h"
#include "fuzz/sequence/product_request.h"
#include "fuzz/sequence/report.h"
#include "fuzz/sequence/watch.h"
#include "fuzz/sequence/world.h"
#include "quastel_core.h"

namespace quastel::fuzz::sequence {

class ProductPlayer {
 public:
  ProductPlayer(World& world, Watch& watch, CallSequenceSeen& seen);
  ~ProductPlayer();
  ProductPlayer(const ProductPlayer&) = delete;
  ProductPlayer& operator=(const ProductPlayer&) = delete;

  // One call or a few.
  void Play(Input& input);

 private:
  // What happened to a running operation from outside.
  struct Outside {
    bool cancelled = false;
    bool clock_moved = false;
    std::uint64_t rows_seen = 0;
    std::vector<std::pair<std::uint64_t, Row>> read;
  };

  void Recreate();
  void Scan(Input& input);
  void Clean(Input& input);
  void ReadRows(Input& input);
  void CancelNothing();
  void RefuseRequest(Input& input);

  void Meet(Input& input, bool racing, bool cleaning, Outside& outside);
  void MeetOnce(Input& input, bool racing, bool cleaning, Outside& outside);

  void TakeScan(const ProductRequest& request, const ScanOutcome& expected, qs_status status,
                const Plan& plan, const Outside& outside, bool disturbed);
  void DemandCounters(const ScanOutcome& expected) const;
  void DemandCurrentTexts(const ScanOutcome& expected, const Outside& outside) const;

  std::vector<std::uint64_t> SomeIds(Input& input);
  qs_status RefusalOf(const std::vector<std::uint64_t>& ids) const;
  std::vector<std::size_t> WorkList(const std::vector<std::uint64_t>& ids) const;
  Permission PermissionFor(const std::vector<std::size_t>& list) const;
  void DemandClean(Disk disk, const std::vector<std::size_t>& list, std::size_t count);
  void TakeMarks();

  // Everything that is asked of an idle handle gives what it gave before.
  void DemandSteady();

  World& world_;
  Watch& watch_;
  CallSequenceSeen& seen_;
  qs_product_scan* scan_ = nullptr;
  std::uint32_t kind_ = 0;
  std::vector<Row> rows_;
  qs_product_scan_status status_ = {};
  qs_product_scan_performance performance_ = {};
  qs_product_clean_detail clean_ = {};
};

}  // namespace quastel::fuzz::sequence

#endif  // QUASTEL_TESTS_FUZZ_SEQUENCE_PRODUCT_PLAYER_H_
