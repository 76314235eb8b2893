// What holds for the protection filters and the folder filter whatever the paths are.

#ifndef QUASTEL_TESTS_FUZZ_FILTERS_CHECK_H_
#define QUASTEL_TESTS_FUZZ_FILTERS_CHECK_H_

#include <cstddef>
#include <string_view>

namespace quastel::fuzz {

// What a run came across.
struct FiltersSeen {
  std::size_t ignored = 0;
  std::size_t protected_ones = 0;
  std::size_t dropped = 0;  // folders that lay in another one
  std::size_t kept = 0;
};

// The bytes are: the current folder, the system root, the profile folder, and up to 10 paths.
FiltersSeen CheckFilters(std::string_view bytes);

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_FILTERS_CHECK_H_
