#include "duplicate/cache_key.h"

#include <algorithm>
#include <optional>

#include "base/ascii.h"
#include "fs/path_rules.h"
#include "platform/process.h"

namespace quastel::duplicate {
namespace {

// Names that begin like a device may mean the device, whatever folder they stand in.
constexpr std::array<TextView, 6> kDeviceStems = {QS_TEXT("aux"), QS_TEXT("com"), QS_TEXT("con"),
                                                  QS_TEXT("lpt"), QS_TEXT("nul"), QS_TEXT("prn")};

// Whether the system leaves the name as it is when it resolves the path of a file.
bool IsKeptAsItIs(TextView name) {
  if (name.empty() || EndsInDotOrBlank(name)) {
    return false;
  }
  return std::none_of(kDeviceStems.begin(), kDeviceStems.end(),
                      [name](TextView stem) { return StartsWithFolded(name, stem); });
}

}  // namespace

Text CacheKeyOf(const Text& path) {
  Text key = ResolveFully(path).value_or(path);
  for (Char& c : key) {
    c = c == Char{'/'} ? Char{'\\'} : platform::FoldWide(c);
  }
  return key;
}

CacheKeys::CacheKeys() {
  for (std::size_t i = 0; i < folded_ascii_.size(); ++i) {
    const auto c = static_cast<Char>(i);
    folded_ascii_[i] = c == Char{'/'} ? Char{'\\'} : platform::FoldWide(c);
  }
}

Char CacheKeys::Fold(Char c) const {
  return c < folded_ascii_.size() ? folded_ascii_[c] : platform::FoldWide(c);
}

const Text& CacheKeys::Of(TextView folder, TextView leaf) {
  if (folder.data() != folder_.data() || folder.size() != folder_.size()) {
    EnterFolder(folder);
  }
  if (!keeps_its_names_ || (EndsInDotOrBlank(leaf) && IsExtendedPath(folder))) {
    key_.clear();
    folder_ = {};
    return key_;
  }
  if (is_resolved_ && IsKeptAsItIs(leaf)) {
    key_.resize(folder_length_ + leaf.size());
    std::transform(leaf.begin(), leaf.end(),
                   key_.begin() + static_cast<std::ptrdiff_t>(folder_length_),
                   [this](Char c) { return Fold(c); });
    return key_;
  }
  // What this leaves behind is no folder that the next key could begin with.
  folder_ = {};
  key_ = CacheKeyOf(Text(folder).append(leaf));
  return key_;
}

void CacheKeys::EnterFolder(TextView folder) {
  folder_ = folder;
  const std::optional<Text> resolved = ResolveFully(Text(folder));
  is_resolved_ = resolved && !resolved->empty() && resolved->back() == Char{'\\'};
  keeps_its_names_ = !resolved || !IsExtendedPath(folder) || HaveSameNames(folder, *resolved);
  if (is_resolved_) {
    key_ = *resolved;
    std::transform(key_.begin(), key_.end(), key_.begin(), [this](Char c) { return Fold(c); });
    folder_length_ = key_.size();
  }
}

}  // namespace quastel::duplicate
