// The seeds of the target that drives the whole interface.

#include <gtest/gtest.h>

#include "fuzz/call_sequences_check.h"
#include "fuzz/seeds.h"

namespace quastel::fuzz {
namespace {

TEST(CallSequenceSeeds, Keep_to_the_rules_and_reach_every_kind_of_operation) {
  CallSequenceSeen all;
  for (const Seed& seed : SeedsOf("call_sequences")) {
    SCOPED_TRACE(seed.name);
    const CallSequenceSeen seen = CheckCallSequence(seed.bytes);
    for (int kind = 0; kind < 3; ++kind) {
      all.scans[kind] += seen.scans[kind];
    }
    all.session_scans += seen.session_scans;
    all.cancelled += seen.cancelled;
    all.failed_scans += seen.failed_scans;
    all.deleted += seen.deleted;
    all.kept += seen.kept;
    all.refused += seen.refused;
    all.met += seen.met;
    all.direct += seen.direct;
  }
  EXPECT_GE(all.scans[0], 20u);
  EXPECT_GE(all.scans[1], 20u);
  EXPECT_GE(all.scans[2], 20u);
  EXPECT_GE(all.session_scans, 20u);
  EXPECT_GE(all.cancelled, 20u);
  EXPECT_GE(all.failed_scans, 5u);
  EXPECT_GE(all.deleted, 20u);
  EXPECT_GE(all.kept, 5u);
  EXPECT_GE(all.refused, 20u);
  EXPECT_GE(all.met, 50u);
  EXPECT_GE(all.direct, 5u);
}

}  // namespace
}  // namespace quastel::fuzz
