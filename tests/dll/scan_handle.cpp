#include "scan_handle.h"

namespace quastel::dll_test {

qs_status RunLargeFileScan(qs_product_scan* scan, const std::vector<std::wstring>& roots) {
  std::vector<const qs_char*> pointers;
  for (const std::wstring& root : roots) {
    pointers.push_back(root.c_str());
  }
  qs_product_scan_request request{};
  request.size = sizeof(request);
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = pointers.data();
  request.root_count = pointers.size();
  return qs_product_scan_start(scan, &request);
}

ReportedRow ReadRow(qs_product_scan* scan, std::uint64_t index) {
  std::uint64_t path = 0;
  std::uint64_t name = 0;
  std::uint64_t title = 0;
  std::uint64_t location = 0;
  ReportedRow row{};
  EXPECT_EQ(QS_BUFFER_TOO_SMALL,
            qs_product_scan_report_row(scan, index, nullptr, 0, &path, nullptr, 0, &name, nullptr,
                                       0, &title, nullptr, 0, &location, &row.numbers));
  row.path.resize(path);
  row.name.resize(name);
  row.title.resize(title);
  row.location.resize(location);
  EXPECT_EQ(QS_OK,
            qs_product_scan_report_row(scan, index, row.path.data(), path, nullptr, row.name.data(),
                                       name, nullptr, row.title.data(), title, nullptr,
                                       row.location.data(), location, nullptr, &row.numbers));
  for (std::wstring* text : {&row.path, &row.name, &row.title, &row.location}) {
    EXPECT_EQ(L'\0', text->back());
    text->pop_back();
  }
  EXPECT_EQ(QS_OK, qs_product_scan_report_row_parent_group_id(scan, index, &row.parent_group_id));
  return row;
}

std::vector<ReportedRow> ReadRows(qs_product_scan* scan) {
  std::uint64_t count = 0;
  EXPECT_EQ(QS_OK, qs_product_scan_report_count(scan, &count));
  std::vector<ReportedRow> rows;
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(ReadRow(scan, i));
  }
  return rows;
}

qs_product_scan_status Poll(qs_product_scan* scan) {
  qs_product_scan_status status{};
  EXPECT_EQ(QS_OK, qs_product_scan_poll(scan, &status));
  return status;
}

}  // namespace quastel::dll_test
