#include "duplicate/sample_order.h"

#include <algorithm>
#include <span>
#include <utility>

#include "duplicate/equal_runs.h"

namespace quastel::duplicate {
namespace {

// Files of one size.
struct SizeRun {
  DecimalOrder size;
  std::span<SampledIndex> files;
};

}  // namespace

DecimalOrder::DecimalOrder(std::int64_t number)
    : is_positive_(number >= 0),
      digits_(is_positive_ ? static_cast<std::uint64_t>(number)
                           : 0 - static_cast<std::uint64_t>(number)) {
  constexpr std::uint32_t kMostDigits = 19;
  for (std::uint64_t rest = digits_; rest >= 10; rest /= 10) {
    ++length_;
  }
  for (std::uint32_t i = length_; i < kMostDigits; ++i) {
    digits_ *= 10;
  }
}

void PutInSampleOrder(const CandidateList& candidates, const SampledFiles& sampled,
                      std::vector<SampledIndex>& files) {
  const auto size_of = [&](SampledIndex file) {
    return candidates[sampled[file].candidate].signed_size();
  };
  const auto by_sample = [&](SampledIndex a, SampledIndex b) {
    const DigestText& sample_of_a = sampled[a].result;
    const DigestText& sample_of_b = sampled[b].result;
    return sample_of_a < sample_of_b || (!(sample_of_b < sample_of_a) && a < b);
  };
  std::vector<SizeRun> runs;
  ForEachRun(
      std::span(files), [&](SampledIndex a, SampledIndex b) { return size_of(a) == size_of(b); },
      [&](std::span<SampledIndex> run) {
        std::sort(run.begin(), run.end(), by_sample);
        runs.push_back({DecimalOrder(size_of(run[0])), run});
        return true;
      });
  std::sort(runs.begin(), runs.end(),
            [](const SizeRun& a, const SizeRun& b) { return a.size < b.size; });
  std::vector<SampledIndex> ordered;
  ordered.reserve(files.size());
  for (const SizeRun& run : runs) {
    ordered.insert(ordered.end(), run.files.begin(), run.files.end());
  }
  files = std::move(ordered);
}

}  // namespace quastel::duplicate
