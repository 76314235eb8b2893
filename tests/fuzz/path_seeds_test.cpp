// The seeds of the targets that take paths apart and put them together.

#include <gtest/gtest.h>

#include "fuzz/filters_check.h"
#include "fuzz/junk_path_check.h"
#include "fuzz/path_rules_check.h"
#include "fuzz/seeds.h"

namespace quastel::fuzz {
namespace {

TEST(PathRulesSeeds, Keep_to_the_rules_and_reach_both_sides_of_each) {
  PathRulesSeen all;
  for (const Seed& seed : SeedsOf("path_rules")) {
    SCOPED_TRACE(seed.name);
    const PathRulesSeen seen = CheckPathRules(seed.bytes);
    all.lengthened |= seen.lengthened;
    all.unresolvable |= seen.unresolvable;
    all.absolute |= seen.absolute;
    all.contained |= seen.contained;
    all.same_directory |= seen.same_directory;
    all.under |= seen.under;
    all.directory |= seen.directory;
  }
  EXPECT_TRUE(all.lengthened);
  EXPECT_TRUE(all.unresolvable);
  EXPECT_TRUE(all.absolute);
  EXPECT_TRUE(all.contained);
  EXPECT_TRUE(all.same_directory);
  EXPECT_TRUE(all.under);
  EXPECT_TRUE(all.directory);
}

TEST(FilterSeeds, Keep_to_the_rules_and_reach_both_sides_of_each) {
  FiltersSeen all;
  for (const Seed& seed : SeedsOf("filters")) {
    SCOPED_TRACE(seed.name);
    const FiltersSeen seen = CheckFilters(seed.bytes);
    all.ignored += seen.ignored;
    all.protected_ones += seen.protected_ones;
    all.dropped += seen.dropped;
    all.kept += seen.kept;
  }
  EXPECT_GE(all.ignored, 3u);
  EXPECT_GE(all.protected_ones, 10u);
  EXPECT_GE(all.dropped, 5u);
  EXPECT_GE(all.kept, 20u);
}

TEST(JunkPathSeeds, Keep_to_the_rules_and_replace_both_placeholders) {
  JunkPathSeen all;
  for (const Seed& seed : SeedsOf("junk_path")) {
    SCOPED_TRACE(seed.name);
    const JunkPathSeen seen = CheckJunkPath(seed.bytes);
    all.homes += seen.homes;
    all.roots += seen.roots;
  }
  EXPECT_GE(all.homes, 5u);
  EXPECT_GE(all.roots, 5u);
}

}  // namespace
}  // namespace quastel::fuzz
