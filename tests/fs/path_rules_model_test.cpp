// Random paths through the path rules, against the plainest possible reading of each rule.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "fs/path_rules.h"
#include "fuzz/path_model.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"

namespace quastel {
namespace {

namespace model = fuzz::model;

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
    ASSERT_EQ(Utf8(ToLongPath(path)), Utf8(model::LongPath(path))) << Utf8(path);
    long_ones += ToLongPath(path) != path ? 1 : 0;
  }
  EXPECT_GT(long_ones, 200) << "the paths reach both sides of the threshold";
}

TEST_F(PathRulesModel, The_comparable_form_of_random_paths) {
  for (int i = 0; i < 8000; ++i) {
    const Text path = paths_.Next();
    ASSERT_EQ(Utf8(ToComparablePath(path)), Utf8(model::Comparable(path))) << Utf8(path);
  }
}

TEST_F(PathRulesModel, A_long_path_compares_like_its_long_form) {
  int compared = 0;
  for (int i = 0; i < 8000; ++i) {
    const Text path = paths_.Next();
    const std::optional<Text> full = model::FullPath(path);
    // Behind two separators there must be a server: dots there mean nothing that the prefix would
    // keep.
    const bool is_plain = full && !model::Begins(*full, u"\\\\?\\") &&
                          (!model::Begins(*full, u"\\\\") || model::Begins(*full, u"\\\\srv\\s"));
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
    const std::optional<Text> expected = model::Parent(path);
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
    const bool expected = model::IsUnder(path, prefix);
    ASSERT_EQ(IsPathUnder(path, prefix), expected) << Utf8(path) << " under " << Utf8(prefix);
    under += expected ? 1 : 0;
  }
  EXPECT_GT(under, 1000);
}

TEST_F(PathRulesModel, Random_paths_combined) {
  for (int i = 0; i < 8000; ++i) {
    const Text base = paths_.Next();
    const Text relative = paths_.Next();
    ASSERT_EQ(Utf8(CombinePaths(base, relative)), Utf8(model::Combine(base, relative)))
        << Utf8(base) << " and " << Utf8(relative);
    const Text joined = JoinPath(base, relative);
    const Text expected = base.empty()                  ? relative
                          : model::IsSlash(base.back()) ? base + relative
                                                        : base + u"\\" + relative;
    ASSERT_EQ(Utf8(joined), Utf8(expected));
  }
}

TEST_F(PathRulesModel, Two_random_paths_in_the_same_directory) {
  int same = 0;
  for (int i = 0; i < 8000; ++i) {
    const Text a = paths_.Next();
    const Text b = paths_.Below(2) == 0 ? paths_.Next() : paths_.Recased(a) + u"x";
    const std::optional<Text> parent_a = model::Parent(a);
    const std::optional<Text> parent_b = model::Parent(b);
    const bool expected =
        parent_a && parent_b && model::Lowered(*parent_a) == model::Lowered(*parent_b);
    ASSERT_EQ(AreInSameDirectory(a, b), expected) << Utf8(a) << " and " << Utf8(b);
    ASSERT_EQ(qs_is_in_same_directory(a.c_str(), b.c_str()), expected ? 1 : 0);
    same += expected ? 1 : 0;
  }
  EXPECT_GT(same, 500);
}

}  // namespace
}  // namespace quastel
