#include "duplicate/candidate_list.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "base/ascii.h"
#include "base/common_prefix.h"

namespace quastel::duplicate {

void CandidateList::Add(TextView path, TextView name, std::uint64_t size,
                        std::uint64_t last_write) {
  if (candidates_.size() == std::numeric_limits<CandidateIndex>::max()) {
    throw std::length_error("more files than an index can name");
  }
  const bool is_odd = !EndsInText(path, name);
  const TextView leaf = is_odd ? quastel::LeafOf(path) : name;
  if (is_odd) {
    odd_names_.emplace(static_cast<CandidateIndex>(candidates_.size()), texts_.Keep(name));
  }
  const std::uint32_t folder = FolderFor(path.substr(0, path.size() - leaf.size()));
  Candidate candidate = {};
  candidate.size = size;
  candidate.last_write = last_write;
  candidate.folder = folder;
  KeepLeaf(leaf, candidate);
  candidates_.push_back(candidate);
}

// Most names need no more than a byte for each unit.
void CandidateList::KeepLeaf(TextView leaf, Candidate& candidate) {
  candidate.leaf_length = static_cast<std::uint32_t>(leaf.size()) & 0x7FFFFFFF;
  unsigned all_bits = 0;
  for (const Char c : leaf) {
    all_bits |= c;
  }
  const bool has_bytes = all_bits <= 0xFF;
  candidate.has_bytes = has_bytes ? 1 : 0;
  if (has_bytes) {
    auto* const bytes = texts_.Allocate<unsigned char>(leaf.size());
    std::transform(leaf.begin(), leaf.end(), bytes,
                   [](Char c) { return static_cast<unsigned char>(c); });
    candidate.leaf = bytes;
  } else {
    candidate.leaf = texts_.Keep(leaf).data();
  }
}

void CandidateList::CopyLeaf(CandidateIndex index, Char* out) const {
  const Candidate& candidate = candidates_[index];
  if (candidate.has_bytes != 0) {
    std::copy_n(static_cast<const unsigned char*>(candidate.leaf), candidate.leaf_length, out);
  } else {
    std::copy_n(static_cast<const Char*>(candidate.leaf), candidate.leaf_length, out);
  }
}

// The files of a folder come one after the other, so only the last one has to be compared with.
std::uint32_t CandidateList::FolderFor(TextView folder) {
  if (folders_.empty() || !IsSameText(folders_.back(), folder)) {
    folders_.push_back(texts_.Keep(folder));
  }
  return static_cast<std::uint32_t>(folders_.size() - 1);
}

void CandidateList::GetPath(CandidateIndex index, Text& path) const {
  const TextView folder = FolderOf(index);
  path.assign(folder).resize(folder.size() + LeafLengthOf(index));
  CopyLeaf(index, path.data() + folder.size());
}

void CandidateList::GetName(CandidateIndex index, Text& name) const {
  const auto odd = odd_names_.find(index);
  if (odd != odd_names_.end()) {
    name = odd->second;
    return;
  }
  name.resize(LeafLengthOf(index));
  CopyLeaf(index, name.data());
}

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): only as much as the path needs is written
CandidatePath::CandidatePath(const CandidateList& candidates, CandidateIndex index) {
  const TextView folder = candidates.FolderOf(index);
  const std::size_t length = folder.size() + candidates.LeafLengthOf(index);
  if (length < kLongPathThreshold) {
    folder.copy(short_, folder.size());
    candidates.CopyLeaf(index, short_ + folder.size());
    short_[length] = Char{};
  } else {
    candidates.GetPath(index, long_);
  }
}

}  // namespace quastel::duplicate
