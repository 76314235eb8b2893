#include "duplicate/duplicate_rows.h"

#include "duplicate/sample.h"
#include "scan/product_scan.h"

namespace quastel::duplicate {
namespace {

std::string KeyOf(std::int64_t size, const DigestText& sample, const DigestText& full_hash) {
  const std::string sample_key = SampleGroupKey(size, sample.Get());
  return full_hash.empty() ? sample_key : HashGroupKey(sample_key, full_hash.Get());
}

}  // namespace

void DuplicateRows::AppendGroup(std::span<const SampledIndex> files, const DigestText& full_hash) {
  const SampledFile& first = sampled_[files[0]];
  const std::string key =
      KeyOf(candidates_[first.candidate].signed_size(), first.result, full_hash);
  candidates_.GetName(first.candidate, row_.title);
  row_.location.assign(key.begin(), key.end());
  row_.group_id = ++group_count_;
  row_.kind = RowKind::kDuplicate;
  row_.deletable = true;
  for (const SampledIndex file : files) {
    const CandidateIndex index = sampled_[file].candidate;
    const Candidate& candidate = candidates_[index];
    candidates_.GetPath(index, row_.path);
    candidates_.GetName(index, row_.name);
    row_.size = candidate.signed_size();
    row_.modified = candidate.last_write;
    scan_.AppendRow(row_);
  }
}

}  // namespace quastel::duplicate
