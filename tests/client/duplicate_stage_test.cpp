#include "duplicate_stage.h"

#include <gtest/gtest.h>

#include <string>

namespace quastel::client {
namespace {

TEST(DuplicateStage, Follows_the_timers_of_the_library) {
  qs_product_scan_status status = {};
  qs_product_scan_performance performance = {};
  const auto stage = [&] { return std::string(DuplicateStage(status, performance)); };
  EXPECT_EQ(stage(), "Walking");
  performance.filter_roots_us = 1;
  performance.elapsed_us = 1000;
  status.files_visited = 10;
  EXPECT_EQ(stage(), "Walking");
  performance.walk_us = 1;
  EXPECT_EQ(stage(), "Sampling");
  status.path_published = 1;
  performance.sampled_items = 5;
  EXPECT_EQ(stage(), "Sampling");
  performance.sample_us = 1;
  EXPECT_EQ(stage(), "Hashing");
  performance.hash_us = 1;
  EXPECT_EQ(stage(), "Finishing");
}

TEST(DuplicateStage, Survives_timers_that_stay_at_zero) {
  qs_product_scan_status status = {};
  status.path_published = 1;
  EXPECT_EQ(std::string(DuplicateStage(status, {})), "Sampling");
  qs_product_scan_performance performance = {};
  performance.plan_hashes_us = 1;
  EXPECT_EQ(std::string(DuplicateStage(status, performance)), "Hashing");
  performance.hashed_items = 1;
  EXPECT_EQ(std::string(DuplicateStage(status, performance)), "Finishing");
}

}  // namespace
}  // namespace quastel::client
