// Random trees, walked by the library and by the plainest possible recursion.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "quastel_core.h"
#include "simulated_windows/simulated_windows.h"
#include "support/text.h"
#include "support/walk.h"

namespace quastel {
namespace {

using simulated::Call;
using simulated::LinkKind;
using simulated::SimulatedWindows;
using support::FileWalk;
using support::FolderWalk;
using support::FoundFile;
using support::Lines;
using support::RunWalk;
using support::Utf8;
using support::WalkResult;
using support::Wide;

enum class Kind { kFile, kFolder, kDeniedFolder, kLink };

struct Entry {
  Kind kind = Kind::kFolder;
  Text name;
  std::uint64_t size = 0;
  std::uint64_t time = 0;
  std::vector<Entry> children;  // of a folder, in listing order
};

class RandomTree {
 public:
  RandomTree(SimulatedWindows& windows, unsigned seed, int deepest = 6)
      : windows_(windows), random_(seed), deepest_(deepest) {
    windows_.AddFolder(u"C:\\t");
    windows_.AddFile(u"C:\\elsewhere\\f.txt", "");
    root_.name = u"t";
    Fill(root_, u"C:\\t", 0);
  }

  const Entry& root() const { return root_; }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }

  void Fill(Entry& folder, const Text& path, int depth) {
    // Letters in ascending order: the listing order is the order of making.
    const std::size_t count = depth == 0 ? 8 : Below(7);
    for (std::size_t i = 0; i < count; ++i) {
      Entry entry;
      entry.name = Text(1, static_cast<Char>('a' + i));
      entry.name += Text(Below(6) == 0 ? 110 : Below(3), Char{'z'});
      entry.name += Below(2) == 0 ? u".txt" : u"";
      const Text child = path + u"\\" + entry.name;
      const std::size_t dice = Below(20);
      if (dice < 9) {
        entry.kind = Kind::kFile;
        entry.size = Below(2) == 0 ? Below(1000) : std::uint64_t{Below(1000)} << 32;
        entry.time = Below(1000) * 1'000'000'000'000;
        windows_.AddSizedFile(child, entry.size, 0, {.last_write = entry.time});
      } else if (dice < 17 && depth < deepest_) {
        windows_.AddFolder(child);
        Fill(entry, child, depth + 1);
        if (dice == 16) {
          entry.kind = Kind::kDeniedFolder;
          windows_.Deny(child, {.listing = true});
        }
      } else {
        entry.kind = Kind::kLink;
        switch (Below(4)) {
          case 0:
            windows_.AddLink(LinkKind::kJunction, child, u"C:\\elsewhere");
            break;
          case 1:
            windows_.AddLink(LinkKind::kFolderLink, child, u"C:\\t");
            break;
          case 2:
            windows_.AddLink(LinkKind::kFileLink, child, u"C:\\elsewhere\\f.txt");
            break;
          default:
            windows_.AddPlaceholder(child, 77);
        }
      }
      folder.children.push_back(std::move(entry));
    }
  }

  SimulatedWindows& windows_;
  std::mt19937 random_;
  const int deepest_;
  Entry root_;
};

bool IsText(const Text& name) {
  return name.size() >= 4 && name.substr(name.size() - 4) == u".txt";
}

Text LongForm(const Text& path) {
  return path.size() < 248 || path.rfind(u"\\\\?\\", 0) == 0 ? path : u"\\\\?\\" + path;
}

void Walk(const Entry& folder, const Text& path, bool texts_only, bool recursive,
          std::vector<FoundFile>& out) {
  for (const Entry& child : folder.children) {
    if (child.kind == Kind::kFile && (!texts_only || IsText(child.name))) {
      out.push_back({Utf8(LongForm(path + u"\\" + child.name)), child.size,
                     child.time + 504911232000000000, Utf8(child.name)});
    }
  }
  for (auto child = folder.children.rbegin(); recursive && child != folder.children.rend();
       ++child) {
    if (child->kind == Kind::kFolder) {
      Walk(*child, LongForm(path + u"\\" + child->name), texts_only, recursive, out);
    }
  }
}

TEST(EnumerationModel, Random_trees_are_reported_as_the_recursion_finds_them) {
  std::size_t files = 0;
  std::size_t long_paths = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SimulatedWindows windows;
    const RandomTree tree(windows, seed);
    for (const bool texts_only : {false, true}) {
      for (const bool recursive : {false, true}) {
        WalkResult expected;
        Walk(tree.root(), u"C:\\t", texts_only, recursive, expected.files);
        FileWalk walk{.root = Text(u"C:\\t"), .recursive = recursive ? 1u : 0u};
        if (texts_only) {
          walk.pattern = Text(u"*.txt");
        }
        ASSERT_EQ(RunWalk(walk), expected) << "tree " << seed;
        windows.SetDirectoryLimitHonoured(false);
        ASSERT_EQ(RunWalk(walk), expected) << "tree " << seed;
        windows.SetDirectoryLimitHonoured(true);
        files += expected.files.size();
        for (const std::string& path : expected.paths()) {
          long_paths += path.rfind("\\\\?\\", 0) == 0 ? 1 : 0;
        }
      }
    }
    EXPECT_EQ(windows.open_handles(), 0u);
    EXPECT_EQ(windows.most_open_searches(), 1u);
  }
  EXPECT_GT(files, 2000u);
  EXPECT_GT(long_paths, 20u);
}

TEST(EnumerationModel, Random_subfolders_are_listed) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    SimulatedWindows windows;
    const RandomTree tree(windows, seed);
    Lines expected;
    for (const Entry& child : tree.root().children) {
      if (child.kind == Kind::kFolder || child.kind == Kind::kDeniedFolder) {
        expected.push_back("C:\\t\\" + Utf8(child.name));
      }
    }
    ASSERT_EQ(RunWalk(FolderWalk{.root = Text(u"C:\\t")}),
              (support::FolderResult{QS_OK, expected}));
  }
}

TEST(EnumerationModel, A_system_call_that_fails_costs_files_and_never_the_walk) {
  for (const qs_char* pattern : {u"*", u"*.txt"}) {
    for (const simulated::Repeat repeat :
         {simulated::Repeat::kOnce, simulated::Repeat::kFromThenOn}) {
      bool injected = true;
      for (std::uint64_t nth = 1; injected; ++nth) {
        SimulatedWindows windows;
        const RandomTree tree(windows, 3, 2);
        const FileWalk walk{.root = Text(u"C:\\t"), .pattern = Text(pattern)};
        const Lines whole = RunWalk(walk).paths();
        ASSERT_FALSE(whole.empty());
        windows.ClearFaults();
        windows.FailAnyCall(nth, repeat);
        const WalkResult result = RunWalk(walk);
        injected = windows.faults_injected() != 0;
        EXPECT_EQ(result.status, QS_OK) << "call " << nth;
        EXPECT_EQ(windows.open_handles(), 0u);
        std::size_t at = 0;
        for (const std::string& path : result.paths()) {
          while (at < whole.size() && whole[at] != path) {
            ++at;
          }
          ASSERT_LT(at, whole.size()) << path << " was not found by the undisturbed walk";
        }
        if (!injected) {
          EXPECT_EQ(result.paths(), whole);
        }
      }
    }
  }
}

}  // namespace
}  // namespace quastel
