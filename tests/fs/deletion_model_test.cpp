// Random trees and random paths through the five exports, against the plainest possible reading of
// the rules: the model looks at the disk from outside, name by name, and keeps no path prefix.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "fs/deletion_fixture.h"
#include "platform/file_system.h"
#include "support/instrumented.h"

namespace quastel::deletion_tests {
namespace {

constexpr int kRounds = support::Rounds(400, 120);
constexpr int kPathsInRound = 8;

struct Shell {
  bool ineffective = false;
  bool aborts = false;
  std::int32_t code = 0;
  bool delete_aborted = false;
  bool removes = true;
};

// What keeps an item from being deleted and does not show in its facts, by lowered path.
struct Obstacles {
  std::set<Text> in_use;
  std::set<Text> denied;
};

struct Expectation {
  std::int32_t answer = 0;
  bool gone = false;
  Text item;  // what the path names, in the form of the simulation
};

// The text that GetFullPathNameW makes of a path; nothing when it makes none.
std::optional<Text> FullPath(const Text& path) {
  std::vector<Char> buffer(40000);
  const std::uint32_t length = platform::FullPathName(path.c_str(), 40000, buffer.data());
  return length == 0 ? std::nullopt : std::optional<Text>(Text(buffer.data(), length));
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

// Root and names of an absolute path without prefix.
struct Split {
  Text root;
  std::vector<Text> names;
  bool separator_at_end = false;
};

Split SplitOf(const Text& absolute) {
  Split split;
  std::size_t at = 3;
  if (absolute[1] != u':') {
    const std::size_t share = absolute.find(u'\\', 2);
    at = share == Text::npos ? absolute.size() : absolute.find(u'\\', share + 1);
    at = at == Text::npos ? absolute.size() : at + 1;
  }
  split.root = absolute.substr(0, at);
  while (at < absolute.size()) {
    const std::size_t end = std::min(absolute.find(u'\\', at), absolute.size());
    if (end == at) {
      break;
    }
    split.names.push_back(absolute.substr(at, end - at));
    split.separator_at_end = end < absolute.size();
    at = end + 1;
  }
  return split;
}

class Model {
 public:
  Model(const SimulatedWindows& windows, const Obstacles& obstacles, const Shell& shell)
      : windows_(windows), obstacles_(obstacles), shell_(shell) {}

  Expectation Of(const Export& deletion, const Text& path, const Snapshot& snapshot) const {
    Expectation expectation;
    const bool extended = Begins(path, u"\\\\?\\");
    const std::optional<Text> full = FullPath(path);
    if (path.empty() || !full) {
      return expectation;
    }
    const Text absolute = !Begins(*full, u"\\\\?\\")       ? *full
                          : Begins(*full, u"\\\\?\\UNC\\") ? u"\\\\" + full->substr(8)
                                                           : full->substr(4);
    const Split split = SplitOf(absolute);
    // The folders: real ones, all of them. A separator at the end makes the item one of them.
    Text folder = split.root;
    const std::size_t above = split.names.size() - (split.separator_at_end ? 0 : 1);
    if (split.names.empty() || !IsRealFolder(folder)) {
      return expectation;
    }
    for (std::size_t i = 0; i < above; ++i) {
      folder += (i == 0 ? u"" : u"\\") + split.names[i];
      if (!IsRealFolder(folder)) {
        return expectation;
      }
    }
    // The item, by the system's limit for paths without prefix.
    const bool is_long = path.size() >= 248 || extended;
    if (!is_long && full->size() >= 260) {
      return expectation;
    }
    expectation.item = split.root;
    for (std::size_t i = 0; i < split.names.size(); ++i) {
      expectation.item += (i == 0 ? u"" : u"\\") + split.names[i];
    }
    const auto facts = windows_.Find(expectation.item);
    if (!facts || (facts->attributes & platform::kAttributeReparsePoint) != 0) {
      return expectation;
    }
    if (deletion.guarded) {
      const bool same = !facts->is_folder && snapshot.size >= 0 &&
                        facts->size == static_cast<std::uint64_t>(snapshot.size) &&
                        TicksFor(facts->last_write) == snapshot.last_write;
      if (!same) {
        return expectation;
      }
    }
    if (!deletion.removes) {
      expectation.answer = 1;
      return expectation;
    }
    const bool locked = obstacles_.in_use.count(Lowered(expectation.item)) != 0;
    const bool denied = obstacles_.denied.count(Lowered(expectation.item)) != 0;
    const bool read_only = (facts->attributes & platform::kAttributeReadOnly) != 0;
    if (facts->is_folder) {
      expectation.gone = windows_.NamesIn(expectation.item).empty() && !denied && !read_only;
      expectation.answer = expectation.gone ? 1 : 0;
      return expectation;
    }
    if (!deletion.recycles) {
      expectation.gone = !locked && !denied && !read_only;
      expectation.answer = expectation.gone ? 1 : 0;
      return expectation;
    }
    const bool removable = !locked && !denied;
    const bool parsed = extended || is_long || IsPlainForShell(path);
    const bool by_object = parsed && removable && !shell_.ineffective && !shell_.aborts;
    if (by_object) {
      expectation.gone = true;
    } else if (!is_long && shell_.code == 0 && !shell_.delete_aborted) {
      expectation.gone = shell_.removes && removable;
      expectation.answer = expectation.gone || !shell_.removes ? 1 : 0;
      return expectation;
    }
    expectation.answer = expectation.gone ? 1 : 0;
    return expectation;
  }

 private:
  bool IsRealFolder(const Text& path) const {
    const auto facts = windows_.Find(path);
    return facts && facts->is_folder && (facts->attributes & platform::kAttributeReparsePoint) == 0;
  }
  // The shell's parser knows absolute paths with "\" only.
  static bool IsPlainForShell(const Text& path) {
    return path.size() >= 3 && (path[1] == u':' || path[1] == u'\\') &&
           path.find(u'/') == Text::npos;
  }

  const SimulatedWindows& windows_;
  const Obstacles& obstacles_;
  const Shell& shell_;
};

class Tree {
 public:
  Tree(SimulatedWindows& windows, Obstacles& obstacles, unsigned seed)
      : windows_(windows), random_(seed), obstacles_(obstacles) {
    windows_.AddShare(u"\\\\srv\\share");
    windows_.AddFolder(u"C:\\outside");
    windows_.AddFile(u"C:\\outside\\a", "hello");
    Grow(u"C:\\w", 0);
    Grow(u"\\\\srv\\share\\w", 0);
    windows_.SetCurrentFolder(Folder());
  }

  std::size_t Below(std::size_t limit) { return random_() % limit; }

  // One of all that was made, also when it has gone meanwhile.
  Text AnyItem() { return items_[Below(items_.size())]; }

  // A spelling of the path: prefix, case, separators, detours.
  Text Spelled(const Text& path) {
    Text text = path;
    switch (Below(8)) {
      case 0:
      case 1: {
        const Text prefix = Below(2) == 0 ? u"\\\\?\\UNC" : u"\\\\?\\unc";
        return text[1] == u':' ? u"\\\\?\\" + text : prefix + text.substr(1);
      }
      case 2:
        for (Char& c : text) {
          c = c == u'\\' ? u'/' : c;
        }
        break;
      case 3:
        for (Char& c : text) {
          const bool letter = (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
          c = letter && Below(2) == 0 ? static_cast<Char>(c ^ 32) : c;
        }
        break;
      case 4: {
        const std::size_t last = text.rfind(u'\\');
        text = text.substr(0, last) + u"\\no\\..\\." + text.substr(last);
        break;
      }
      case 5:
        text += Below(2) == 0 ? u"\\" : u". .";
        break;
      case 6:
        if (text[1] == u':') {
          text = text.substr(2);
        }
        break;
      default:
        break;
    }
    return text;
  }

  // A path that may name nothing, or something else.
  Text Broken(Text path) {
    switch (Below(4)) {
      case 0:
        return path + u"\\a";
      case 1:
        return path + u"x";
      case 2:
        return path.substr(0, path.size() - 1 - Below(path.size() / 2));
      default:
        return path.substr(0, path.rfind(u'\\')) + u"\\missing\\a";
    }
  }

 private:
  Text Folder() { return folders_[Below(folders_.size())]; }

  void Grow(const Text& folder, int depth) {
    static const Char* const kNames[] = {u"a", u"B.txt", u"c d", u"\u00E9", u"e", u"[f]"};
    windows_.AddFolder(folder);
    folders_.push_back(folder);
    for (const Char* base : kNames) {
      Text path = folder + u"\\" + base;
      // Some names reach the limits of the path.
      if (Below(6) == 0) {
        path += Text(80 + Below(120), u'n');
      }
      switch (Below(12)) {
        case 0:
        case 1:
          if (depth < 3) {
            Grow(path, depth + 1);
          } else {
            windows_.AddFolder(path);
          }
          break;
        case 2:
          windows_.AddFolder(path);
          break;
        case 3:
          windows_.AddLink(LinkKind::kJunction, path, Below(2) == 0 ? u"C:\\outside" : Folder());
          items_.push_back(path + u"\\a");
          break;
        case 4:
          windows_.AddLink(LinkKind::kFileLink, path, u"C:\\outside\\a");
          break;
        case 5:
          windows_.AddPlaceholder(path, 5);
          break;
        case 6:
          windows_.AddFile(path, "hello", {.attributes = platform::kAttributeReadOnly});
          break;
        case 7:
          windows_.AddFile(path, "hello");
          windows_.Lock(path, 0);
          obstacles_.in_use.insert(Lowered(path));
          break;
        case 8:
          windows_.AddFile(path, "hello");
          windows_.Deny(path, {.deleting = true});
          obstacles_.denied.insert(Lowered(path));
          break;
        default:
          windows_.AddSizedFile(path, Below(2) == 0 ? 5 : 5'000'000'000, 0,
                                {.last_write = kUsualTime + Below(2)});
          break;
      }
      items_.push_back(path);
    }
  }

  SimulatedWindows& windows_;
  std::mt19937 random_;
  std::vector<Text> folders_;
  std::vector<Text> items_;
  Obstacles& obstacles_;
};

struct Tally {
  int done[std::size(kExports)] = {};
  int refused[std::size(kExports)] = {};
  int believed = 0;  // answered 1 for a file that is still there
};

void RunRound(unsigned seed, Tally& tally) {
  SCOPED_TRACE("round " + std::to_string(seed));
  SimulatedWindows windows;
  Obstacles obstacles;
  Tree tree(windows, obstacles, seed);
  Shell shell;
  if (tree.Below(2) == 0) {
    shell = {tree.Below(3) == 0, tree.Below(3) == 0, tree.Below(4) == 0 ? 0x75 : 0,
             tree.Below(4) == 0, tree.Below(3) != 0};
  }
  windows.SetRecyclingIneffective(shell.ineffective);
  windows.SetOperationsAborted(shell.aborts);
  windows.SetShellDeleteResult(shell.code, shell.delete_aborted, shell.removes);
  const Model model(windows, obstacles, shell);
  for (int i = 0; i < kPathsInRound; ++i) {
    const std::size_t which = tree.Below(std::size(kExports));
    const Export& deletion = kExports[which];
    const Text item = tree.AnyItem();
    const Text path = tree.Below(8) == 0 ? tree.Broken(item) : tree.Spelled(item);
    Snapshot snapshot{5, TicksFor(kUsualTime)};
    if (const auto facts = windows.Find(item); facts && tree.Below(4) != 0) {
      snapshot = {static_cast<std::int64_t>(facts->size), TicksFor(facts->last_write)};
    }
    const Expectation expected = model.Of(deletion, path, snapshot);
    const Lines before = DiskOf(windows);
    const std::size_t nodes = windows.node_count();
    const std::size_t in_bin = windows.recycled().size();
    const std::int32_t answer = deletion.run(path.c_str(), snapshot);
    ASSERT_EQ(answer, expected.answer) << deletion.name << " " << Utf8(path);
    ASSERT_EQ(NewSince(before, windows), Lines{});
    ASSERT_EQ(GoneSince(before, windows).size(), expected.gone ? 1u : 0u) << Utf8(path);
    ASSERT_EQ(windows.node_count(), nodes - (expected.gone ? 1 : 0));
    ASSERT_EQ(windows.open_handles(), 0u);
    if (expected.gone) {
      ASSERT_FALSE(windows.Exists(expected.item)) << Utf8(path);
    }
    ASSERT_LE(windows.recycled().size(), in_bin + (expected.gone && deletion.recycles ? 1 : 0));
    ++(answer == 1 ? tally.done : tally.refused)[which];
    tally.believed += answer == 1 && deletion.removes && !expected.gone ? 1 : 0;
  }
}

TEST(DeletionModel, Random_paths_in_random_trees) {
  Tally tally;
  for (unsigned seed = 1; seed <= kRounds && !::testing::Test::HasFatalFailure(); ++seed) {
    RunRound(seed, tally);
  }
  constexpr int kFewest = kRounds * 3 / 20;
  for (std::size_t i = 0; i < std::size(kExports); ++i) {
    EXPECT_GT(tally.done[i], kFewest) << kExports[i].name;
    EXPECT_GT(tally.refused[i], kFewest) << kExports[i].name;
  }
  EXPECT_GT(tally.believed, 0);
}

}  // namespace
}  // namespace quastel::deletion_tests
