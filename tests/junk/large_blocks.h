// Refuses memory of a size that no test should really take.

#ifndef QUASTEL_TESTS_JUNK_LARGE_BLOCKS_H_
#define QUASTEL_TESTS_JUNK_LARGE_BLOCKS_H_

#include <cstddef>

namespace quastel::junk_tests {

// As long as it lives, no block of 1 GiB or more is had on this thread. One at
// a time on a thread.
class NoLargeBlocks {
 public:
  NoLargeBlocks();
  ~NoLargeBlocks();
  NoLargeBlocks(const NoLargeBlocks&) = delete;
  NoLargeBlocks& operator=(const NoLargeBlocks&) = delete;

  std::size_t largest() const;  // that was asked for; 0 when none was
};

}  // namespace quastel::junk_tests

#endif  // QUASTEL_TESTS_JUNK_LARGE_BLOCKS_H_
