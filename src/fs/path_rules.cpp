#include "fs/path_rules.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "base/ascii.h"
#include "platform/file_system.h"

namespace quastel {
namespace {

constexpr std::uint32_t kLongestPathCapacity = 32768;

std::size_t NextSeparator(TextView path, std::size_t from) {
  while (from < path.size() && !IsSeparator(path[from])) {
    ++from;
  }
  return from;
}

// Behind the separator that ends the share's name; a path that has none is a root as a whole.
std::size_t EndOfShare(TextView path, std::size_t server) {
  const std::size_t server_end = NextSeparator(path, server);
  if (server_end == path.size()) {
    return path.size();
  }
  const std::size_t share_end = NextSeparator(path, server_end + 1);
  return share_end == path.size() ? path.size() : share_end + 1;
}

// Whether a drive letter's colon and a separator stand at these places.
bool HasDriveAt(TextView path, std::size_t colon) {
  return path.size() >= colon + 2 && path[colon] == Char{':'} && IsSeparator(path[colon + 1]);
}

}  // namespace

Text ToLongPath(Text path) {
  return path.size() < kLongPathThreshold ? std::move(path) : ToExtendedPath(std::move(path));
}

bool IsExtendedPath(TextView path) {
  return path.starts_with(kExtendedPrefix);
}

LongPath::LongPath(const Char* path) : given_(path) {
  const TextView view(path);
  if (view.size() >= kLongPathThreshold && !IsExtendedPath(view)) {
    made_ = ToExtendedPath(path);
  }
}

Text ToExtendedPath(Text path) {
  if (IsExtendedPath(path)) {
    return path;
  }
  if (std::optional<Text> resolved = ResolveAtOnce(path.c_str())) {
    path = *std::move(resolved);
  }
  return WithExtendedPrefix(path);
}

Text WithExtendedPrefix(TextView absolute) {
  if (absolute.starts_with(kUncPrefix)) {
    return Text(kExtendedUncPrefix).append(absolute.substr(kUncPrefix.size()));
  }
  return Text(kExtendedPrefix).append(absolute);
}

std::optional<Text> ResolveFully(const Text& path) {
  const std::uint32_t capacity = platform::FullPathName(path.c_str(), 0, nullptr);
  if (capacity == 0) {
    return std::nullopt;
  }
  Text resolved(capacity, Char{});
  const std::uint32_t length = platform::FullPathName(path.c_str(), capacity, resolved.data());
  if (length == 0 || length >= capacity) {
    return std::nullopt;
  }
  resolved.resize(length);
  return resolved;
}

std::optional<Text> ResolveAtOnce(const Char* path) {
  // Clearing a buffer of this size would cost more than the call does.
  const auto buffer = std::make_unique_for_overwrite<Char[]>(kLongestPathCapacity);
  const std::uint32_t length = platform::FullPathName(path, kLongestPathCapacity, buffer.get());
  if (length == 0 || length >= kLongestPathCapacity) {
    return std::nullopt;
  }
  return Text(buffer.get(), length);
}

Text ToComparablePath(const Text& path) {
  Text text = ResolveFully(path).value_or(path);
  if (StartsWithFolded(text, kExtendedUncPrefix)) {
    text.replace(0, kExtendedUncPrefix.size(), kUncPrefix);
  } else if (IsExtendedPath(text)) {
    text.erase(0, kExtendedPrefix.size());
  }
  while (text.size() >= 4 && IsSeparator(text.back())) {
    text.pop_back();
  }
  return text;
}

std::optional<Text> ParentDirectoryOf(const Text& path) {
  std::optional<Text> resolved = ResolveFully(path);
  if (!resolved) {
    return std::nullopt;
  }
  Text& text = *resolved;
  const auto is_drive = [&text] {
    return (text.size() == 2 || text.size() == 3) && text[1] == Char{':'};
  };
  while (!text.empty() && IsSeparator(text.back()) && !is_drive()) {
    text.pop_back();
  }
  const std::size_t last = LastSeparator(text);
  if (last == TextView::npos) {
    return Text();
  }
  if (last == 2 && text[1] == Char{':'}) {
    text.resize(3);
  } else if (last == 0) {
    text.assign(1, Char{'\\'});
  } else {
    text.resize(last);
  }
  return resolved;
}

bool EndsInDotOrBlank(TextView name) {
  return !name.empty() && (name.back() == Char{'.'} || name.back() == Char{' '});
}

bool HasDroppedEnding(TextView path) {
  if (IsExtendedPath(path)) {
    return false;
  }
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = NextSeparator(path, begin);
    const TextView name = path.substr(begin, end - begin);
    const bool goes_somewhere = name == QS_TEXT(".") || name == QS_TEXT("..");
    if (!goes_somewhere && EndsInDotOrBlank(name)) {
      return true;
    }
    begin = end + 1;
  }
  return false;
}

bool LeadsToFile(TextView path, TextView name) {
  // Resolving a long path has taken the ending off already.
  return LeafOf(path) == name && (IsExtendedPath(path) || !EndsInDotOrBlank(name));
}

bool LeadsIntoFolder(const Text& path, TextView name) {
  if (!EndsInDotOrBlank(name)) {
    return true;
  }
  if (IsExtendedPath(path)) {
    return LeafOf(path) == name;
  }
  // How many dots go is the system's affair.
  const std::optional<Text> resolved = ResolveAtOnce((path + Char{'\\'}).c_str());
  return resolved && LeafOf(TextView(*resolved).substr(0, resolved->size() - 1)) == name;
}

bool HaveSameNames(TextView a, TextView b) {
  constexpr Char kSeparator{'\\'};
  const auto take_name = [](TextView& path) {
    path.remove_prefix(std::min(path.find_first_not_of(kSeparator), path.size()));
    const TextView name = path.substr(0, path.find(kSeparator));
    path.remove_prefix(name.size());
    return name;
  };
  while (!a.empty() || !b.empty()) {
    if (take_name(a) != take_name(b)) {
      return false;
    }
  }
  return true;
}

std::size_t RootLength(TextView path) {
  if (StartsWithFolded(path, kExtendedUncPrefix)) {
    return EndOfShare(path, kExtendedUncPrefix.size());
  }
  if (IsExtendedPath(path) && HasDriveAt(path, kExtendedPrefix.size() + 1)) {
    return kExtendedPrefix.size() + 3;
  }
  if (path.starts_with(kUncPrefix)) {
    return EndOfShare(path, kUncPrefix.size());
  }
  return HasDriveAt(path, 1) ? 3 : 0;
}

bool IsPathUnder(TextView path, TextView prefix) {
  while (prefix.size() > 1 && IsSeparator(prefix.back())) {
    prefix.remove_suffix(1);
  }
  if (!StartsWithFolded(path, prefix)) {
    return false;
  }
  return path.size() == prefix.size() || (!prefix.empty() && IsSeparator(prefix.back())) ||
         IsSeparator(path[prefix.size()]);
}

Text JoinPath(TextView base, TextView name) {
  Text joined(base);
  if (!base.empty() && !IsSeparator(base.back())) {
    joined += Char{'\\'};
  }
  return joined.append(name);
}

Text CombinePaths(TextView base, TextView relative) {
  const bool has_drive = relative.size() >= 2 && relative[1] == Char{':'};
  const bool is_rooted = !relative.empty() && IsSeparator(relative[0]);
  if (has_drive || is_rooted) {
    return Text(relative);
  }
  while (!base.empty() && IsSeparator(base.back())) {
    base.remove_suffix(1);
  }
  if (base.empty()) {
    return Text(relative);
  }
  return Text(base).append(1, Char{'\\'}).append(relative);
}

bool IsRealDirectory(const Text& path) {
  const auto attributes = platform::QueryAttributes(ToLongPath(path).c_str());
  return attributes.ok() && platform::IsDirectory(attributes.value()) &&
         !platform::IsReparsePoint(attributes.value());
}

bool AreInSameDirectory(const Text& a, const Text& b) {
  const std::optional<Text> parent_of_a = ParentDirectoryOf(a);
  const std::optional<Text> parent_of_b = ParentDirectoryOf(b);
  return parent_of_a && parent_of_b && EqualsFolded(*parent_of_a, *parent_of_b);
}

}  // namespace quastel
