// One row of a product scan's report.

#ifndef QUASTEL_SCAN_REPORT_ROW_H_
#define QUASTEL_SCAN_REPORT_ROW_H_

#include <cstdint>

#include "base/text.h"
#include "scan/large_file_class.h"

namespace quastel {

enum class RowKind : std::uint32_t { kJunk = 0, kLargeFile = 1, kDuplicate = 2, kGroup = 3 };

// The id of every group header; items count from 0.
inline constexpr std::uint64_t kNoItemId = QS_NO_ITEM_ID;

// What a row says besides its texts.
struct RowNumbers {
  std::uint64_t item_id = kNoItemId;
  std::uint64_t group_id = 0;
  std::uint64_t parent_group_id = 0;
  std::int64_t size = 0;
  std::uint64_t modified = 0;  // with `size` the snapshot that a clean checks
  RowKind kind = RowKind::kGroup;
  LargeFileCategory large_class = LargeFileCategory::kOther;
  bool deletable = false;
  bool preselect = false;
  bool deleted = false;
};

// A row as a scan kind makes it.
struct ReportRow : RowNumbers {
  Text path;
  Text name;
  Text title;
  Text location;
};

}  // namespace quastel

#endif  // QUASTEL_SCAN_REPORT_ROW_H_
