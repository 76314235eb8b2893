#include "junk/rule_paths.h"

#include "base/replace.h"

namespace quastel::junk {

Text ExpandJunkPath(TextView rule_path, TextView user_home, TextView system_root) {
  const Text with_home = ReplaceAll(rule_path, QS_TEXT("{UserHome}"), user_home);
  return ReplaceAll(with_home, QS_TEXT("{Root}"), system_root);
}

}  // namespace quastel::junk
