// How a path in a rule becomes a real one.

#ifndef QUASTEL_JUNK_RULE_PATHS_H_
#define QUASTEL_JUNK_RULE_PATHS_H_

#include "base/text.h"

namespace quastel::junk {

// Puts the profile in the place of every "{UserHome}", then the system root in the place of every
// "{Root}", those that the profile's text brought along included.
Text ExpandJunkPath(TextView rule_path, TextView user_home, TextView system_root);

}  // namespace quastel::junk

#endif  // QUASTEL_JUNK_RULE_PATHS_H_
