// What holds for the expansion of rule paths whatever the texts are.

#ifndef QUASTEL_TESTS_FUZZ_JUNK_PATH_CHECK_H_
#define QUASTEL_TESTS_FUZZ_JUNK_PATH_CHECK_H_

#include <cstddef>
#include <string_view>

namespace quastel::fuzz {

// How many placeholders were replaced.
struct JunkPathSeen {
  std::size_t homes = 0;
  std::size_t roots = 0;
};

// The bytes are three texts: the rule path, the profile folder and the system root.
JunkPathSeen CheckJunkPath(std::string_view bytes);

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_JUNK_PATH_CHECK_H_
