// What several contract tests do with the seam.

#ifndef QUASTEL_TESTS_CONTRACT_SEAM_USE_H_
#define QUASTEL_TESTS_CONTRACT_SEAM_USE_H_

#include <string>
#include <vector>

#include "base/text.h"
#include "platform/file.h"
#include "platform/search.h"

namespace quastel::contract {

// Every name that the pattern finds, "." and ".." aside, in the order of the listing.
inline std::vector<Text> NamesFor(const Text& pattern) {
  std::vector<Text> names;
  platform::FindData entry{};
  const auto first =
      platform::FindFirstBasic(pattern.c_str(), platform::SearchOperation::kNameMatch, entry);
  if (!first.ok()) {
    return names;
  }
  do {
    const Text name = entry.name;
    if (name != QS_TEXT(".") && name != QS_TEXT("..")) {
      names.push_back(name);
    }
  } while (platform::FindNext(first.value(), entry) == platform::Error::kNone);
  return names;
}

inline platform::Result<platform::FileHandle> OpenToRead(
    const Text& path, std::uint32_t share = platform::kShareAll) {
  return platform::OpenFile(path.c_str(), platform::kAccessRead, share,
                            platform::Disposition::kOpenExisting, 0);
}

inline platform::Result<platform::FileHandle> OpenToWrite(const Text& path,
                                                          platform::Disposition disposition) {
  return platform::OpenFile(path.c_str(), platform::kAccessRead | platform::kAccessWrite,
                            platform::kShareAll, disposition, 0);
}

// What the handle reads from where it stands.
inline std::string ReadAll(const platform::FileHandle& file) {
  std::string content;
  char buffer[7];
  for (;;) {
    const auto count = platform::ReadFrom(file, buffer, sizeof buffer);
    if (!count.ok() || count.value() == 0) {
      return content;
    }
    content.append(buffer, count.value());
  }
}

}  // namespace quastel::contract

#endif  // QUASTEL_TESTS_CONTRACT_SEAM_USE_H_
