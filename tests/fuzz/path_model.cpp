#include "fuzz/path_model.h"

#include <vector>

#include "platform/file_system.h"

namespace quastel::fuzz::model {
namespace {

constexpr std::uint32_t kLongest = 32768;

std::size_t SeparatorFrom(const Text& path, std::size_t from) {
  for (std::size_t i = from; i < path.size(); ++i) {
    if (IsSlash(path[i])) {
      return i;
    }
  }
  return Text::npos;
}

std::size_t ShareEnd(const Text& path, std::size_t server) {
  const std::size_t first = SeparatorFrom(path, server);
  const std::size_t second = first == Text::npos ? Text::npos : SeparatorFrom(path, first + 1);
  return second == Text::npos ? path.size() : second + 1;
}

}  // namespace

bool IsSlash(Char c) {
  return c == u'\\' || c == u'/';
}

Text Lowered(Text text) {
  for (Char& c : text) {
    c = c >= u'A' && c <= u'Z' ? static_cast<Char>(c + 32) : c;
  }
  return text;
}

bool Begins(const Text& text, const Text& start) {
  return Lowered(text.substr(0, start.size())) == Lowered(start);
}

std::optional<Text> FullPath(const Text& path) {
  thread_local std::vector<Char> buffer(kLongest);  // the fuzzer asks all the time
  const std::uint32_t length = platform::FullPathName(path.c_str(), kLongest, buffer.data());
  if (length == 0 || length >= kLongest) {
    return std::nullopt;
  }
  return Text(buffer.data(), length);
}

Text LongPath(const Text& path) {
  if (path.size() < 248 || Begins(path, u"\\\\?\\")) {
    return path;
  }
  const Text full = FullPath(path).value_or(path);
  return Begins(full, u"\\\\") ? u"\\\\?\\UNC\\" + full.substr(2) : u"\\\\?\\" + full;
}

Text Comparable(const Text& path) {
  Text text = FullPath(path).value_or(path);
  if (Begins(text, u"\\\\?\\UNC\\")) {
    text = u"\\\\" + text.substr(8);
  } else if (Begins(text, u"\\\\?\\")) {
    text = text.substr(4);
  }
  while (text.size() > 3 && IsSlash(text.back())) {
    text.pop_back();
  }
  return text;
}

std::optional<Text> Parent(const Text& path) {
  std::optional<Text> full = FullPath(path);
  if (!full) {
    return std::nullopt;
  }
  Text text = *full;
  while (!text.empty() && IsSlash(text.back()) &&
         !((text.size() == 2 || text.size() == 3) && text[1] == u':')) {
    text.pop_back();
  }
  std::size_t index = text.size();
  while (index > 0 && !IsSlash(text[index - 1])) {
    --index;
  }
  if (index == 0) {
    return Text();
  }
  --index;
  if (index == 2 && text[1] == u':') {
    return text.substr(0, 3);
  }
  return index == 0 ? Text(u"\\") : text.substr(0, index);
}

std::size_t RootLength(const Text& path) {
  if (path.size() >= 8 && Begins(path, u"\\\\?\\UNC\\")) {
    return ShareEnd(path, 8);
  }
  if (path.size() >= 7 && Begins(path, u"\\\\?\\") && path[5] == u':' && IsSlash(path[6])) {
    return 7;
  }
  if (path.size() >= 2 && path[0] == u'\\' && path[1] == u'\\') {
    return ShareEnd(path, 2);
  }
  return path.size() >= 3 && path[1] == u':' && IsSlash(path[2]) ? 3 : 0;
}

bool IsUnder(const Text& path, Text prefix) {
  while (prefix.size() > 1 && IsSlash(prefix.back())) {
    prefix.pop_back();
  }
  if (path.size() < prefix.size() || !Begins(path, prefix)) {
    return false;
  }
  return path.size() == prefix.size() || (!prefix.empty() && IsSlash(prefix.back())) ||
         IsSlash(path[prefix.size()]);
}

Text Join(const Text& base, const Text& name) {
  return base.empty() || IsSlash(base.back()) ? base + name : base + u"\\" + name;
}

Text Combine(Text base, Text relative) {
  if ((relative.size() >= 2 && relative[1] == u':') ||
      (!relative.empty() && IsSlash(relative[0]))) {
    return relative;
  }
  while (!base.empty() && IsSlash(base.back())) {
    base.pop_back();
  }
  return base.empty() ? relative : base + u"\\" + relative;
}

Text Leaf(const Text& path) {
  std::size_t begin = path.size();
  while (begin > 0 && !IsSlash(path[begin - 1])) {
    --begin;
  }
  return path.substr(begin);
}

bool IsProtected(const Text& path, const Text& system_root, const Text& user_home) {
  const Text compared = Comparable(path);
  const Text root = Comparable(system_root);
  for (const char16_t* name :
       {u"Program Files", u"Program Files (x86)", u"Windows", u"ProgramData", u"$Recycle.Bin"}) {
    if (IsUnder(compared, Join(root, name))) {
      return true;
    }
  }
  return IsUnder(compared, Comparable(user_home) + u"\\AppData");
}

bool IsIgnored(const Text& path) {
  const Text leaf = Lowered(Leaf(path));
  return leaf == u"hiberfil.sys" || leaf == u"swapfile.sys" || leaf == u"pagefile.sys";
}

}  // namespace quastel::fuzz::model
