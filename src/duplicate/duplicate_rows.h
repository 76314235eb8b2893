// The rows that a duplicate scan puts into the report.

#ifndef QUASTEL_DUPLICATE_DUPLICATE_ROWS_H_
#define QUASTEL_DUPLICATE_DUPLICATE_ROWS_H_

#include <cstdint>
#include <span>
#include <string>

#include "duplicate/candidate_list.h"
#include "duplicate/sampled_file.h"
#include "scan/report_row.h"

namespace quastel {
class ProductScan;
}

namespace quastel::duplicate {

class DuplicateRows {
 public:
  DuplicateRows(ProductScan& scan, const CandidateList& candidates, const SampledFiles& sampled)
      : scan_(scan), candidates_(candidates), sampled_(sampled) {}

  // Appends the files of one group, under the next number. Their key is that of their size and
  // sample, with `full_hash` behind it where they were hashed.
  void AppendGroup(std::span<const SampledIndex> files, const DigestText& full_hash);

  std::uint64_t group_count() const { return group_count_; }

 private:
  ProductScan& scan_;
  const CandidateList& candidates_;
  const SampledFiles& sampled_;
  std::uint64_t group_count_ = 0;
  ReportRow row_;  // kept, with the room of its texts, as is the key
  std::string key_;
};

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_DUPLICATE_ROWS_H_
