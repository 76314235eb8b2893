// A mutex that cannot be taken fails the scan or clean, and the handle can be used and freed
// afterwards.

#include "clean/clean_fixture.h"
#include "faults/lock_faults.h"
#include "faults/nth_time.h"

namespace quastel::clean_tests {
namespace {

using faults::kTooMany;
using faults::LockFaults;
using simulated::Repeat;

class LockFailures : public ::testing::Test {
 protected:
  LockFailures() {
    for (const TextView path : {u"C:\\t\\a", u"C:\\t\\b", u"C:\\t\\c"}) {
      machine_.AddSizedFile(path, kLarge);
    }
    machine_.AddFile(u"C:\\t\\small", "stays");
  }
  qs_status Scan() { return scan_.Start(Request::LargeFiles({Text(kTree)})); }

  SimulatedWindows machine_;
  ScanHandle scan_;
};

TEST_F(LockFailures, Any_one_lock_of_a_scan_may_fail) {
  std::uint64_t nth = 1;
  int failed = 0;
  for (; nth < kTooMany; ++nth) {
    qs_status status = QS_OK;
    std::uint64_t injected = 0;
    {
      const LockFaults faults(nth, Repeat::kOnce);
      status = Scan();
      injected = faults.injected();
    }
    if (injected == 0) {
      EXPECT_EQ(status, QS_OK);
      break;
    }
    // Only a time may be missing from a scan that went well.
    const std::uint32_t state = scan_tests::Poll(scan_).state;
    EXPECT_TRUE(status == QS_OK ? state == QS_STATE_DONE : status == QS_FAILED) << "lock " << nth;
    EXPECT_NE(state, QS_STATE_RUNNING) << "lock " << nth;
    failed += status == QS_FAILED ? 1 : 0;
    EXPECT_EQ(Scan(), QS_OK) << "after lock " << nth;
  }
  EXPECT_GT(failed, 5);
  EXPECT_LT(nth, kTooMany);
}

TEST_F(LockFailures, Any_one_lock_of_a_clean_may_fail) {
  std::uint64_t nth = 1;
  for (; nth < kTooMany; ++nth) {
    for (const TextView path : {u"C:\\t\\a", u"C:\\t\\b", u"C:\\t\\c"}) {
      if (!machine_.Exists(path)) {
        machine_.AddSizedFile(path, kLarge);
      }
    }
    ASSERT_EQ(Scan(), QS_OK);
    const Ids ids = {0, 1, 2};
    qs_status status = QS_OK;
    std::uint64_t injected = 0;
    {
      const LockFaults faults(nth, Repeat::kOnce);
      status = qs_product_scan_start_clean(scan_, ids.data(), ids.size());
      injected = faults.injected();
    }
    EXPECT_TRUE(machine_.Exists(u"C:\\t\\small"));
    if (injected == 0) {
      EXPECT_EQ(status, QS_OK);
      break;
    }
    EXPECT_EQ(status, QS_FAILED) << "lock " << nth;
    EXPECT_NE(BlockOf(scan_).state, QS_STATE_RUNNING) << "lock " << nth;
    EXPECT_EQ(Clean(scan_, {}), QS_OK) << "after lock " << nth;
  }
  EXPECT_GT(nth, 5u);
  EXPECT_LT(nth, kTooMany);
}

}  // namespace
}  // namespace quastel::clean_tests
