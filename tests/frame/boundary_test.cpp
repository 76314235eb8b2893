#include "frame/boundary.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <system_error>

namespace quastel {
namespace {

TEST(Boundary, The_status_of_the_operation_passes_through) {
  for (qs_status status = QS_OK; status <= QS_BUSY; ++status) {
    EXPECT_EQ(StatusBoundary([status] { return status; }), status);
  }
}

TEST(Boundary, Whatever_is_thrown_becomes_a_failed_status) {
  EXPECT_EQ(StatusBoundary([]() -> qs_status { throw std::bad_alloc(); }), QS_FAILED);
  EXPECT_EQ(StatusBoundary([]() -> qs_status { throw std::runtime_error("x"); }), QS_FAILED);
  EXPECT_EQ(StatusBoundary([]() -> qs_status {
              throw std::system_error(std::make_error_code(std::errc::device_or_resource_busy));
            }),
            QS_FAILED);
  EXPECT_EQ(StatusBoundary([]() -> qs_status { throw 7; }), QS_FAILED);
  EXPECT_EQ(StatusBoundary([]() -> qs_status { throw "text"; }), QS_FAILED);
}

TEST(Boundary, A_predicate_answers_one_or_zero) {
  EXPECT_EQ(PredicateBoundary([] { return true; }), 1);
  EXPECT_EQ(PredicateBoundary([] { return false; }), 0);
}

TEST(Boundary, A_predicate_that_throws_answers_zero) {
  EXPECT_EQ(PredicateBoundary([]() -> bool { throw std::bad_alloc(); }), 0);
  EXPECT_EQ(PredicateBoundary([]() -> bool { throw 7; }), 0);
}

TEST(Boundary, Nothing_can_leave_it) {
  const auto throwing_status = []() -> qs_status { throw 7; };
  const auto throwing_answer = []() -> bool { throw 7; };
  static_assert(noexcept(StatusBoundary(throwing_status)));
  static_assert(noexcept(PredicateBoundary(throwing_answer)));
  EXPECT_NO_THROW(static_cast<void>(StatusBoundary(throwing_status)));
  EXPECT_NO_THROW(static_cast<void>(PredicateBoundary(throwing_answer)));
}

}  // namespace
}  // namespace quastel
