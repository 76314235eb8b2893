// A product scan's handle and its answers, for the tests.

#ifndef QUASTEL_TESTS_DLL_SCAN_HANDLE_H_
#define QUASTEL_TESTS_DLL_SCAN_HANDLE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "quastel_core.h"

namespace quastel::dll_test {

class ScanHandle {
 public:
  ScanHandle() { EXPECT_EQ(QS_OK, qs_product_scan_create(&scan_)); }
  ~ScanHandle() { EXPECT_EQ(QS_OK, qs_product_scan_destroy(scan_)); }
  ScanHandle(const ScanHandle&) = delete;
  ScanHandle& operator=(const ScanHandle&) = delete;

  qs_product_scan* get() const { return scan_; }

 private:
  qs_product_scan* scan_ = nullptr;
};

struct ReportedRow {
  std::wstring path;
  std::wstring name;
  std::wstring title;
  std::wstring location;
  qs_product_scan_row numbers;
  std::uint64_t parent_group_id;
};

// Blocks until the scan ends; no protection.
qs_status RunLargeFileScan(qs_product_scan* scan, const std::vector<std::wstring>& roots);

ReportedRow ReadRow(qs_product_scan* scan, std::uint64_t index);
std::vector<ReportedRow> ReadRows(qs_product_scan* scan);
qs_product_scan_status Poll(qs_product_scan* scan);

}  // namespace quastel::dll_test

#endif  // QUASTEL_TESTS_DLL_SCAN_HANDLE_H_
