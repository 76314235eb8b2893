#ifndef QUASTEL_APPS_QUASTEL_SCAN_ROW_H_
#define QUASTEL_APPS_QUASTEL_SCAN_ROW_H_

#include <quastel_core.h>

#include <cstdint>
#include <string>

namespace quastel::client {

// A file that a scan found.
struct ScanRow {
  std::wstring path;
  std::wstring name;
  std::wstring title;
  std::wstring location;
  std::wstring group_key;    // duplicates only
  std::wstring category;     // junk only: the words of the outermost category
  std::wstring rule_folder;  // junk only: that of its group; empty for a category's own files
  std::uint64_t parent_group_id = 0;
  qs_product_scan_row numbers = {};
};

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_ROW_H_
