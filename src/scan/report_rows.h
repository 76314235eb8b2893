// The rows of a report, kept tightly: there may be a million of them.

#ifndef QUASTEL_SCAN_REPORT_ROWS_H_
#define QUASTEL_SCAN_REPORT_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "base/arena.h"
#include "base/block_list.h"
#include "base/text.h"
#include "scan/report_row.h"

namespace quastel {

// A row as the report keeps it. Its texts stay where they are as long as the report.
struct StoredRow : RowNumbers {
  TextView path;
  TextView name;
  TextView title;
  TextView location;
};

class ReportRows {
 public:
  // Copies the row behind the others, under this id. Where memory runs out, the report is as it
  // was.
  void Append(const ReportRow& row, std::uint64_t item_id);

  std::size_t size() const { return rows_.size(); }
  const StoredRow& operator[](std::size_t index) const { return rows_[index]; }

  void MarkDeleted(std::size_t index) { rows_[index].deleted = true; }

 private:
  BlockList<StoredRow> rows_;
  Arena texts_;
};

}  // namespace quastel

#endif  // QUASTEL_SCAN_REPORT_ROWS_H_
