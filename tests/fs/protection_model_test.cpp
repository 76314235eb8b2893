// Folders made comparable once for a walk must protect exactly what the plain question protects.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "fs/path_rules.h"
#include "fs/protection.h"
#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/instrumented.h"
#include "support/text.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::Repeat;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FoundFile;
using support::RunWalk;
using support::Utf8;
using support::WalkResult;
using support::Wide;

constexpr const char* kSystemRoots[] = {
    "C:\\", "c:/", "C:\\Users\\..", "\\\\?\\C:\\", "C:\\.", "D:\\Sys", "d:/sys/",
    "",     ".",   "\\\\srv\\c\\",  "\\",          "C:\\\\"};
constexpr const char* kHomes[] = {
    "C:\\Users\\u",   "c:/users/U/",         "\\\\?\\C:\\Users\\u", "Users\\u", "D:\\", "",
    "C:\\Windows\\u", "\\\\srv\\c\\Users\\u"};

class RandomPath {
 public:
  explicit RandomPath(unsigned seed) : random_(seed) {}

  std::size_t Below(std::size_t limit) { return random_() % limit; }

  Text Next() {
    static const char* const kStarts[] = {
        "C:\\", "c:/", "\\\\?\\C:\\", "\\\\?\\c:\\",  "D:\\Sys\\",           "",
        "\\",   "C:",  "D:\\",        "\\\\srv\\c\\", "\\\\?\\UNC\\srv\\c\\"};
    static const char* const kNames[] = {"Windows",
                                         "Program Files",
                                         "Program Files (x86)",
                                         "ProgramData",
                                         "$Recycle.Bin",
                                         "WindowsApps",
                                         "Users",
                                         "u",
                                         "AppData",
                                         "Program File",
                                         "AppData2",
                                         ".",
                                         "..",
                                         "",
                                         "Windows ",
                                         "Windows.",
                                         "a"};
    Text path = Wide(kStarts[Below(std::size(kStarts))]);
    if (Below(3) == 0) {
      path += u"Users\\u\\";
    }
    for (std::size_t names = Below(5); names > 0; --names) {
      path += Recased(Wide(kNames[Below(std::size(kNames))]));
      path += Below(3) == 0 ? Char{'/'} : Char{'\\'};
    }
    if (!path.empty() && Below(2) == 0) {
      path.pop_back();
    }
    if (Below(20) == 0) {
      path += Text(u"\\") + Text(230, Char{'q'});
    }
    return path;
  }

  Text Recased(Text text) {
    for (Char& c : text) {
      const bool letter = (c >= Char{'a'} && c <= Char{'z'}) || (c >= Char{'A'} && c <= Char{'Z'});
      if (letter && Below(4) == 0) {
        c = static_cast<Char>(c ^ 32);
      }
    }
    return text;
  }

 private:
  std::mt19937 random_;
};

// The question as it reads, with nothing made ready beforehand.
bool ModelProtected(const Text& path, const Text& system_root, const Text& user_home) {
  const Text compared = ToComparablePath(path);
  const Text root = ToComparablePath(system_root);
  for (const char* name :
       {"Program Files", "Program Files (x86)", "Windows", "ProgramData", "$Recycle.Bin"}) {
    if (IsPathUnder(compared, JoinPath(root, Wide(name)))) {
      return true;
    }
  }
  return IsPathUnder(compared, ToComparablePath(user_home) + u"\\AppData");
}

class ProtectionModel : public ::testing::Test {
 protected:
  SimulatedWindows windows_;
};

TEST_F(ProtectionModel, Prepared_folders_agree_with_the_plain_question_for_random_paths) {
  RandomPath random(11);
  int protected_ones = 0;
  int questions = 0;
  for (const char* root : kSystemRoots) {
    for (const char* home : kHomes) {
      const Text system_root = Wide(root);
      const Text user_home = Wide(home);
      const ProtectedFolders folders(system_root, user_home);
      for (int i = 0; i < 150; ++i) {
        const Text path = random.Next();
        const bool expected = ModelProtected(path, system_root, user_home);
        ASSERT_EQ(qs_is_in_whitelist(path.c_str(), system_root.c_str(), user_home.c_str()),
                  expected ? 1 : 0)
            << Utf8(path) << " with " << root << " and " << home;
        ASSERT_EQ(folders.Contains(path), expected)
            << Utf8(path) << " with " << root << " and " << home;
        protected_ones += expected ? 1 : 0;
        ++questions;
      }
    }
  }
  EXPECT_GT(protected_ones, questions / 50);
  EXPECT_LT(protected_ones, questions - questions / 50);
}

TEST_F(ProtectionModel, They_agree_when_nothing_can_be_resolved) {
  RandomPath random(12);
  windows_.FailCall(Call::kFullPathName, 1, Repeat::kFromThenOn);
  for (const char* root : kSystemRoots) {
    const Text system_root = Wide(root);
    const ProtectedFolders folders(system_root, u"C:\\Users\\u");
    for (int i = 0; i < 300; ++i) {
      const Text path = random.Next();
      const bool expected = ModelProtected(path, system_root, u"C:\\Users\\u");
      ASSERT_EQ(qs_is_in_whitelist(path.c_str(), system_root.c_str(), u"C:\\Users\\u"),
                expected ? 1 : 0)
          << Utf8(path) << " with " << root;
      ASSERT_EQ(folders.Contains(path), expected) << Utf8(path) << " with " << root;
    }
  }
}

// Whether the plain question protects the root or any folder between it and the file.
bool IsKeptOut(const Text& file, std::size_t root_length, const Text& system_root,
               const Text& user_home) {
  for (std::size_t end = root_length; end < file.size(); ++end) {
    if (file[end] == Char{'\\'} &&
        qs_is_in_whitelist(file.substr(0, end == root_length ? root_length : end).c_str(),
                           system_root.c_str(), user_home.c_str()) == 1) {
      return true;
    }
  }
  return false;
}

// Of the pairs of folders an instrumented build takes one in five: over all the roots each pair
// still has its turn.
TEST_F(ProtectionModel, A_protected_walk_reports_what_the_plain_question_leaves) {
  windows_.AddDrive('D');
  windows_.AddShare(u"\\\\srv\\c");
  for (const qs_char* top : {u"C:", u"D:", u"D:\\sys", u"\\\\srv\\c", u"C:\\Users\\u"}) {
    for (const qs_char* path :
         {u"\\Program Files\\f", u"\\PROGRAM FILES (X86)\\a\\f", u"\\windows\\f",
          u"\\windows\\Windows\\f", u"\\ProgramData\\f", u"\\$RECYCLE.BIN\\f", u"\\WindowsApps\\f",
          u"\\Users\\u\\AppData\\Local\\f", u"\\Users\\u\\appdata2\\f", u"\\Users\\u\\f",
          u"\\AppData\\f", u"\\f"}) {
      windows_.AddFile(Text(top) + path, "");
    }
  }
  windows_.AddFile(support::NestedTo(300, u"C:\\Windows") + u"\\f", "");
  windows_.AddFile(support::NestedTo(300, u"C:\\Windo") + u"\\f", "");

  int kept_out = 0;
  std::uint64_t pairs = 0;
  for (const qs_char* root :
       {u"C:\\", u"c:/", u"C:\\Users", u".", u"Users", u"D:\\", u"D:/SYS", u"\\\\srv\\c",
        u"\\\\?\\C:\\Users\\u", u"C:\\windows\\..\\Users", u"C:\\Windows\\", u"D:\\sys\\windows"}) {
    const FileWalk whole{.root = Text(root)};
    const WalkResult everything = RunWalk(whole);
    ASSERT_FALSE(everything.files.empty()) << Utf8(root);
    for (const char* system_root : kSystemRoots) {
      for (const char* user_home : kHomes) {
        if (!support::IsDone(++pairs, 5)) {
          continue;
        }
        FileWalk walk{.root = Text(root),
                      .protect_system = 1,
                      .system_root = Wide(system_root),
                      .user_home = Wide(user_home)};
        WalkResult expected;
        for (const FoundFile& file : everything.files) {
          const bool is_long = file.path.find("\\\\?\\") == 0 && Text(root).find(u"\\\\?\\") != 0;
          const std::size_t root_length = is_long ? Text(u"\\\\?\\C:").size() : Text(root).size();
          if (IsKeptOut(Wide(file.path), root_length, *walk.system_root, *walk.user_home) ||
              qs_is_in_whitelist(root, walk.system_root->c_str(), walk.user_home->c_str()) == 1) {
            ++kept_out;
          } else {
            expected.files.push_back(file);
          }
        }
        ASSERT_EQ(RunWalk(walk), expected)
            << Utf8(root) << " with " << system_root << " and " << user_home;
        walk.pattern = Text(u"f*");
        ASSERT_EQ(RunWalk(walk), expected)
            << Utf8(root) << " with " << system_root << " and " << user_home;
      }
    }
  }
  EXPECT_GT(kept_out, support::Rounds(500, 100));
}

}  // namespace
}  // namespace quastel
