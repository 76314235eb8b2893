#include "duplicate/duplicate_scan.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/arena.h"
#include "duplicate/candidate_list.h"
#include "duplicate/duplicate_rows.h"
#include "duplicate/equal_runs.h"
#include "duplicate/file_hash.h"
#include "duplicate/file_sample.h"
#include "duplicate/hash_cache.h"
#include "duplicate/hash_text.h"
#include "duplicate/known_files.h"
#include "duplicate/number_sort.h"
#include "duplicate/sample_order.h"
#include "duplicate/sampled_file.h"
#include "duplicate/shared_heads.h"
#include "duplicate/storage_kind.h"
#include "duplicate/worker_pool.h"
#include "fs/enumeration.h"
#include "scan/product_scan.h"
#include "scan/root_filter.h"

namespace quastel::duplicate {
namespace {

using Performance = qs_product_scan_performance;

// The longest group key that a sample may make, with its terminator.
constexpr std::size_t kSampleKeyCapacity = 384;

// Only a text from a cache file can be too long for it.
bool HasSampleKey(std::int64_t size, const DigestText& sample) {
  return !sample.refers() || SampleGroupKey(size, {}).size() + sample.size() < kSampleKeyCapacity;
}

// A second look at a file. The result is the sample of its tail, or the whole sample if the cache
// had it.
struct TailItem : WorkItem {
  SampledIndex file = 0;
};

// A file to be hashed in full; the result is its hash.
struct HashItem : WorkItem {
  SampledIndex file = 0;
};

// One run of the scan. The members are what the stages hand to each other.
class DuplicateScan {
 public:
  DuplicateScan(ProductScan& scan, const OwnedRequest& request) : scan_(scan), request_(request) {}

  qs_status Run() {
    known_.Load(CacheLocationOf(request_.user_home), scan_.cancel_flag());
    if (scan_.IsCancelled()) {
      return QS_CANCELLED;
    }
    struct Stage {
      qs_status (DuplicateScan::*run)();
      ProductScan::PerformanceField time;
    };
    constexpr Stage kStages[] = {
        {&DuplicateScan::FilterRoots, &Performance::filter_roots_us},
        {&DuplicateScan::EnumerateCandidates, &Performance::walk_us},
        {&DuplicateScan::ProbeStorage, nullptr},
        {&DuplicateScan::GroupBySize, &Performance::group_by_size_us},
        {&DuplicateScan::SampleContents, &Performance::sample_us},
        {&DuplicateScan::GroupBySample, &Performance::sample_keys_us},
        {&DuplicateScan::PlanHashes, &Performance::plan_hashes_us},
        {&DuplicateScan::HashContents, &Performance::hash_us},
        {&DuplicateScan::GroupByHash, &Performance::group_by_hash_us},
        {&DuplicateScan::RefreshCache, nullptr},
    };
    for (const Stage& stage : kStages) {
      std::optional<PerfTimer> timer;
      if (stage.time != nullptr) {
        timer.emplace(scan_, stage.time);
      }
      const qs_status status = (this->*stage.run)();
      if (status != QS_OK) {
        return status;
      }
    }
    return scan_.IsCancelled() ? QS_CANCELLED : QS_OK;
  }

 private:
  const Candidate& CandidateOf(const SampledFile& file) const {
    return candidates_[file.candidate];
  }

  qs_status FilterRoots() {
    roots_ = FilterScanRoots(request_.roots);
    return QS_OK;
  }

  qs_status EnumerateCandidates() {
    if (request_.protect_system) {
      protection_.emplace(request_.system_root, request_.user_home);
    }
    const FileWalkOptions options = {.pattern = {},
                                     .recursive = true,
                                     .protection = protection_ ? &*protection_ : nullptr,
                                     .cancel = scan_.cancel_flag()};
    for (const Text& root : roots_) {
      const qs_status status = VisitFiles(root, options, OnDuplicateFileFound, this);
      if (status != QS_OK) {
        return status;
      }
    }
    return QS_OK;
  }

  static void OnDuplicateFileFound(void* user, const WalkedFile& file) {
    auto& self = *static_cast<DuplicateScan*>(user);
    self.scan_.ReportProgress(file.path.data(), static_cast<std::int64_t>(file.size));
    const bool is_left_out =
        IsIgnoredFile(file.path) ||
        (self.protection_ && self.protection_->ContainsFile(file.path, file.name));
    if (!is_left_out) {
      self.candidates_.Add(file.path, file.name, file.size, file.last_write);
    }
  }

  qs_status ProbeStorage() {
    scan_.SetPerformanceField(&Performance::candidates, candidates_.size());
    storage_ = ProbeStorageKind(roots_);
    return QS_OK;
  }

  // Keeps the files whose size another one has: nothing else is ever opened.
  qs_status GroupBySize() {
    std::vector<NumberedEntry> by_size;
    by_size.reserve(candidates_.size());
    for (CandidateIndex i = 0; i < candidates_.size(); ++i) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      by_size.push_back({candidates_[i].size, i});
    }
    SortByNumber(by_size);
    const auto same_size = [](const NumberedEntry& a, const NumberedEntry& b) {
      return a.number == b.number;
    };
    // Those that are alone leave the array first, so that what stays is made as large as it gets.
    auto end = by_size.begin();
    ForEachRun(std::span(by_size), same_size, [&end](std::span<NumberedEntry> run) {
      if (run.size() > 1) {
        end = std::copy(run.begin(), run.end(), end);
      }
      return true;
    });
    by_size.erase(end, by_size.end());
    sampled_.resize(by_size.size());
    std::transform(by_size.begin(), by_size.end(), sampled_.begin(),
                   [](const NumberedEntry& entry) {
                     SampledFile file;
                     file.candidate = entry.index;
                     return file;
                   });
    return QS_OK;
  }

  qs_status SampleContents() {
    const qs_status status = SampleHeads();
    return status == QS_OK ? SampleTails() : status;
  }

  qs_status SampleHeads() {
    known_.FindSamples(sampled_, scan_.cancel_flag());
    if (scan_.IsCancelled()) {
      return QS_CANCELLED;
    }
    // Small files come first in the order of the sizes: each has a place for its digits.
    const auto small_end = std::find_if(
        sampled_.begin(), sampled_.end(),
        [this](const SampledFile& file) { return CandidateOf(file).size > kSmallFile; });
    small_samples_.resize(static_cast<std::size_t>(small_end - sampled_.begin()));
    const StageEnd end = RunStage<SampledFile>(
        sampled_, [](const SampledFile& file) { return file.candidate; },
        [this](const SampledFile& file) {
          const CandidatePath path(candidates_, file.candidate);
          const Candidate& candidate = CandidateOf(file);
          return candidate.size > kSmallFile
                     ? SampleHead(path.c_str(), candidate.signed_size())
                     : SampleSmallFile(
                           path.c_str(), candidate.signed_size(),
                           small_samples_[static_cast<std::size_t>(&file - sampled_.data())]);
        });
    sampled_items_ = static_cast<std::uint64_t>(
        std::count_if(sampled_.begin(), sampled_.end(),
                      [](const SampledFile& file) { return !file.result.empty(); }));
    return end == StageEnd::kStopped ? QS_CANCELLED : QS_OK;
  }

  // Looks at the tails of those that share their head with another file, of whatever size.
  qs_status SampleTails() {
    std::vector<TailItem> items = ListTailItems();
    const StageEnd end = RunStage<TailItem>(
        items, [this](const TailItem& item) { return sampled_[item.file].candidate; },
        [this](const TailItem& item) {
          const SampledFile& file = sampled_[item.file];
          const CandidatePath path(candidates_, file.candidate);
          return SampleTail(path.c_str(), CandidateOf(file).signed_size(), file.result);
        });
    if (end == StageEnd::kStopped) {
      return QS_CANCELLED;
    }
    for (const TailItem& item : items) {
      DigestText& sample = sampled_[item.file].result;
      sample = sample.has_tail() ? sample : JoinHeadAndTail(sample, item.result);
    }
    scan_.SetPerformanceField(&Performance::sampled_items, sampled_items_);
    return QS_OK;
  }

  std::vector<TailItem> ListTailItems() const {
    const std::vector<SampledIndex> files = FindSharedHeads(candidates_, sampled_);
    std::vector<TailItem> items(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
      const DigestText& sample = sampled_[files[i]].result;
      items[i].file = files[i];
      items[i].result = sample.has_tail() ? sample : DigestText();
    }
    return items;
  }

  // A file whose tail could not be read has no sample any more and drops out.
  DigestText JoinHeadAndTail(const DigestText& head, const DigestText& tail) {
    if (tail.empty()) {
      return {};
    }
    const DigestText joined = DigestText::OfHashes(head, tail);
    if (!joined.empty()) {
      return joined;
    }
    std::string text = head.Get() + kTailMark;
    tail.AppendTo(text);
    return DigestText::Of(texts_.Keep(std::string_view(text)));
  }

  qs_status GroupBySample() {
    for (SampledIndex i = 0; i < sampled_.size(); ++i) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      const DigestText& sample = sampled_[i].result;
      const Candidate& candidate = CandidateOf(sampled_[i]);
      // A large file without a tail was the only one with its head.
      const bool is_alone = candidate.size > kSmallFile && !sample.has_tail();
      if (!sample.empty() && !is_alone && HasSampleKey(candidate.signed_size(), sample)) {
        by_sample_.push_back(i);
      }
    }
    PutInSampleOrder(candidates_, sampled_, by_sample_);
    return QS_OK;
  }

  // Small files are told apart by their samples; the others wait for their hashes.
  qs_status PlanHashes() {
    const auto same_key = [this](SampledIndex a, SampledIndex b) {
      return CandidateOf(sampled_[a]).size == CandidateOf(sampled_[b]).size &&
             sampled_[a].result == sampled_[b].result;
    };
    const auto plan = [this](std::span<SampledIndex> group) {
      if (scan_.IsCancelled()) {
        return false;
      }
      if (group.size() < 2) {
        return true;
      }
      if (CandidateOf(sampled_[group[0]]).size <= kSmallFile) {
        rows_.AppendGroup(group, {});
        return true;
      }
      return QueueGroup(group);
    };
    hash_items_.reserve(by_sample_.size());
    if (!ForEachRun(std::span(by_sample_), same_key, plan)) {
      return QS_CANCELLED;
    }
    scan_.SetPerformanceField(&Performance::unhashed_groups, rows_.group_count());
    return QS_OK;
  }

  bool QueueGroup(std::span<SampledIndex> group) {
    for (const SampledIndex file : group) {
      if (scan_.IsCancelled()) {
        return false;
      }
      sampled_[file].hash_item = static_cast<std::uint32_t>(hash_items_.size());
      HashItem& item = hash_items_.emplace_back();
      item.file = file;
      item.result = known_.FullHashOf(sampled_, file);
    }
    queued_.push_back(group);
    return true;
  }

  qs_status HashContents() {
    const StageEnd end = RunStage<HashItem>(
        hash_items_, [this](const HashItem& item) { return sampled_[item.file].candidate; },
        [this](const HashItem& item) {
          const CandidatePath path(candidates_, sampled_[item.file].candidate);
          std::string text;
          const qs_status status = HashFile(path.c_str(), scan_.cancel_flag(), text);
          return status == QS_OK ? DigestText::Of(text) : DigestText();
        });
    const auto hashed = std::count_if(hash_items_.begin(), hash_items_.end(),
                                      [](const HashItem& item) { return !item.result.empty(); });
    scan_.SetPerformanceField(&Performance::hashed_items, static_cast<std::uint64_t>(hashed));
    return end == StageEnd::kStopped ? QS_CANCELLED : QS_OK;
  }

  qs_status GroupByHash() {
    for (const std::span<SampledIndex> group : queued_) {
      if (!AppendEqualHashes(group)) {
        return QS_CANCELLED;
      }
    }
    scan_.SetGroupCount(rows_.group_count());
    return QS_OK;
  }

  const DigestText& HashOf(SampledIndex file) const {
    return hash_items_[sampled_[file].hash_item].result;
  }

  // Sorts a group by its hashes, in their text order, and appends those that are no longer alone.
  bool AppendEqualHashes(std::span<SampledIndex> same_sample) {
    if (scan_.IsCancelled()) {
      return false;
    }
    std::size_t hashed = 0;
    for (const SampledIndex file : same_sample) {
      if (scan_.IsCancelled()) {
        return false;
      }
      if (!HashOf(file).empty()) {
        same_sample[hashed++] = file;
      }
    }
    same_sample = same_sample.first(hashed);
    std::sort(same_sample.begin(), same_sample.end(), [this](SampledIndex a, SampledIndex b) {
      return HashOf(a) < HashOf(b) || (HashOf(a) == HashOf(b) && a < b);
    });
    const auto same_hash = [this](SampledIndex a, SampledIndex b) {
      return HashOf(a) == HashOf(b);
    };
    ForEachRun(same_sample, same_hash, [this](std::span<SampledIndex> group) {
      if (group.size() > 1) {
        rows_.AppendGroup(group, HashOf(group[0]));
      }
      return true;
    });
    return true;
  }

  // Entries of files that this scan did not meet stay, and age out.
  qs_status RefreshCache() {
    const Text location = CacheLocationOf(request_.user_home);
    for (const SampledIndex file : InWalkOrder(candidates_, sampled_)) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      if (file != kNotSampled && !location.empty()) {
        const bool is_hashed = sampled_[file].hash_item != kNotHashed;
        known_.Remember(sampled_, file, is_hashed ? HashOf(file) : DigestText());
      }
    }
    known_.Save(location, scan_.cancel_flag());
    return QS_OK;
  }

  template <typename Item, typename CandidateOfItem, typename Work>
  StageEnd RunStage(std::vector<Item>& items, CandidateOfItem candidate_of, Work work) {
    const auto show = [this, &candidate_of](const Item& item) {
      Text path;
      candidates_.GetPath(candidate_of(item), path);
      scan_.SetCurrentPath(path);
    };
    return RunParallel<Item>(
        items, WorkerCountFor(items.size(), storage_), [this] { return scan_.IsCancelled(); }, work,
        show);
  }

  ProductScan& scan_;
  const OwnedRequest& request_;
  std::vector<Text> roots_;
  std::optional<ProtectedFolders> protection_;
  CandidateList candidates_;
  StorageKind storage_ = StorageKind::kUnknown;
  SampledFiles sampled_;  // those that share their size, by size and then in the order of the walk
  std::vector<std::array<char, kSampleTextLength>> small_samples_;  // of the first of them
  Arena texts_;                                                     // of samples that are no hashes
  std::uint64_t sampled_items_ = 0;
  std::vector<SampledIndex> by_sample_;          // in the order of their group keys
  std::vector<std::span<SampledIndex>> queued_;  // runs of by_sample_ that need their hashes
  std::vector<HashItem> hash_items_;             // one for each file of queued_, in its order
  KnownFiles known_{candidates_};
  DuplicateRows rows_{scan_, candidates_, sampled_};
};

}  // namespace

qs_status RunDuplicateScan(ProductScan& scan, const OwnedRequest& request) {
  return DuplicateScan(scan, request).Run();
}

}  // namespace quastel::duplicate
