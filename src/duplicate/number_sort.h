// Sorting by a number: byte by byte, so that the time for each entry does not grow with their
// count.

#ifndef QUASTEL_DUPLICATE_NUMBER_SORT_H_
#define QUASTEL_DUPLICATE_NUMBER_SORT_H_

#include <cstdint>
#include <vector>

namespace quastel::duplicate {

struct NumberedEntry {
  std::uint64_t number;
  std::uint32_t index;
};

// Puts the entries in the order of their numbers; those of one number stay in the order in which
// they were. Takes the room of the entries once more.
void SortByNumber(std::vector<NumberedEntry>& entries);

}  // namespace quastel::duplicate

#endif  // QUASTEL_DUPLICATE_NUMBER_SORT_H_
