#include "simulated_windows/paths.h"

#include "base/ascii.h"

namespace quastel::simulated {
namespace {

using platform::Error;

constexpr Char kSeparator = Char{'\\'};
constexpr Char kDot = Char{'.'};

enum class PathType {
  kUnc,
  kDevice,
  kBareDevice,
  kDriveAbsolute,
  kDriveRelative,
  kRooted,
  kRelative
};

PathType TypeOf(TextView path) {
  if (!path.empty() && IsSeparator(path[0])) {
    if (path.size() < 2 || !IsSeparator(path[1])) {
      return PathType::kRooted;
    }
    if (path.size() >= 3 && (path[2] == kDot || path[2] == Char{'?'})) {
      if (path.size() == 3) {
        return PathType::kBareDevice;
      }
      if (IsSeparator(path[3])) {
        return PathType::kDevice;
      }
    }
    return PathType::kUnc;
  }
  if (path.size() < 2 || path[1] != Char{':'}) {
    return PathType::kRelative;
  }
  return path.size() >= 3 && IsSeparator(path[2]) ? PathType::kDriveAbsolute
                                                  : PathType::kDriveRelative;
}

// The length of \\server\share\ at the start of a UNC path: what ".." cannot leave.
std::size_t UncRootLength(TextView path) {
  std::size_t i = 2;
  for (int part = 0; part < 2; ++part) {
    while (i < path.size() && !IsSeparator(path[i])) {
      ++i;
    }
    while (i < path.size() && IsSeparator(path[i])) {
      ++i;
    }
  }
  return i;
}

std::size_t RootLengthOf(TextView path) {
  return path.size() >= 2 && path[1] == Char{':'} ? 3 : UncRootLength(path);
}

// `path` without the last segment, but never shorter than the root; no separator at the end.
void DropLastSegment(Text& path, std::size_t root) {
  const std::size_t last = path.rfind(kSeparator);
  path.resize(last == Text::npos || last < root ? root : last);
}

// Removes ".", "..", doubled separators and trailing dots and spaces after the root.
Text Collapse(TextView text, std::size_t root) {
  Text path(text.substr(0, std::min(root, text.size())));
  for (Char& c : path) {
    c = IsSeparator(c) ? kSeparator : c;
  }
  root = path.size();
  std::size_t i = root;
  bool separator_pending = false;  // the separator that ended the last segment
  while (i < text.size()) {
    if (IsSeparator(text[i])) {
      separator_pending = path.size() > root;
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < text.size() && !IsSeparator(text[end])) {
      ++end;
    }
    const TextView segment = text.substr(i, end - i);
    const bool last = end == text.size();
    i = end;
    if (segment == QS_TEXT(".")) {
      separator_pending = separator_pending && !last;
      continue;
    }
    if (segment == QS_TEXT("..")) {
      DropLastSegment(path, root);
      separator_pending = path.size() > root && !last;
      continue;
    }
    if (path.size() > root) {
      path += kSeparator;
    }
    path += segment;
    separator_pending = false;
    if (!last && path.back() == kDot) {
      path.pop_back();
    }
  }
  if (separator_pending && path.size() > root) {
    path += kSeparator;
  }
  while (!path.empty() && (path.back() == Char{' '} || path.back() == kDot)) {
    path.pop_back();
  }
  return path;
}

// Reads what follows \\?\ or \\.\ into `parts`.
void ParseDeviceText(TextView text, PathParts& parts) {
  if (StartsWithFolded(text, QS_TEXT("UNC\\"))) {
    const TextView unc = text.substr(4);
    const std::size_t server = unc.find(kSeparator);
    if (server == TextView::npos || server == 0) {
      parts.error = Error::kInvalidName;
      return;
    }
    const std::size_t share = std::min(unc.find(kSeparator, server + 1), unc.size());
    parts.root = QS_TEXT("\\\\");
    parts.root += unc.substr(0, share);
    parts.rest = share < unc.size() ? unc.substr(share + 1) : TextView();
    return;
  }
  if (text.size() < 2 || text[1] != Char{':'} || !IsAsciiLetter(text[0])) {
    parts.error = Error::kFileNotFound;
    return;
  }
  parts.root = text.substr(0, 2);
  if (text.size() == 2) {
    parts.is_device = true;
  } else if (text[2] == kSeparator) {
    parts.rest = text.substr(3);
  } else {
    parts.error = Error::kFileNotFound;
  }
}

}  // namespace

Text FullPathOf(TextView path, TextView current_folder) {
  if (path.find_first_not_of(Char{' '}) == TextView::npos) {
    return {};
  }
  switch (TypeOf(path)) {
    case PathType::kUnc:
      return Collapse(path, UncRootLength(path));
    case PathType::kDevice:
      return Collapse(path, 4);
    case PathType::kBareDevice:
      return Text(QS_TEXT("\\\\.\\"));
    case PathType::kDriveAbsolute:
      return Collapse(path, 3);
    case PathType::kDriveRelative:
      if (FoldAscii(path[0]) == FoldAscii(current_folder[0]) && current_folder[1] == Char{':'}) {
        path.remove_prefix(2);
        if (path.empty()) {
          return Text(current_folder);
        }
        break;
      }
      // Only the current drive has a current folder in a process that no command shell started.
      return Collapse(Text(path.substr(0, 2)) + QS_TEXT("\\") + Text(path.substr(2)), 3);
    case PathType::kRooted: {
      Text joined(current_folder.substr(0, RootLengthOf(current_folder)));
      if (joined.back() != kSeparator) {
        joined += kSeparator;
      }
      joined += path.substr(1);
      return Collapse(joined, RootLengthOf(joined));
    }
    case PathType::kRelative:
      break;
  }
  Text joined(current_folder);
  if (joined.back() != kSeparator) {
    joined += kSeparator;
  }
  joined += path;
  return Collapse(joined, RootLengthOf(joined));
}

bool HasVerbatimPrefix(TextView path) {
  return path.size() >= 4 && path.substr(0, 4) == QS_TEXT("\\\\?\\");
}

PathParts ParsePath(TextView path, TextView current_folder, std::size_t limit) {
  PathParts parts;
  const bool verbatim = HasVerbatimPrefix(path);
  const Text full = verbatim ? Text(path) : FullPathOf(path, current_folder);
  if (full.empty()) {
    parts.error = Error::kPathNotFound;
    return parts;
  }
  const TextView text = full;
  const PathType type = TypeOf(text);
  if (full.size() >= (verbatim ? kLongPathLimit + 1 : limit)) {
    parts.error = limit == kPathLimit ? Error::kPathNotFound : Error::kFilenameTooLong;
    return parts;
  }
  if (type == PathType::kDevice) {
    ParseDeviceText(text.substr(4), parts);
  } else if (type == PathType::kDriveAbsolute) {
    parts.root = text.substr(0, 2);
    parts.rest = text.substr(3);
  } else if (type == PathType::kUnc) {
    Text unc(QS_TEXT("UNC\\"));
    unc += text.substr(2);
    ParseDeviceText(unc, parts);
  } else {
    parts.error = Error::kPathNotFound;
  }
  if (parts.error == Error::kNone && !parts.rest.empty() && parts.rest.back() == kSeparator) {
    parts.rest.pop_back();
    parts.trailing_separator = true;
  }
  // The long-path form is taken as it is: nobody has joined its separators.
  if (parts.error == Error::kNone && !parts.rest.empty() &&
      (parts.rest.front() == kSeparator || parts.rest.back() == kSeparator ||
       parts.rest.find(QS_TEXT("\\\\")) != Text::npos)) {
    parts.error = Error::kInvalidName;
  }
  return parts;
}

TextView TakeSegment(TextView& rest) {
  const std::size_t end = rest.find(kSeparator);
  const TextView segment = rest.substr(0, end);
  rest = end == TextView::npos ? TextView() : rest.substr(end + 1);
  return segment;
}

}  // namespace quastel::simulated
