#include "duplicate/hash_cache.h"

#include <algorithm>

#include "base/ascii.h"
#include "duplicate/hash_cache_format.h"
#include "fs/path_rules.h"
#include "platform/process.h"

namespace quastel::duplicate {

Text CacheKeyOf(const Text& path) {
  Text key = ResolveFully(path).value_or(path);
  for (Char& c : key) {
    c = c == Char{'/'} ? Char{'\\'} : platform::FoldWide(c);
  }
  return key;
}

Text CacheLocationOf(TextView user_home) {
  const bool has_drive = user_home.size() >= 3 && IsAsciiLetter(user_home[0]) &&
                         user_home[1] == Char{':'} && IsSeparator(user_home[2]);
  const bool is_unc =
      user_home.size() >= 2 && IsSeparator(user_home[0]) && IsSeparator(user_home[1]);
  return has_drive || is_unc ? JoinPath(user_home, kCachePath) : Text();
}

}  // namespace quastel::duplicate
