// File names as the simulated file systems compare and match them.

#ifndef QUASTEL_TESTS_SIMULATED_WINDOWS_NAMES_H_
#define QUASTEL_TESTS_SIMULATED_WINDOWS_NAMES_H_

#include "base/text.h"

namespace quastel::simulated {

inline constexpr std::size_t kLongestName = 255;

// Upper case for ASCII and Latin-1. A file system folds by a table of the whole plane; these two
// blocks are enough to show where the library's ASCII folding and the system's part ways.
Char FoldName(Char c);

// Negative, zero or positive: the order in which a folder is listed.
int CompareNames(TextView a, TextView b);

// May a file be called so? "." and ".." may not.
bool IsPossibleName(TextView name);

bool HasWildcards(TextView name);

// A search pattern after the translation that FindFirstFile does before it asks the file system.
class NamePattern {
 public:
  NamePattern() = default;
  // `ended_in_dot`: the caller's text had a final dot, which path normalisation has removed.
  NamePattern(TextView pattern, bool ended_in_dot);

  bool Matches(TextView name) const;
  // The name when there is no wildcard in it, otherwise empty.
  TextView exact_name() const { return exact_ ? TextView(expression_) : TextView(); }

 private:
  Text expression_;
  bool everything_ = false;
  bool exact_ = false;
};

}  // namespace quastel::simulated

#endif  // QUASTEL_TESTS_SIMULATED_WINDOWS_NAMES_H_
