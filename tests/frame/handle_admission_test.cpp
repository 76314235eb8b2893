// One start or destroy at a time on a handle, seen through the exports of the product scan.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <thread>
#include <utility>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::CallRecord;
using simulated::SimulatedWindows;

class HandleAdmission : public ::testing::Test {
 protected:
  HandleAdmission() {
    windows_.AddFile(u"C:\\data\\a.txt", "a");
    EXPECT_EQ(qs_product_scan_create(&scan_), QS_OK);
    request_.size = sizeof request_;
    request_.kind = QS_SCAN_KIND_LARGE_FILES;
    request_.roots = roots_;
    request_.root_count = 1;
  }
  ~HandleAdmission() override { EXPECT_EQ(qs_product_scan_destroy(scan_), QS_OK); }

  qs_status Start() { return qs_product_scan_start(scan_, &request_); }

  // Runs `action` on another thread at the start of the nth sleep of the hold.
  template <typename Action>
  void DuringSleep(std::size_t nth, Action action) {
    windows_.SetHook([this, nth, action](const CallRecord& call) {
      if (call.call == Call::kSleepMilliseconds && ++sleeps_ == nth) {
        std::thread(action).join();
      }
    });
  }

  SimulatedWindows windows_;
  qs_product_scan* scan_ = nullptr;
  qs_product_scan_request request_ = {};
  const qs_char* roots_[1] = {u"C:\\data"};
  std::size_t sleeps_ = 0;
};

TEST_F(HandleAdmission, Destroying_during_a_start_answers_busy_and_the_handle_stays_usable) {
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", Text(u"50"));
  qs_status destroyed = QS_OK;
  DuringSleep(1, [this, &destroyed] { destroyed = qs_product_scan_destroy(scan_); });
  EXPECT_EQ(Start(), QS_OK);
  EXPECT_EQ(destroyed, QS_BUSY);

  qs_product_scan_status status = {};
  ASSERT_EQ(qs_product_scan_poll(scan_, &status), QS_OK);
  EXPECT_EQ(status.state, QS_STATE_DONE);
  EXPECT_EQ(status.files_visited, 1u);
  EXPECT_EQ(Start(), QS_OK) << "the refusal left nothing behind";
}

TEST_F(HandleAdmission, Starting_during_a_start_answers_busy) {
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", Text(u"50"));
  qs_status second = QS_OK;
  DuringSleep(1, [this, &second] { second = Start(); });
  EXPECT_EQ(Start(), QS_OK);
  EXPECT_EQ(second, QS_BUSY);
  EXPECT_EQ(sleeps_, 2u) << "the refused start held nothing";
}

TEST_F(HandleAdmission, A_query_is_answered_while_a_start_is_inside) {
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", Text(u"50"));
  qs_product_scan_status status = {};
  qs_status polled = QS_FAILED;
  DuringSleep(2, [this, &status, &polled] { polled = qs_product_scan_poll(scan_, &status); });
  EXPECT_EQ(Start(), QS_OK);
  EXPECT_EQ(polled, QS_OK);
  EXPECT_EQ(status.state, QS_STATE_RUNNING);
}

TEST_F(HandleAdmission, A_cancel_during_the_hold_ends_the_scan_within_one_slice) {
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", Text(u"5000"));
  qs_status cancelled = QS_FAILED;
  DuringSleep(2, [this, &cancelled] { cancelled = qs_product_scan_cancel(scan_); });
  EXPECT_EQ(Start(), QS_CANCELLED);
  EXPECT_EQ(cancelled, QS_OK);
  EXPECT_EQ(windows_.sleeps(), (std::vector<std::uint32_t>{25, 25}));
  EXPECT_EQ(windows_.CallCount(Call::kFindFirstBasic), 0u) << "nothing is walked any more";

  windows_.SetHook(nullptr);
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", std::nullopt);
  EXPECT_EQ(Start(), QS_OK) << "the cancel ended with its scan";
}

TEST_F(HandleAdmission, A_cancel_without_a_running_scan_does_nothing) {
  EXPECT_EQ(qs_product_scan_cancel(scan_), QS_OK);
  EXPECT_EQ(Start(), QS_OK);
  EXPECT_EQ(qs_product_scan_cancel(scan_), QS_OK);
  EXPECT_EQ(Start(), QS_OK);
}

TEST_F(HandleAdmission, A_refused_argument_comes_before_the_busy_flag) {
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", Text(u"25"));
  qs_status null_destroy = QS_OK;
  DuringSleep(1, [&null_destroy] { null_destroy = qs_product_scan_destroy(nullptr); });
  EXPECT_EQ(Start(), QS_OK);
  EXPECT_EQ(null_destroy, QS_INVALID_ARGUMENT);
}

TEST_F(HandleAdmission, Two_handles_are_independent) {
  windows_.SetEnvironment(u"QUASTEL_SCAN_HOLD_MS", Text(u"25"));
  qs_status created = QS_FAILED;
  qs_status destroyed = QS_FAILED;
  DuringSleep(1, [&created, &destroyed] {
    qs_product_scan* other = nullptr;
    created = qs_product_scan_create(&other);
    destroyed = qs_product_scan_destroy(other);
  });
  EXPECT_EQ(Start(), QS_OK);
  EXPECT_EQ(created, QS_OK);
  EXPECT_EQ(destroyed, QS_OK);
}

TEST(HandleCreation, A_null_place_for_the_handle_is_refused) {
  EXPECT_EQ(qs_product_scan_create(nullptr), QS_INVALID_ARGUMENT);
}

TEST(HandleCreation, A_new_handle_is_idle) {
  SimulatedWindows windows;
  qs_product_scan* scan = nullptr;
  ASSERT_EQ(qs_product_scan_create(&scan), QS_OK);
  ASSERT_NE(scan, nullptr);
  qs_product_scan_status status = {};
  EXPECT_EQ(qs_product_scan_poll(scan, &status), QS_OK);
  EXPECT_EQ(status.state, QS_STATE_IDLE);
  EXPECT_EQ(qs_product_scan_destroy(scan), QS_OK);
}

}  // namespace
}  // namespace quastel
