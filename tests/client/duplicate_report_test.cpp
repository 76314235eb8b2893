#include "duplicate_report.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quastel::client {
namespace {

void Add(Report& report, std::uint64_t group, std::int64_t size, const std::wstring& path) {
  ScanRow row;
  row.path = path;
  row.title = L"title";
  row.location = L"key " + std::to_wstring(group);
  row.numbers.group_id = group;
  row.numbers.size = size;
  report.rows.push_back(row);
}

// Groups 1, 2 and 3 with 20, 30 and 60 bytes to gain.
Report ThreeGroups() {
  Report report;
  report.options.sort = SortKey::kReclaimable;
  Add(report, 1, 10, L"Q:\\b");
  Add(report, 1, 10, L"Q:\\x\\a");
  Add(report, 1, 10, L"Q:\\c");
  Add(report, 2, 30, L"Q:\\d");
  Add(report, 2, 30, L"Q:\\a");
  Add(report, 3, 60, L"Q:\\z");
  Add(report, 3, 60, L"\\\\?\\Q:\\y");
  return report;
}

std::vector<std::uint64_t> Ids(const Report& report) {
  std::vector<std::uint64_t> ids;
  for (const ReportGroup& group : report.groups) {
    ids.push_back(group.id);
  }
  return ids;
}

std::vector<std::uint64_t> IdsSortedBy(SortKey key) {
  Report report = ThreeGroups();
  report.options.sort = key;
  ArrangeDuplicates(report);
  return Ids(report);
}

using List = std::vector<std::uint64_t>;

TEST(ArrangeDuplicates, Sorts_groups_by_each_key) {
  EXPECT_EQ(IdsSortedBy(SortKey::kReclaimable), (List{3, 2, 1}));
  EXPECT_EQ(IdsSortedBy(SortKey::kSize), (List{3, 2, 1}));
  EXPECT_EQ(IdsSortedBy(SortKey::kCount), (List{1, 2, 3}));
  EXPECT_EQ(IdsSortedBy(SortKey::kPath), (List{2, 1, 3}));
}

TEST(ArrangeDuplicates, Puts_the_rows_in_the_order_of_their_groups_and_by_path) {
  Report report = ThreeGroups();
  ArrangeDuplicates(report);
  std::vector<std::wstring> paths;
  for (const ScanRow& row : report.rows) {
    paths.push_back(row.path);
  }
  EXPECT_EQ(paths, (std::vector<std::wstring>{L"\\\\?\\Q:\\y", L"Q:\\z", L"Q:\\a", L"Q:\\d",
                                              L"Q:\\b", L"Q:\\c", L"Q:\\x\\a"}));
  EXPECT_EQ(report.rows.back().location, L"Q:\\x");
  EXPECT_EQ(report.rows.back().group_key, L"key 1");
  EXPECT_EQ(report.listed, 7U);
  EXPECT_EQ(report.listed_groups, 3U);
}

TEST(ArrangeDuplicates, Counts_what_each_group_would_free) {
  Report report = ThreeGroups();
  ArrangeDuplicates(report);
  EXPECT_EQ(report.groups[0].Reclaimable(), 60U);
  EXPECT_EQ(report.groups[1].Reclaimable(), 30U);
  EXPECT_EQ(report.groups[2].Reclaimable(), 20U);
  EXPECT_EQ(TotalReclaimable(report), 110U);
}

TEST(ArrangeDuplicates, Lists_whole_groups) {
  Report report = ThreeGroups();
  report.options.top = 2;
  ArrangeDuplicates(report);
  EXPECT_EQ(report.listed_groups, 2U);
  EXPECT_EQ(report.listed, 4U);
  EXPECT_EQ(report.rows.size(), 7U);
  EXPECT_EQ(TotalReclaimable(report), 110U);

  report = ThreeGroups();
  report.options.top = 0;
  ArrangeDuplicates(report);
  EXPECT_EQ(report.listed_groups, 0U);
  EXPECT_EQ(report.listed, 0U);
}

TEST(ArrangeDuplicates, Moves_groups_of_smaller_files_behind_the_listed_ones) {
  Report report = ThreeGroups();
  report.options.sort = SortKey::kCount;
  report.options.min_size = 30;
  ArrangeDuplicates(report);
  EXPECT_EQ(Ids(report), (List{2, 3, 1}));
  EXPECT_EQ(report.listed_groups, 2U);
  EXPECT_EQ(report.listed, 4U);
  EXPECT_EQ(TotalReclaimable(report), 110U);
}

TEST(ArrangeDuplicates, Takes_a_report_without_rows) {
  Report report;
  ArrangeDuplicates(report);
  EXPECT_EQ(report.listed_groups, 0U);
  EXPECT_EQ(TotalReclaimable(report), 0U);
}

}  // namespace
}  // namespace quastel::client
