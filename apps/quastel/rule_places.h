#ifndef QUASTEL_APPS_QUASTEL_RULE_PLACES_H_
#define QUASTEL_APPS_QUASTEL_RULE_PLACES_H_

#include <quastel_core.h>

#include <cstdint>
#include <string>
#include <vector>

#include "own_walk.h"
#include "protected_folders.h"
#include "rule_review.h"

namespace quastel::client {

// A folder that a rule leads to, and what it finds there.
struct RulePlace {
  std::wstring path;
  bool below = true;  // in the folders below it too
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
};

// What a rule comes to on this machine.
struct RuleOutcome {
  std::wstring folder;  // its Path or StartPath without placeholders
  bool exists = false;
  std::vector<RulePlace> places;  // none when the folder is not there
  std::uint64_t files = 0;
  std::uint64_t bytes = 0;
};

// Looks up the places of the rules one after the other, as a scan would. Appends to `outcomes` in
// the order of `rules`; a cancelled one keeps what was found until then.
qs_status FindPlaces(const std::vector<RuleUse>& rules, const ProtectedFolders& folders,
                     WalkState& state, std::vector<RuleOutcome>& outcomes);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_RULE_PLACES_H_
