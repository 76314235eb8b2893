// Random paths through the path rules, against the plainest possible reading of each rule.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "fs/path_rules.h"
#include "platform/file_system.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel {
namespace {

using simulated::SimulatedWindows;
using support::Utf8;
using support::Wide;

class Paths {
 public:
  explicit Paths(unsigned seed) : random_(seed) {}

  std::size_t Below(std::size_t limit) { return random_() % limit; }

  Text Next() {
    static const char* const kStarts[] = {"C:\\",
                                          "c:/",
                                          "C:",
                                          "D:\\",
                                          "",
                                          "\\",
                                          "/",
                                          "\\\\srv\\s\\",
                                          "\\\\SRV/share\\",
                                          "\\\\?\\C:\\",
                                          "\\\\?\\D:\\a\\",
                                          "\\\\?\\UNC\\srv\\s\\",
                                          "\\\\?\\unc\\srv\\s\\",
                                          "\\\\",
                                          "//srv/s/"};
    static const char* const kNames[] = {"a",    "A", "b",       "ab",      ".",       "..",
                                         "",     " ", "Windows", "WINDOWS", "x.y",     "a.",
                                         "\xE9", "[", "{",       "long-",   "a b c d", ":"};
    Text path = Wide(kStarts[Below(std::size(kStarts))]);
    const std::size_t target = Below(6) == 0 ? 200 + Below(120) : 0;
    for (std::size_t names = Below(6); names > 0 || path.size() < target; names -= names > 0) {
      const char* const name = kNames[Below(std::size(kNames))];
      for (const char* c = name; *c != '\0'; ++c) {
        path += static_cast<Char>(static_cast<unsigned char>(*c));
      }
      if (path.size() < target) {
        path += Text(Below(50), Char{'q'});
      }
      if (Below(5) != 0) {
        path += Below(4) == 0 ? Char{'/'} : Char{'\\'};
      }
    }
    return path;
  }

  // The same path in another spelling of its letters' case.
  Text Recased(Text path) {
    for (Char& c : path) {
      const bool letter = (c >= Char{'a'} && c <= Char{'z'}) || (c >= Char{'A'} && c <= Char{'Z'});
      if (letter && Below(2) == 0) {
        c = static_cast<Char>(c ^ 32);
      }
    }
    return path;
  }

 private:
  std::mt19937 random_;
};

// ---- The model

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
  return Lowered(text).rfind(Lowered(start), 0) == 0;
}

std::optional<Text> ModelFullPath(const Text& path) {
  std::vector<Char> buffer(40000);
  const std::uint32_t length = platform::FullPathName(path.c_str(), 40000, buffer.data());
  return length == 0 ? std::nullopt : std::optional<Text>(Text(buffer.data(), length));
}

Text ModelLongPath(const Text& path) {
  if (path.size() < 248 || Begins(path, u"\\\\?\\")) {
    return path;
  }
  const Text full = ModelFullPath(path).value_or(path);
  return Begins(full, u"\\\\") ? u"\\\\?\\UNC\\" + full.substr(2) : u"\\\\?\\" + full;
}

Text ModelComparable(const Text& path) {
  Text text = ModelFullPath(path).value_or(path);
  if (Begins(text, u"\\\\?\\UNC\\")) {
    text = u"\\\\" + text.substr(8);
  } else if (Begins(text, u"\\\\?\\")) {
    text = text.substr(4);
  }
  while (text.size() >= 4 && IsSlash(text.back())) {
    text.pop_back();
  }
  return text;
}

std::optional<Text> ModelParent(const Text& path) {
  std::optional<Text> full = ModelFullPath(path);
  if (!full) {
    return std::nullopt;
  }
  Text text = *full;
  while (!text.empty() && IsSlash(text.back()) &&
         !((text.size() == 2 || text.size() == 3) && text[1] == u':')) {
    text.pop_back();
  }
  std::size_t last = text.size();
  while (last > 0 && !IsSlash(text[last - 1])) {
    --last;
  }
  if (last == 0) {
    return Text();
  }
  const std::size_t index = last - 1;
  if (index == 2 && text[1] == u':') {
    return text.substr(0, 3);
  }
  return index == 0 ? Text(u"\\") : text.substr(0, index);
}

bool ModelUnder(const Text& path, Text prefix) {
  while (prefix.size() > 1 && IsSlash(prefix.back())) {
    prefix.pop_back();
  }
  if (!Begins(path, prefix)) {
    return false;
  }
  return path.size() == prefix.size() || (!prefix.empty() && IsSlash(prefix.back())) ||
         IsSlash(path[prefix.size()]);
}

Text ModelCombine(const Text& base, const Text& relative) {
  if ((relative.size() >= 2 && relative[1] == u':') ||
      (!relative.empty() && IsSlash(relative[0]))) {
    return relative;
  }
  Text left = base;
  while (!left.empty() && IsSlash(left.back())) {
    left.pop_back();
  }
  return left.empty() ? relative : left + u"\\" + relative;
}

class PathRulesModel : public ::testing::Test {
 protected:
  PathRulesModel() {
    windows_.AddFolder(u"C:\\Work\\Here");
    windows_.SetCurrentFolder(u"C:\\Work\\Here");
  }
  SimulatedWindows windows_;
  Paths paths_{20240229};
};

TEST_F(PathRulesModel, The_long_form_of_random_paths) {
  int long_ones = 0;
  for (int i = 0; i < 8000; ++i) {
    const Text path = paths_.Next();
    ASSERT_EQ(Utf8(ToLongPath(path)), Utf8(ModelLongPath(path))) << Utf8(path);
    long_ones += ToLongPath(path) != path ? 1 : 0;
  }
  EXPECT_GT(long_ones, 200) << "the paths reach both sides of the threshold";
}

TEST_F(PathRulesModel, The_comparable_form_of_random_paths) {
  for (int i = 0; i < 8000; ++i) {
    const Text path = paths_.Next();
    ASSERT_EQ(Utf8(ToComparablePath(path)), Utf8(ModelComparable(path))) << Utf8(path);
  }
}

TEST_F(PathRulesModel, A_long_path_compares_like_its_long_form) {
  int compared = 0;
  for (int i = 0; i < 8000; ++i) {
    const Text path = paths_.Next();
    const std::optional<Text> full = ModelFullPath(path);
    // Behind two separators there must be a server: dots there mean nothing that the prefix would
    // keep.
    const bool is_plain = full && !Begins(*full, u"\\\\?\\") &&
                          (!Begins(*full, u"\\\\") || Begins(*full, u"\\\\srv\\s"));
    if (path.size() >= 248 && is_plain) {
      ASSERT_EQ(Utf8(ToComparablePath(ToLongPath(path))), Utf8(ToComparablePath(path)))
          << Utf8(path);
      ++compared;
    }
  }
  EXPECT_GT(compared, 100);
}

TEST_F(PathRulesModel, The_parent_of_random_paths) {
  int without = 0;
  for (int i = 0; i < 8000; ++i) {
    const Text path = paths_.Next();
    const std::optional<Text> expected = ModelParent(path);
    const std::optional<Text> parent = ParentDirectoryOf(path);
    ASSERT_EQ(parent.has_value(), expected.has_value()) << Utf8(path);
    if (expected) {
      ASSERT_EQ(Utf8(*parent), Utf8(*expected)) << Utf8(path);
    } else {
      ++without;
    }
  }
  EXPECT_GT(without, 0);
}

TEST_F(PathRulesModel, Whether_random_paths_lie_under_each_other) {
  int under = 0;
  for (int i = 0; i < 20000; ++i) {
    Text path = paths_.Next();
    // Half of the prefixes are cut from the path itself: unrelated ones hardly ever hold it.
    Text prefix = paths_.Below(2) == 0
                      ? paths_.Next()
                      : paths_.Recased(path.substr(0, paths_.Below(path.size() + 1)));
    if (paths_.Below(4) == 0) {
      prefix += u"\\";
    }
    const bool expected = ModelUnder(path, prefix);
    ASSERT_EQ(IsPathUnder(path, prefix), expected) << Utf8(path) << " under " << Utf8(prefix);
    under += expected ? 1 : 0;
  }
  EXPECT_GT(under, 1000);
}

TEST_F(PathRulesModel, Random_paths_combined) {
  for (int i = 0; i < 8000; ++i) {
    const Text base = paths_.Next();
    const Text relative = paths_.Next();
    ASSERT_EQ(Utf8(CombinePaths(base, relative)), Utf8(ModelCombine(base, relative)))
        << Utf8(base) << " and " << Utf8(relative);
    const Text joined = JoinPath(base, relative);
    const Text expected = base.empty()           ? relative
                          : IsSlash(base.back()) ? base + relative
                                                 : base + u"\\" + relative;
    ASSERT_EQ(Utf8(joined), Utf8(expected));
  }
}

TEST_F(PathRulesModel, Two_random_paths_in_the_same_directory) {
  int same = 0;
  for (int i = 0; i < 8000; ++i) {
    const Text a = paths_.Next();
    const Text b = paths_.Below(2) == 0 ? paths_.Next() : paths_.Recased(a) + u"x";
    const std::optional<Text> parent_a = ModelParent(a);
    const std::optional<Text> parent_b = ModelParent(b);
    const bool expected = parent_a && parent_b && Lowered(*parent_a) == Lowered(*parent_b);
    ASSERT_EQ(AreInSameDirectory(a, b), expected) << Utf8(a) << " and " << Utf8(b);
    ASSERT_EQ(qs_is_in_same_directory(a.c_str(), b.c_str()), expected ? 1 : 0);
    same += expected ? 1 : 0;
  }
  EXPECT_GT(same, 500);
}

}  // namespace
}  // namespace quastel
