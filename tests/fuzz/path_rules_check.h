// What holds for the path rules whatever the paths are.

#ifndef QUASTEL_TESTS_FUZZ_PATH_RULES_CHECK_H_
#define QUASTEL_TESTS_FUZZ_PATH_RULES_CHECK_H_

#include <string_view>

namespace quastel::fuzz {

// What a run came across, so that a corpus can be asked whether it reaches it.
struct PathRulesSeen {
  bool lengthened = false;    // a path got the extended-length prefix
  bool unresolvable = false;  // the system had no full path for one
  bool absolute = false;      // the relative path of a combination was absolute
  bool contained = false;
  bool same_directory = false;
  bool under = false;
  bool directory = false;
};

// The bytes are: the current folder, then two paths as Input::TakeText reads them. Ends the process
// when a rule is broken.
PathRulesSeen CheckPathRules(std::string_view bytes);

}  // namespace quastel::fuzz

#endif  // QUASTEL_TESTS_FUZZ_PATH_RULES_CHECK_H_
