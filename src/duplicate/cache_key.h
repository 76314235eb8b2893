// The key under which the cache knows a file: its full path with "\" as the separator, folded to
// lower case.

#ifndef QUASTEL_DUPLICATE_CACHE_KEY_H_
#define QUASTEL_DUPLICATE_CACHE_KEY_H_

#include <array>

#include "base/text.h"

namespace quastel::duplicate {

// The key of any path.
Text CacheKeyOf(const Text& path);

// The keys of many files, those of one folder one after the other: the folder is resolved once.
class CacheKeys {
 public:
  CacheKeys();

  // The key of folder + leaf, where the folder ends in a separator. The folder's text has to stay
  // where it is until another one is asked for. The key is valid until the next call. Empty where
  // resolving makes the paths of two files one: what is known of the one is not true of the other.
  const Text& Of(TextView folder, TextView leaf);

 private:
  void EnterFolder(TextView folder);
  Char Fold(Char c) const;

  std::array<Char, 128> folded_ascii_ = {};
  TextView folder_;
  bool is_resolved_ = false;
  bool keeps_its_names_ = true;
  std::size_t folder_length_ = 0;
  Text key_;
};

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_CACHE_KEY_H_
