#include "duplicate/duplicate_rows.h"

#include "duplicate/sample.h"
#include "scan/product_scan.h"

namespace quastel::duplicate {
namespace {

// SampleGroupKey, and HashGroupKey where there is a hash, without a text for each part.
void PutGroupKey(std::int64_t size, const DigestText& sample, const DigestText& full_hash,
                 std::string& key) {
  key = SampleGroupKey(size, {});
  sample.AppendTo(key);
  if (!full_hash.empty()) {
    key += ' ';
    full_hash.AppendTo(key);
  }
}

}  // namespace

void DuplicateRows::AppendGroup(std::span<const SampledIndex> files, const DigestText& full_hash) {
  const SampledFile& first = sampled_[files[0]];
  PutGroupKey(candidates_[first.candidate].signed_size(), first.result, full_hash, key_);
  candidates_.GetName(first.candidate, row_.title);
  row_.location.assign(key_.begin(), key_.end());
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
