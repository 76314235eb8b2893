// A growing list whose elements stay where they are.
//
// A vector would hold old and new room at once while it grows, and move what readers look at.
// Making an empty one costs no memory.

#ifndef QUASTEL_BASE_BLOCK_LIST_H_
#define QUASTEL_BASE_BLOCK_LIST_H_

#include <cstddef>
#include <utility>
#include <vector>

namespace quastel {

template <typename T>
class BlockList {
 public:
  bool empty() const { return blocks_.empty(); }
  std::size_t size() const {
    return empty() ? 0 : (blocks_.size() - 1) * kBlockSize + blocks_.back().size();
  }

  T& operator[](std::size_t index) { return blocks_[index / kBlockSize][index % kBlockSize]; }
  const T& operator[](std::size_t index) const {
    return blocks_[index / kBlockSize][index % kBlockSize];
  }
  const T& back() const { return blocks_.back().back(); }

  // Where memory runs out, the list is as it was.
  void push_back(const T& value) {
    if (blocks_.empty() || blocks_.back().size() == kBlockSize) {
      std::vector<T> block;
      block.reserve(kBlockSize);
      block.push_back(value);
      blocks_.push_back(std::move(block));
    } else {
      blocks_.back().push_back(value);
    }
  }

 private:
  static constexpr std::size_t kBlockSize = 256;

  std::vector<std::vector<T>> blocks_;  // none is empty
};

}  // namespace quastel

#endif  // QUASTEL_BASE_BLOCK_LIST_H_
