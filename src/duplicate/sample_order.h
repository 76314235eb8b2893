// The order of the groups that samples make.
//
// It is that of the group keys as texts: the size in decimal digits, a space, the sample. So 10000
// comes before 200. No key is written down for it.

#ifndef QUASTEL_DUPLICATE_SAMPLE_ORDER_H_
#define QUASTEL_DUPLICATE_SAMPLE_ORDER_H_

#include <cstdint>
#include <vector>

#include "duplicate/candidate_list.h"
#include "duplicate/sampled_file.h"

namespace quastel::duplicate {

// A number that orders by its decimal digits, as texts with a space behind them do.
class DecimalOrder {
 public:
  explicit DecimalOrder(std::int64_t number);

  // NOLINTNEXTLINE(modernize-use-nullptr,readability-implicit-bool-conversion): nobody wrote these.
  friend auto operator<=>(const DecimalOrder&, const DecimalOrder&) = default;

 private:
  bool is_positive_;      // a minus sign comes before every digit
  std::uint64_t digits_;  // with zeros behind them, up to the longest number
  std::uint32_t length_ = 1;
};

// Puts the files, which are in the order of their sizes, into that of their group keys. Equal keys
// stay in the order in which they were.
void PutInSampleOrder(const CandidateList& candidates, const SampledFiles& sampled,
                      std::vector<SampledIndex>& files);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_SAMPLE_ORDER_H_
