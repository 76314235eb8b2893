#include "duplicate/known_files.h"

#include "duplicate/hash_cache_format.h"
#include "frame/cancel.h"
#include "platform/clock.h"

namespace quastel::duplicate {

std::vector<SampledIndex> InWalkOrder(const CandidateList& candidates,
                                      const SampledFiles& sampled) {
  std::vector<SampledIndex> files(candidates.size(), kNotSampled);
  for (SampledIndex i = 0; i < sampled.size(); ++i) {
    files[sampled[i].candidate] = i;
  }
  return files;
}

const Text& KnownFiles::KeyOf(CandidateIndex index) {
  leaf_.resize(candidates_.LeafLengthOf(index));
  candidates_.CopyLeaf(index, leaf_.data());
  return keys_.Of(candidates_.FolderOf(index), leaf_);
}

void KnownFiles::FindSamples(SampledFiles& sampled, std::uint32_t* cancel) {
  if (cache_.empty()) {
    return;
  }
  entries_.assign(sampled.size(), HashCache::kNone);
  for (const SampledIndex file : InWalkOrder(candidates_, sampled)) {
    if (file == kNotSampled) {
      continue;
    }
    if (IsCancelRequested(cancel)) {
      return;
    }
    const Text& key = KeyOf(sampled[file].candidate);
    entries_[file] = key.empty() ? HashCache::kNone : cache_.Find(key);
    if (const CacheEntry* entry = ValidEntry(sampled[file], file)) {
      sampled[file].result = entry->sample;
    }
  }
}

DigestText KnownFiles::FullHashOf(const SampledFiles& sampled, SampledIndex file) const {
  const CacheEntry* const entry = ValidEntry(sampled[file], file);
  return entry == nullptr ? DigestText() : entry->full_hash;
}

const CacheEntry* KnownFiles::ValidEntry(const SampledFile& sampled, SampledIndex file) const {
  const HashCache::Index index = EntryOf(file);
  if (index == HashCache::kNone) {
    return nullptr;
  }
  const CacheEntry& entry = cache_[index];
  const Candidate& candidate = candidates_[sampled.candidate];
  return entry.size == candidate.size && entry.last_write == candidate.last_write ? &entry
                                                                                  : nullptr;
}

void KnownFiles::Remember(const SampledFiles& sampled, SampledIndex file,
                          const DigestText& full_hash) {
  const SampledFile& seen = sampled[file];
  if (seen.result.empty() || seen.result.size() > kMaxSampleLength) {
    return;
  }
  HashCache::Index index = EntryOf(file);
  if (index == HashCache::kNone) {
    const Text& key = KeyOf(seen.candidate);
    if (key.empty()) {
      return;
    }
    index = cache_.size() < kMaxEntries ? cache_.FindOrAdd(key) : cache_.Find(key);
  }
  if (index == HashCache::kNone) {
    return;
  }
  const Candidate& candidate = candidates_[seen.candidate];
  CacheEntry& entry = cache_[index];
  entry.size = candidate.size;
  entry.last_write = candidate.last_write;
  entry.confirmed_time = Now();
  entry.sample = seen.result;
  entry.full_hash = full_hash;
}

std::uint64_t KnownFiles::Now() {
  constexpr std::uint32_t kUses = 64;
  if (now_uses_left_ == 0) {
    now_ = platform::SystemFileTime();
    now_uses_left_ = kUses;
  }
  --now_uses_left_;
  return now_;
}

}  // namespace quastel::duplicate
