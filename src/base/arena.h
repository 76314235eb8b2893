// Memory for many small things that are made one by one and go together.
//
// A text of its own costs the heap's overhead and a call for each; here it costs its units.

#ifndef QUASTEL_BASE_ARENA_H_
#define QUASTEL_BASE_ARENA_H_

#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

namespace quastel {

class Arena {
 public:
  // Room for `count` units, not initialised. It stays where it is until the arena goes, also when
  // the arena is moved.
  template <typename Unit>
  Unit* Allocate(std::size_t count) {
    static_assert(std::is_trivially_destructible_v<Unit>);
    static_assert(alignof(Unit) <= alignof(std::max_align_t));
    return reinterpret_cast<Unit*>(AllocateBytes(count * sizeof(Unit), alignof(Unit)));
  }

  // A copy of the text.
  template <typename Unit>
  std::basic_string_view<Unit> Keep(std::basic_string_view<Unit> text) {
    if (text.empty()) {
      return {};
    }
    Unit* const copy = Allocate<Unit>(text.size());
    text.copy(copy, text.size());
    return {copy, text.size()};
  }

 private:
  static constexpr std::size_t kBlockSize = std::size_t{64} * 1024;
  // What is larger gets a block of its own, so that little of the current one is wasted.
  static constexpr std::size_t kLargestShare = kBlockSize / 16;

  unsigned char* AllocateBytes(std::size_t size, std::size_t alignment) {
    if (size > kLargestShare) {
      return AddBlock(size);
    }
    const std::size_t start = (used_ + alignment - 1) / alignment * alignment;
    if (current_ == nullptr || start + size > kBlockSize) {
      current_ = AddBlock(kBlockSize);
      used_ = size;
      return current_;
    }
    used_ = start + size;
    return current_ + start;
  }

  unsigned char* AddBlock(std::size_t size) {
    blocks_.push_back(std::make_unique_for_overwrite<unsigned char[]>(size));
    return blocks_.back().get();
  }

  std::vector<std::unique_ptr<unsigned char[]>> blocks_;
  unsigned char* current_ = nullptr;
  std::size_t used_ = 0;  // of the current block
};

}  // namespace quastel

#endif  // QUASTEL_BASE_ARENA_H_
