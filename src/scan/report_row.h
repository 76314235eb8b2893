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

struct ReportRow {
  Text path;
  Text name;
  Text title;
  Text location;
  std::uint64_t item_id = kNoItemId;
  std::uint64_t group_id = 0;
  RowKind kind = RowKind::kGroup;
  std::int64_t size = 0;
  std::uint64_t modified = 0;  // with `size` the snapshot that a clean checks
  bool deletable = false;
  bool preselect = false;
  bool deleted = false;
  LargeFileCategory large_class = LargeFileCategory::kOther;
  std::uint64_t parent_group_id = 0;
};

}  // namespace quastel

#endif  // QUASTEL_SCAN_REPORT_ROW_H_
