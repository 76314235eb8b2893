#include "duplicate/duplicate_scan.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "duplicate/candidate.h"
#include "duplicate/file_hash.h"
#include "duplicate/hash_cache.h"
#include "duplicate/hash_cache_format.h"
#include "duplicate/sample.h"
#include "duplicate/storage_kind.h"
#include "duplicate/worker_pool.h"
#include "fs/enumeration.h"
#include "platform/clock.h"
#include "scan/product_scan.h"
#include "scan/root_filter.h"

namespace quastel::duplicate {
namespace {

using Performance = qs_product_scan_performance;

// Up to this size the sample is the whole content, and nothing has to be hashed.
constexpr std::uint64_t kSmallFile = kSampleSize;

// A candidate under the text or number that a stage groups by.
template <typename Key>
struct Keyed {
  Key key;
  DuplicateCandidate* candidate;
};

// Orders by key and keeps the order of candidates with the same one.
template <typename Key>
void SortByKey(std::vector<Keyed<Key>>& entries) {
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Keyed<Key>& a, const Keyed<Key>& b) { return a.key < b.key; });
}

// The run of equal keys at the front of sorted entries.
template <typename Key>
std::span<Keyed<Key>> FirstGroup(std::span<Keyed<Key>> entries) {
  std::size_t size = 1;
  while (size < entries.size() && entries[size].key == entries[0].key) {
    ++size;
  }
  return entries.first(size);
}

// Calls `visit` for each group of sorted entries, in key order, until one does not answer QS_OK.
template <typename Key, typename Visitor>
qs_status ForEachGroup(std::vector<Keyed<Key>>& sorted, Visitor visit) {
  for (std::span<Keyed<Key>> rest(sorted); !rest.empty();) {
    const std::span<Keyed<Key>> group = FirstGroup(rest);
    rest = rest.subspan(group.size());
    const qs_status status = visit(group);
    if (status != QS_OK) {
      return status;
    }
  }
  return QS_OK;
}

Text Widen(std::string_view ascii) {
  return Text(ascii.begin(), ascii.end());
}

std::int64_t SignedSize(const DuplicateCandidate& candidate) {
  return static_cast<std::int64_t>(candidate.size);
}

// One run of the scan. The members are what the stages hand to each other.
class DuplicateScan {
 public:
  DuplicateScan(ProductScan& scan, const OwnedRequest& request) : scan_(scan), request_(request) {}

  qs_status Run() {
    LoadCache();
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
  using CandidateSpan = std::span<Keyed<std::string>>;

  void LoadCache() {
    cache_ = LoadDuplicateCache(CacheLocationOf(request_.user_home), scan_.cancel_flag());
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
      const qs_status status = EnumerateFiles(root, options, OnDuplicateFileFound, this);
      if (status != QS_OK) {
        return status;
      }
    }
    return QS_OK;
  }

  static void OnDuplicateFileFound(void* user, const Char* path, std::uint64_t size,
                                   std::uint64_t last_write, const Char* name) {
    auto& self = *static_cast<DuplicateScan*>(user);
    self.scan_.ReportProgress(path, static_cast<std::int64_t>(size));
    if (IsIgnoredFile(name)) {
      return;
    }
    DuplicateCandidate candidate;
    candidate.path = path;
    if (self.protection_ && self.protection_->ContainsFile(candidate.path, name)) {
      return;
    }
    if (LeafOf(candidate.path) != TextView(name)) {
      candidate.odd_name = name;
    }
    candidate.size = size;
    candidate.last_write = last_write;
    self.candidates_.push_back(std::move(candidate));
  }

  qs_status ProbeStorage() {
    scan_.SetPerformanceField(&Performance::candidates, candidates_.size());
    storage_ = ProbeStorageKind(roots_);
    return QS_OK;
  }

  // Keeps the files whose size another one has: nothing else is ever opened.
  qs_status GroupBySize() {
    std::vector<Keyed<std::uint64_t>> by_size;
    by_size.reserve(candidates_.size());
    for (DuplicateCandidate& candidate : candidates_) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      by_size.push_back({candidate.size, &candidate});
    }
    SortByKey(by_size);
    return ForEachGroup(by_size, [this](std::span<Keyed<std::uint64_t>> group) -> qs_status {
      for (const auto& entry : group) {
        if (group.size() > 1) {
          same_size_.push_back(entry.candidate);
        }
      }
      return QS_OK;
    });
  }

  qs_status SampleContents() {
    const qs_status status = SampleHeads();
    return status == QS_OK ? SampleTails() : status;
  }

  qs_status SampleHeads() {
    std::vector<SampleWorkItem> items;
    items.reserve(same_size_.size());
    for (DuplicateCandidate* candidate : same_size_) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      LookUp(*candidate);
      SampleWorkItem item;
      item.path = &candidate->path;
      item.size = SignedSize(*candidate);
      if (const CacheEntry* entry = candidate->valid_entry()) {
        item.result = entry->sample;
      }
      items.push_back(std::move(item));
    }
    const StageEnd end = RunStage<SampleWorkItem>(items, [](const SampleWorkItem& item) {
      return SampleHead(item.path->c_str(), item.size);
    });
    if (end == StageEnd::kStopped) {
      return QS_CANCELLED;
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
      sampled_items_ += items[i].result.empty() ? 0 : 1;
      same_size_[i]->sample = std::move(items[i].result);
    }
    return QS_OK;
  }

  static std::optional<std::string> SampleHead(const Char* path, std::int64_t size) {
    if (size > static_cast<std::int64_t>(kSmallFile)) {
      return HashFileBlock(path, size, BlockPlace::kStart);
    }
    std::string text;
    return SampleFile(path, size, text) == QS_OK ? std::optional(std::move(text)) : std::nullopt;
  }

  // Looks at the tails of those that share their head with another file, of whatever size.
  qs_status SampleTails() {
    std::vector<Keyed<std::string_view>> by_head;
    for (DuplicateCandidate* candidate : same_size_) {
      if (!candidate->sample.empty()) {
        by_head.push_back({candidate->head(), candidate});
      }
    }
    SortByKey(by_head);
    std::vector<SampleWorkItem> items;
    std::vector<DuplicateCandidate*> owners;
    (void)ForEachGroup(by_head, [&](std::span<Keyed<std::string_view>> group) -> qs_status {
      if (group.size() > 1 && group[0].candidate->size > kSmallFile) {
        for (const auto& entry : group) {
          items.push_back(TailItem(*entry.candidate));
          owners.push_back(entry.candidate);
        }
      }
      return QS_OK;
    });
    const StageEnd end = RunStage<SampleWorkItem>(items, SampleTail);
    if (end == StageEnd::kStopped) {
      return QS_CANCELLED;
    }
    // A file whose tail could not be read has no sample any more and drops out.
    for (std::size_t i = 0; i < items.size(); ++i) {
      owners[i]->sample = std::move(items[i].result);
    }
    scan_.SetPerformanceField(&Performance::sampled_items, sampled_items_);
    return QS_OK;
  }

  static SampleWorkItem TailItem(const DuplicateCandidate& candidate) {
    SampleWorkItem item;
    item.path = &candidate.path;
    item.size = SignedSize(candidate);
    item.head = candidate.head();
    if (candidate.has_tail()) {
      item.result = candidate.sample;
    }
    return item;
  }

  static std::optional<std::string> SampleTail(const SampleWorkItem& item) {
    // A head of 4096 bytes or less was the whole file.
    std::optional<std::string> tail =
        item.size > kBlockSize ? HashFileBlock(item.path->c_str(), item.size, BlockPlace::kEnd)
                               : item.head;
    if (tail) {
      tail->insert(0, item.head + kTailMark);
    }
    return tail;
  }

  qs_status GroupBySample() {
    for (DuplicateCandidate* candidate : same_size_) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      // A large file without a tail was the only one with its head.
      const bool is_alone = candidate->size > kSmallFile && !candidate->has_tail();
      if (!candidate->sample.empty() && !is_alone) {
        by_sample_.push_back(
            {SampleGroupKey(SignedSize(*candidate), candidate->sample), candidate});
      }
    }
    SortByKey(by_sample_);
    return QS_OK;
  }

  // Small files are told apart by their samples; the others wait for their hashes.
  qs_status PlanHashes() {
    const qs_status status = ForEachGroup(by_sample_, [this](CandidateSpan group) -> qs_status {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      if (group.size() < 2) {
        return QS_OK;
      }
      if (group[0].candidate->size <= kSmallFile) {
        EmitGroup(group[0].key, group);
        return QS_OK;
      }
      for (const auto& entry : group) {
        if (scan_.IsCancelled()) {
          return QS_CANCELLED;
        }
        HashWorkItem item;
        item.path = &entry.candidate->path;
        if (const CacheEntry* cached = entry.candidate->valid_entry()) {
          item.result = cached->full_hash;
        }
        hash_items_.push_back(std::move(item));
      }
      queued_.push_back(group);
      return QS_OK;
    });
    if (status == QS_OK) {
      scan_.SetPerformanceField(&Performance::unhashed_groups, group_count_);
    }
    return status;
  }

  qs_status HashContents() {
    const StageEnd end = RunStage<HashWorkItem>(
        hash_items_, [this](const HashWorkItem& item) -> std::optional<std::string> {
          std::string text;
          const qs_status status = HashFile(item.path->c_str(), scan_.cancel_flag(), text);
          return status == QS_OK ? std::optional(std::move(text)) : std::nullopt;
        });
    const auto hashed =
        std::count_if(hash_items_.begin(), hash_items_.end(),
                      [](const HashWorkItem& item) { return !item.result.empty(); });
    scan_.SetPerformanceField(&Performance::hashed_items, static_cast<std::uint64_t>(hashed));
    return end == StageEnd::kStopped ? QS_CANCELLED : QS_OK;
  }

  qs_status GroupByHash() {
    auto item = hash_items_.begin();
    for (const CandidateSpan group : queued_) {
      for (const auto& entry : group) {
        entry.candidate->full_hash = std::move((item++)->result);
      }
    }
    for (const CandidateSpan group : queued_) {
      const qs_status status = EmitEqualHashes(group);
      if (status != QS_OK) {
        return status;
      }
    }
    scan_.SetGroupCount(group_count_);
    return QS_OK;
  }

  qs_status EmitEqualHashes(CandidateSpan same_sample) {
    if (scan_.IsCancelled()) {
      return QS_CANCELLED;
    }
    std::vector<Keyed<std::string>> by_hash;
    for (const auto& entry : same_sample) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      if (!entry.candidate->full_hash.empty()) {
        by_hash.push_back({HashGroupKey(entry.key, entry.candidate->full_hash), entry.candidate});
      }
    }
    SortByKey(by_hash);
    return ForEachGroup(by_hash, [this](CandidateSpan group) -> qs_status {
      if (group.size() > 1) {
        EmitGroup(group[0].key, group);
      }
      return QS_OK;
    });
  }

  void EmitGroup(std::string_view key, CandidateSpan group) {
    ++group_count_;
    const TextView label = group[0].candidate->name();
    for (const auto& [unused, candidate] : group) {
      ReportRow row;
      row.path = candidate->path;
      row.name = candidate->name();
      row.title = label;
      row.location = Widen(key);
      row.group_id = group_count_;
      row.kind = RowKind::kDuplicate;
      row.size = SignedSize(*candidate);
      row.modified = candidate->last_write;
      row.deletable = true;
      scan_.AppendRow(std::move(row));
    }
  }

  // Entries of files that this scan did not meet stay, and age out.
  qs_status RefreshCache() {
    for (DuplicateCandidate& candidate : candidates_) {
      if (scan_.IsCancelled()) {
        return QS_CANCELLED;
      }
      if (!candidate.sample.empty()) {
        Remember(candidate);
      }
    }
    SaveDuplicateCache(CacheLocationOf(request_.user_home), cache_, scan_.cancel_flag());
    return QS_OK;
  }

  void LookUp(DuplicateCandidate& candidate) {
    if (cache_.empty()) {
      return;
    }
    const auto found = cache_.find(CacheKeyOf(candidate.path));
    if (found != cache_.end()) {
      candidate.cached = &found->second;
    }
  }

  void Remember(DuplicateCandidate& candidate) {
    CacheEntry* entry = candidate.cached;
    if (entry == nullptr) {
      Text key = CacheKeyOf(candidate.path);
      const auto found = cache_.find(key);
      if (found != cache_.end()) {
        entry = &found->second;
      } else if (cache_.size() < kMaxEntries) {
        entry = &cache_[std::move(key)];
      } else {
        return;
      }
    }
    entry->size = candidate.size;
    entry->last_write = candidate.last_write;
    entry->confirmed_time = platform::SystemFileTime();
    entry->sample = std::move(candidate.sample);
    entry->full_hash = std::move(candidate.full_hash);
  }

  template <typename Item, typename Work>
  StageEnd RunStage(std::vector<Item>& items, Work work) {
    return RunParallel<Item>(
        items, WorkerCountFor(items.size(), storage_), [this] { return scan_.IsCancelled(); }, work,
        [this](const Text& path) { scan_.SetCurrentPath(path); });
  }

  ProductScan& scan_;
  const OwnedRequest& request_;
  CacheMap cache_;
  std::vector<Text> roots_;
  std::optional<ProtectedFolders> protection_;
  std::deque<DuplicateCandidate> candidates_;  // in the order of the walk
  StorageKind storage_ = StorageKind::kUnknown;
  std::vector<DuplicateCandidate*> same_size_;  // by size, then in the order of the walk
  std::uint64_t sampled_items_ = 0;
  std::vector<Keyed<std::string>> by_sample_;
  std::vector<CandidateSpan> queued_;     // runs of by_sample_ that need their hashes
  std::vector<HashWorkItem> hash_items_;  // one for each candidate of queued_, in its order
  std::uint64_t group_count_ = 0;
};

}  // namespace

qs_status RunDuplicateScan(ProductScan& scan, const OwnedRequest& request) {
  return DuplicateScan(scan, request).Run();
}

}  // namespace quastel::duplicate
