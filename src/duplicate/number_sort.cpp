#include "duplicate/number_sort.h"

#include <array>
#include <cstddef>

namespace quastel::duplicate {

void SortByNumber(std::vector<NumberedEntry>& entries) {
  std::uint64_t differing = 0;
  for (const NumberedEntry& entry : entries) {
    differing |= entry.number ^ entries.front().number;
  }
  std::vector<NumberedEntry> sorted(differing == 0 ? 0 : entries.size());
  // The lowest byte first: each later one keeps the order of those before among its equals.
  for (unsigned shift = 0; shift < 64; shift += 8) {
    if ((differing >> shift & 0xFF) == 0) {
      continue;
    }
    std::array<std::size_t, 257> places = {};
    for (const NumberedEntry& entry : entries) {
      ++places[(entry.number >> shift & 0xFF) + 1];
    }
    for (std::size_t i = 1; i < places.size(); ++i) {
      places[i] += places[i - 1];
    }
    for (const NumberedEntry& entry : entries) {
      sorted[places[entry.number >> shift & 0xFF]++] = entry;
    }
    entries.swap(sorted);
  }
}

}  // namespace quastel::duplicate
