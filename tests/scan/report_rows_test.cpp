#include "scan/scan_fixture.h"

namespace quastel::scan_tests {
namespace {

// Runs a scan that appends these rows.
std::vector<Row> Append(OwnKindScan& own, std::vector<ReportRow> rows) {
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    for (ReportRow& row : rows) {
      scan.AppendRow(row);
    }
    return QS_OK;
  }),
            QS_OK);
  return own.Report();
}

std::vector<std::uint64_t> IdsOf(const std::vector<Row>& rows) {
  std::vector<std::uint64_t> ids;
  for (const Row& row : rows) {
    ids.push_back(row.numbers.item_id);
  }
  return ids;
}

TEST(ReportRows, Items_count_from_0_and_headers_have_no_id) {
  struct Case {
    const char* name;
    std::vector<RowKind> kinds;
    std::vector<std::uint64_t> ids;
  };
  const Case cases[] = {
      {"no row", {}, {}},
      {"one header", {RowKind::kGroup}, {UINT64_MAX}},
      {"one header followed by two files",
       {RowKind::kGroup, RowKind::kLargeFile, RowKind::kLargeFile},
       {UINT64_MAX, 0, 1}},
      {"headers between items of every kind",
       {RowKind::kJunk, RowKind::kGroup, RowKind::kGroup, RowKind::kDuplicate, RowKind::kGroup,
        RowKind::kLargeFile, RowKind::kJunk},
       {0, UINT64_MAX, UINT64_MAX, 1, UINT64_MAX, 2, 3}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SimulatedWindows machine;
    OwnKindScan own;
    std::vector<ReportRow> rows;
    std::uint64_t items = 0;
    for (const RowKind kind : c.kinds) {
      rows.push_back(RowOf(kind, 1, 10, u"p"));
      items += kind == RowKind::kGroup ? 0 : 1;
    }
    EXPECT_EQ(IdsOf(Append(own, rows)), c.ids);
    EXPECT_EQ(own.Poll().item_count, items);
    EXPECT_EQ(own.Performance().item_count, items);
    EXPECT_EQ(own.Performance().row_count, c.kinds.size());
    EXPECT_EQ(own.Poll().total_bytes, items * 10) << "the size of a header is no item's";
  }
}

TEST(ReportRows, Get_their_ids_whatever_the_scan_kind_left_in_them) {
  SimulatedWindows machine;
  OwnKindScan own;
  ReportRow item = RowOf(RowKind::kJunk, 1, 1, u"p");
  item.item_id = 77;
  ReportRow header = RowOf(RowKind::kGroup, 1, 1, u"g");
  header.item_id = 78;
  EXPECT_EQ(IdsOf(Append(own, {item, header})), (std::vector<std::uint64_t>{0, UINT64_MAX}));
}

TEST(ReportRows, Count_only_positive_sizes_into_the_total) {
  SimulatedWindows machine;
  OwnKindScan own;
  const std::vector<Row> rows =
      Append(own, {RowOf(RowKind::kJunk, 1, 100, u"a"), RowOf(RowKind::kJunk, 1, 0, u"b"),
                   RowOf(RowKind::kJunk, 1, -1, u"c"), RowOf(RowKind::kJunk, 1, INT64_MIN, u"d"),
                   RowOf(RowKind::kJunk, 1, 1, u"e")});
  EXPECT_EQ(own.Poll().total_bytes, 101u);
  EXPECT_EQ(own.Poll().item_count, 5u);
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[2].numbers.size, -1);
  EXPECT_EQ(rows[3].numbers.size, INT64_MIN);
}

TEST(ReportRows, Keep_every_field_and_their_order) {
  SimulatedWindows machine;
  OwnKindScan own;
  ReportRow item;
  item.path = u"C:\\p\\n";
  item.name = u"n";
  item.title = u"t";
  item.location = u"C:\\p";
  item.group_id = 0x1000000000000000;
  item.kind = RowKind::kDuplicate;
  item.size = 123;
  item.modified = 0xFEDCBA9876543210;
  item.deletable = true;
  item.preselect = true;
  item.large_class = LargeFileCategory::kMedia;
  item.parent_group_id = 42;
  ReportRow header;
  header.title = u"Group";
  header.group_id = 7;
  const std::vector<Row> rows = Append(own, {item, header});

  Row expected_item;
  expected_item.path = u"C:\\p\\n";
  expected_item.name = u"n";
  expected_item.title = u"t";
  expected_item.location = u"C:\\p";
  expected_item.numbers = {
      0, 0x1000000000000000, QS_ROW_DUPLICATE, 0, 123, 0xFEDCBA9876543210, 1, 1, 0, 3};
  expected_item.parent_group_id = 42;
  Row expected_header;
  expected_header.title = u"Group";
  expected_header.numbers = {UINT64_MAX, 7, QS_ROW_GROUP, 0, 0, 0, 0, 0, 0, 4};
  EXPECT_EQ(rows, (std::vector<Row>{expected_item, expected_header}));
}

TEST(ReportRows, Keep_a_name_that_is_not_the_end_of_the_path) {
  SimulatedWindows machine;
  OwnKindScan own;
  ReportRow other = RowOf(RowKind::kJunk, 1, 1, u"C:\\p\\LONGNA~1.TXT");
  other.name = u"long name.txt";
  ReportRow longer = RowOf(RowKind::kJunk, 1, 1, u"n");
  longer.name = u"a name";
  ReportRow ending = RowOf(RowKind::kJunk, 1, 1, u"C:\\p\\n");
  ending.name = u"n";
  const std::vector<Row> rows = Append(own, {other, longer, ending});
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].name, u"long name.txt");
  EXPECT_EQ(rows[0].path, u"C:\\p\\LONGNA~1.TXT");
  EXPECT_EQ(rows[1].name, u"a name");
  EXPECT_EQ(rows[2].name, u"n");
}

TEST(ReportRows, Can_be_read_as_soon_as_they_are_appended) {
  SimulatedWindows machine;
  OwnKindScan own;
  EXPECT_EQ(own.Run([&](ProductScan& scan, const OwnedRequest&) {
    for (std::uint64_t i = 0; i < 1'000; ++i) {
      scan.AppendRow(RowOf(RowKind::kJunk, i, 1, u"p"));
      qs_product_scan_row row = {};
      EXPECT_EQ(scan.CopyRow(i, {}, row), QS_BUFFER_TOO_SMALL);
      EXPECT_EQ(row.group_id, i);
      EXPECT_EQ(scan.CopyRow(i + 1, {}, row), QS_NOT_FOUND);
      EXPECT_EQ(scan.RowCount(), i + 1);
    }
    return QS_OK;
  }),
            QS_OK);
}

TEST(ReportRows, Of_the_next_scan_count_from_0_again) {
  SimulatedWindows machine;
  OwnKindScan own;
  Append(own, {RowOf(RowKind::kJunk, 1, 1, u"a"), RowOf(RowKind::kJunk, 1, 1, u"b")});
  EXPECT_EQ(IdsOf(Append(own, {RowOf(RowKind::kJunk, 1, 5, u"c")})), std::vector<std::uint64_t>{0});
  EXPECT_EQ(own.Poll().item_count, 1u);
  EXPECT_EQ(own.Poll().total_bytes, 5u);
  EXPECT_EQ(own.Performance().row_count, 1u);
}

}  // namespace
}  // namespace quastel::scan_tests
