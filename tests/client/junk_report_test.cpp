#include "junk_report.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quastel::client {
namespace {

constexpr std::uint64_t kNested = std::uint64_t{1} << 60;

void AddHeader(Report& report, std::uint64_t id, std::uint64_t parent, const std::wstring& title,
               const std::wstring& folder = L"") {
  ScanRow row;
  row.title = title;
  row.path = folder;
  row.parent_group_id = parent;
  row.numbers.kind = QS_ROW_GROUP;
  row.numbers.group_id = id;
  row.numbers.item_id = QS_NO_ITEM_ID;
  report.rows.push_back(row);
}

void AddFile(Report& report, std::uint64_t group, std::int64_t size, const std::wstring& path,
             bool selected = true) {
  ScanRow row;
  row.path = path;
  row.name = path.substr(path.find_last_of(L'\\') + 1);
  row.title = L"as the library has it";
  row.location = L"as the library has it";
  row.numbers.group_id = group;
  row.numbers.size = size;
  row.numbers.preselect = selected ? 1 : 0;
  for (const ScanRow& other : report.rows) {
    row.numbers.item_id += other.numbers.kind == QS_ROW_GROUP ? 0U : 1U;
  }
  report.rows.push_back(row);
}

// Logs with a category in it that has a folder and a loose file; Empty; Downloads.
Report ThreeCategories() {
  Report report;
  report.request.kind = QS_SCAN_KIND_JUNK_RULES;
  AddHeader(report, 1, 0, L"Page_JunkFiles_Report_Category_OldLogs");
  AddHeader(report, kNested, 1, L"Temp logs", L"Q:\\temp");
  AddFile(report, kNested, 10, L"Q:\\temp\\b.log");
  AddFile(report, kNested, 30, L"Q:\\temp\\sub\\a.log");
  AddHeader(report, kNested + 1, 1, L"Page_JunkFiles_Report_Category_InnerLogs");
  AddHeader(report, kNested + 3, kNested + 1, L"sub", L"Q:\\inner\\sub");
  AddFile(report, kNested + 3, 5, L"Q:\\inner\\sub\\c.log");
  AddFile(report, kNested + 1, 7, L"Q:\\inner\\d.log");
  AddHeader(report, 2, 0, L"Empty");
  AddHeader(report, 3, 0, L"Downloads");
  AddFile(report, 3, 100, L"Q:\\dl\\e.zip", false);
  AddFile(report, 3, 10, L"Q:\\temp\\b.log", false);
  return report;
}

std::vector<std::wstring> Names(const Report& report) {
  std::vector<std::wstring> names;
  for (const ScanRow& row : report.rows) {
    names.push_back(row.name);
  }
  return names;
}

using List = std::vector<std::wstring>;

TEST(ArrangeJunk, Makes_groups_of_the_headers_and_counts_what_is_below_them) {
  Report report = ThreeCategories();
  ArrangeJunk(report);
  ASSERT_EQ(report.groups.size(), 6U);
  EXPECT_EQ(report.listed_groups, 6U);
  const auto counts = [&](std::size_t i) {
    const ReportGroup& group = report.groups[i];
    return std::vector<std::uint64_t>{group.depth,     group.count,          group.bytes,
                                      group.own_count, group.selected_count, group.selected_bytes};
  };
  using Counts = std::vector<std::uint64_t>;
  EXPECT_EQ(counts(0), (Counts{0, 4, 52, 0, 4, 52}));
  EXPECT_EQ(counts(1), (Counts{1, 2, 40, 2, 2, 40}));
  EXPECT_EQ(counts(2), (Counts{1, 2, 12, 1, 2, 12}));
  EXPECT_EQ(counts(3), (Counts{2, 1, 5, 1, 1, 5}));
  EXPECT_EQ(counts(4), (Counts{0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(counts(5), (Counts{0, 2, 110, 2, 0, 0}));
  EXPECT_EQ(report.groups[2].own_location, L"Q:\\inner");
  EXPECT_EQ(report.groups[5].own_location, L"");
  EXPECT_EQ(GroupName(report.groups[0]), L"Old logs");
  EXPECT_EQ(GroupName(report.groups[1]), L"Temp logs");
  EXPECT_EQ(SelectedFiles(report).count, 4U);
  EXPECT_EQ(SelectedFiles(report).bytes, 52U);
  EXPECT_EQ(ListedFiles(report).count, 6U);
  EXPECT_EQ(FilesOfOtherCategories(report).count, 0U);
}

TEST(ArrangeJunk, Gives_files_their_folder_and_their_outermost_category) {
  Report report = ThreeCategories();
  report.options.sort = SortKey::kPath;
  ArrangeJunk(report);
  EXPECT_EQ(Names(report), (List{L"e.zip", L"d.log", L"c.log", L"b.log", L"b.log", L"a.log"}));
  EXPECT_EQ(report.rows[2].location, L"Q:\\inner\\sub");
  EXPECT_EQ(report.rows[2].category, L"Old logs");
  // Two rows of one file are in the order in which they were found.
  EXPECT_EQ(report.rows[3].category, L"Old logs");
  EXPECT_EQ(report.rows[4].category, L"Downloads");
}

TEST(ArrangeJunk, Sorts_files_by_each_key_and_lists_the_first) {
  Report report = ThreeCategories();
  report.options.sort = SortKey::kSize;
  report.options.top = 2;
  ArrangeJunk(report);
  EXPECT_EQ(Names(report), (List{L"e.zip", L"a.log", L"b.log", L"b.log", L"d.log", L"c.log"}));
  EXPECT_EQ(report.listed, 2U);
  EXPECT_EQ(ListedFiles(report).bytes, 130U);

  report = ThreeCategories();
  report.options.sort = SortKey::kCategory;
  ArrangeJunk(report);
  EXPECT_EQ(Names(report), (List{L"e.zip", L"b.log", L"a.log", L"b.log", L"d.log", L"c.log"}));

  report = ThreeCategories();
  report.options.sort = SortKey::kName;
  ArrangeJunk(report);
  EXPECT_EQ(Names(report), (List{L"a.log", L"b.log", L"b.log", L"c.log", L"d.log", L"e.zip"}));
}

TEST(ArrangeJunk, Puts_what_another_category_holds_behind_the_rest) {
  Report report = ThreeCategories();
  report.options.junk.category = "old LOGS";
  ArrangeJunk(report);
  EXPECT_EQ(report.listed, 4U);
  EXPECT_EQ(report.listed_groups, 4U);
  EXPECT_EQ(report.rows.size(), 6U);
  EXPECT_EQ(report.groups.size(), 6U);
  EXPECT_EQ(FilesOfOtherCategories(report).count, 2U);
  EXPECT_EQ(FilesOfOtherCategories(report).bytes, 110U);
  EXPECT_EQ(SelectedFiles(report).count, 4U);

  report = ThreeCategories();
  report.options.junk.category = "Downloads";
  report.options.top = 1;
  ArrangeJunk(report);
  EXPECT_EQ(report.rows[0].name, L"e.zip");
  EXPECT_EQ(report.listed, 1U);
  EXPECT_EQ(report.groups[0].id, 3U);
  EXPECT_EQ(report.listed_groups, 1U);
}

TEST(ArrangeJunk, Takes_a_report_that_ended_before_its_first_row) {
  Report report;
  ArrangeJunk(report);
  EXPECT_EQ(report.listed, 0U);
  EXPECT_EQ(SelectedFiles(report).count, 0U);
}

}  // namespace
}  // namespace quastel::client
