// Making a product scan while memory is short.

#include <gtest/gtest.h>

#include "faults/allocation_faults.h"
#include "faults/nth_time.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/sweep_record.h"

namespace quastel::faults {
namespace {

using simulated::SimulatedWindows;

TEST(CreateSweep, Creating_a_product_scan_without_memory_fails_and_leaves_the_out_pointer_alone) {
  SimulatedWindows machine;
  std::uint64_t rounds = 0;
  for (const Repeat repeat : {Repeat::kOnce, Repeat::kFromThenOn}) {
    for (std::uint64_t nth = 1; nth < kTooMany; ++nth) {
      SCOPED_TRACE(nth);
      int canary = 0;
      auto* const untouched = reinterpret_cast<qs_product_scan*>(&canary);
      qs_product_scan* scan = untouched;
      qs_status status = QS_OK;
      std::uint64_t injected = 0;
      {
        AllocationFaults faults(nth, repeat);
        status = qs_product_scan_create(&scan);
        injected = faults.injected();
      }
      if (injected == 0) {
        EXPECT_EQ(status, QS_OK);
        EXPECT_EQ(qs_product_scan_destroy(scan), QS_OK);
        break;
      }
      ++rounds;
      ASSERT_EQ(status, QS_FAILED);
      EXPECT_EQ(scan, untouched);
    }
  }
  EXPECT_GE(rounds, 2u);
  EXPECT_EQ(machine.fallible_calls(), 0u);
  support::RecordNoCalls("CreateProductScan");
  support::RecordSweep("CreateProductScan", support::Swept::kMemoryFailures, rounds);
}

}  // namespace
}  // namespace quastel::faults
