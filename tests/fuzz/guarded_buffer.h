// Buffers for the library to write into that show every write outside, in every build.

#ifndef QUASTEL_TESTS_FUZZ_GUARDED_BUFFER_H_
#define QUASTEL_TESTS_FUZZ_GUARDED_BUFFER_H_

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "fuzz/demand.h"

namespace quastel::fuzz {

template <typename C>
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t capacity)
      : capacity_(capacity), units_(capacity + 2 * kGuard, kFiller) {}

  C* data() { return units_.data() + kGuard; }
  std::size_t capacity() const { return capacity_; }

  void DemandUntouched(const char* rule) const { Demand(IsFiller(0, units_.size()), rule); }

  // The text and its terminator at the front, and nothing else.
  void DemandHolds(std::basic_string_view<C> text, const char* rule) const {
    const std::size_t end = kGuard + text.size();
    Demand(text.size() < capacity_ && IsFiller(0, kGuard) &&
               std::equal(text.begin(), text.end(), units_.begin() + kGuard) &&
               units_[end] == C{} && IsFiller(end + 1, units_.size()),
           rule);
  }

 private:
  static constexpr std::size_t kGuard = 16;
  static constexpr C kFiller = C{'#'};

  bool IsFiller(std::size_t begin, std::size_t end) const {
    return std::all_of(units_.begin() + static_cast<std::ptrdiff_t>(begin),
                       units_.begin() + static_cast<std::ptrdiff_t>(end),
                       [](C unit) { return unit == kFiller; });
  }

  const std::size_t capacity_;
  std::vector<C> units_;
};

// A text in a block of memory that ends with its terminator, so that reading on is noticed.
class ExactText {
 public:
  explicit ExactText(TextView text) : units_(text.size() + 1) {
    std::copy(text.begin(), text.end(), units_.begin());
  }
  const Char* get() const { return units_.data(); }

 private:
  std::vector<Char> units_;
};

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_GUARDED_BUFFER_H_
