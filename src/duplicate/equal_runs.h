// The runs of equal elements in a sorted array.

#ifndef QUASTEL_DUPLICATE_EQUAL_RUNS_H_
#define QUASTEL_DUPLICATE_EQUAL_RUNS_H_

#include <cstddef>
#include <span>

namespace quastel::duplicate {

// Calls `visit` with each run, in order, until one answers false. Whether all were visited.
template <typename Element, typename Same, typename Visitor>
bool ForEachRun(std::span<Element> sorted, Same same, Visitor visit) {
  while (!sorted.empty()) {
    std::size_t size = 1;
    while (size < sorted.size() && same(sorted[0], sorted[size])) {
      ++size;
    }
    if (!visit(sorted.first(size))) {
      return false;
    }
    sorted = sorted.subspan(size);
  }
  return true;
}

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_EQUAL_RUNS_H_
