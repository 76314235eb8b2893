// The files that a duplicate scan may find copies of, in the order of the walk.
//
// There may be millions of them, and most turn out to be alone with their size. So a file costs its
// facts and the units of its name; the folder that it shares with others is kept once, and whole
// paths are made where one is needed.

#ifndef QUASTEL_DUPLICATE_CANDIDATE_LIST_H_
#define QUASTEL_DUPLICATE_CANDIDATE_LIST_H_

#include <cstddef>
#include <cstdint>
#include <map>

#include "base/arena.h"
#include "base/block_list.h"
#include "base/text.h"
#include "fs/path_rules.h"

namespace quastel::duplicate {

using CandidateIndex = std::uint32_t;

struct Candidate {
  std::uint64_t size;
  std::uint64_t last_write;
  const void* leaf;  // what follows the folder in the path: bytes, or units if one needs more
  std::uint32_t folder;
  std::uint32_t leaf_length : 31;
  std::uint32_t has_bytes : 1;

  std::int64_t signed_size() const { return static_cast<std::int64_t>(size); }
};
static_assert(sizeof(Candidate) == 32);

class CandidateList {
 public:
  // A file as the walk reports it.
  void Add(TextView path, TextView name, std::uint64_t size, std::uint64_t last_write);

  std::size_t size() const { return candidates_.size(); }
  const Candidate& operator[](CandidateIndex index) const { return candidates_[index]; }

  // The folder's text with the separator behind it, and what follows it in the path.
  TextView FolderOf(CandidateIndex index) const { return folders_[candidates_[index].folder]; }
  std::size_t LeafLengthOf(CandidateIndex index) const { return candidates_[index].leaf_length; }
  void CopyLeaf(CandidateIndex index, Char* out) const;

  // The path and the name as the walk reported them.
  void GetPath(CandidateIndex index, Text& path) const;
  void GetName(CandidateIndex index, Text& name) const;

 private:
  std::uint32_t FolderFor(TextView folder);
  void KeepLeaf(TextView leaf, Candidate& candidate);

  BlockList<Candidate> candidates_;
  BlockList<TextView> folders_;
  // Names that are not the last component of their path, which is rare: the system drops dots and
  // blanks at the end of a name when it resolves a long path.
  std::map<CandidateIndex, TextView> odd_names_;
  Arena texts_;
};

// The path of one candidate for a few calls, without the heap for all but long ones.
class CandidatePath {
 public:
  CandidatePath(const CandidateList& candidates, CandidateIndex index);
  CandidatePath(const CandidatePath&) = delete;
  CandidatePath& operator=(const CandidatePath&) = delete;

  const Char* c_str() const { return long_.empty() ? short_ : long_.c_str(); }

 private:
  Char short_[kLongPathThreshold];
  Text long_;
};

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_CANDIDATE_LIST_H_
