#include "duplicate/shared_heads.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>

#include "duplicate/equal_runs.h"
#include "duplicate/number_sort.h"

namespace quastel::duplicate {

std::vector<SampledIndex> FindSharedHeads(const CandidateList& candidates,
                                          const SampledFiles& sampled) {
  const auto head_of = [&sampled](SampledIndex file) { return sampled[file].result.head(); };
  const auto comes_before = [&head_of](SampledIndex a, SampledIndex b) {
    return head_of(a) < head_of(b);
  };
  // Nearly all heads are hashes, whose order is that of their numbers. The others, the digits of
  // small files and what a cache may hold besides, equal none of them.
  std::vector<NumberedEntry> by_hash;
  std::vector<SampledIndex> by_text;
  by_hash.reserve(sampled.size());
  for (SampledIndex i = 0; i < sampled.size(); ++i) {
    const DigestText head = head_of(i);
    if (head.is_hash()) {
      by_hash.push_back({head.hash_number(), i});
    } else if (!sampled[i].result.empty()) {
      by_text.push_back(i);
    }
  }
  SortByNumber(by_hash);
  std::sort(by_text.begin(), by_text.end(), [&](SampledIndex a, SampledIndex b) {
    return comes_before(a, b) || (!comes_before(b, a) && a < b);
  });

  std::vector<SampledIndex> shared;
  // The files of a run are in the order of their sizes.
  const auto is_wanted = [&](std::size_t size, SampledIndex first) {
    return size > 1 && candidates[sampled[first].candidate].size > kSmallFile;
  };
  ForEachRun(
      std::span(by_hash),
      [](const NumberedEntry& a, const NumberedEntry& b) { return a.number == b.number; },
      [&](std::span<NumberedEntry> run) {
        if (is_wanted(run.size(), run[0].index)) {
          std::transform(run.begin(), run.end(), std::back_inserter(shared),
                         [](const NumberedEntry& entry) { return entry.index; });
        }
        return true;
      });
  const auto hashes = static_cast<std::ptrdiff_t>(shared.size());
  ForEachRun(
      std::span(by_text),
      [&head_of](SampledIndex a, SampledIndex b) { return head_of(a) == head_of(b); },
      [&](std::span<SampledIndex> run) {
        if (is_wanted(run.size(), run[0])) {
          shared.insert(shared.end(), run.begin(), run.end());
        }
        return true;
      });
  std::inplace_merge(shared.begin(), shared.begin() + hashes, shared.end(), comes_before);
  return shared;
}

}  // namespace quastel::duplicate
