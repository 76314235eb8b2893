// Random rules over random trees, against a second walker that is written for
// clarity alone.

#include <optional>
#include <random>

#include "junk/junk_fixture.h"
#include "support/instrumented.h"

namespace quastel::junk_tests {
namespace {

using junk::RuleNode;

class Random {
 public:
  explicit Random(std::uint32_t seed) : engine_(seed) {}
  std::uint32_t Below(std::uint32_t end) {
    return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(engine_);
  }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  template <std::size_t kSize>
  TextView OneOf(const TextView (&choices)[kSize]) {
    return choices[Below(kSize)];
  }

 private:
  std::mt19937 engine_;
};

// ---- The tree: a few names in a few levels, so that rules meet something.

void Furnish(SimulatedWindows& machine, Random& random, const Text& folder, int depth) {
  for (const TextView name : {u"a", u"B", u"Cache", u"d.log"}) {
    const Text path = folder + u"\\" + Text(name);
    switch (random.Below(depth == 0 ? 4 : 8)) {
      case 0:
      case 1:
      case 2:
      case 3:
        if (depth < 4) {
          machine.AddFolder(path);
          Furnish(machine, random, path, depth + 1);
        }
        break;
      case 4:
        machine.AddLink(random.OneIn(2) ? LinkKind::kJunction : LinkKind::kFolderLink, path,
                        u"C:\\t");
        break;
      default:
        machine.AddSizedFile(path, random.Below(5));
        break;
    }
  }
  if (random.OneIn(2)) {
    machine.AddFile(folder + u"\\file", "x");
  }
}

// ---- The rules.

TextView SomePath(Random& random) {
  return random.OneOf({u"C:\\t", u"{Root}t\\a", u"{UserHome}", u"{UserHome}\\Cache", u"C:\\t\\B\\a",
                       u"C:\\t\\d.log", u"C:\\missing", u"{Root}T\\b\\CACHE",
                       u"C:\\t\\Cache\\Cache"});
}

void Add(RuleNode& node, TextView name, TextView value) {
  node.attributes.push_back({Text(name), Text(value)});
}

void AddName(Random& random, RuleNode& node) {
  if (random.OneIn(2)) {
    Add(node, random.OneIn(6) ? u"displayname" : u"DisplayName",
        random.OneOf({u"n", u"", u"Name"}));
  }
}

RuleNode SomeRule(Random& random, int depth) {
  RuleNode node;
  const bool broken = random.OneIn(60);
  switch (random.Below(depth < 3 ? 6 : 4)) {
    case 0:
      node.name = u"Folder";
      AddName(random, node);
      Add(node, broken ? u"path" : u"Path", SomePath(random));
      if (random.OneIn(2)) {
        Add(node, u"Pattern", random.OneOf({u"*", u"", u"*.log", u"a", u"b"}));
      }
      break;
    case 1:
      node.name = u"FolderList";
      Add(node, broken ? u"Path" : u"StartPath", SomePath(random));
      Add(node, u"EndPath", random.OneOf({u"a", u"Cache", u"b", u"a\\Cache", u"", u"d.log"}));
      AddName(random, node);
      if (random.OneIn(2)) {
        Add(node, u"ContainsPath", random.OneOf({u"", u"B", u"b", u"C:\\", u"t\\a"}));
      }
      break;
    case 2:
      node.name = u"ChildrenList";
      Add(node, broken ? u"startPath" : u"StartPath", broken ? u"" : SomePath(random));
      break;
    case 3:
      node.name = random.OneOf({u"Other", u"folder", u"Root"});
      Add(node, u"Path", u"C:\\t");
      node.children.push_back(RuleNode{u"Folder", {}, {}});
      break;
    default:
      node.name = u"Category";
      Add(node, u"DisplayName", broken ? u"" : random.OneOf({u"x", u"y", u"z"}));
      for (std::uint32_t n = random.Below(4); n > 0; --n) {
        node.children.push_back(SomeRule(random, depth + 1));
      }
      break;
  }
  return node;
}

RuleNode SomeDocument(Random& random) {
  RuleNode root{u"Root", {}, {}};
  for (std::uint32_t n = random.Below(4) + 1; n > 0; --n) {
    if (random.OneIn(5)) {
      root.children.push_back(SomeRule(random, 3));
      continue;
    }
    RuleNode category{u"Category", {}, {}};
    Add(category, u"DisplayName",
        random.OneIn(3) ? support::Wide(kDownloads) : Text(random.OneOf({u"A", u"B"})));
    for (std::uint32_t rules = random.Below(5); rules > 0; --rules) {
      category.children.push_back(SomeRule(random, 1));
    }
    root.children.push_back(category);
  }
  return root;
}

void Write(const RuleNode& node, std::string& out) {
  out += "<" + Utf8(node.name);
  for (const junk::RuleAttribute& attribute : node.attributes) {
    out += " " + Utf8(attribute.name) + "=\"" + Utf8(attribute.value) + "\"";
  }
  out += ">";
  for (const RuleNode& child : node.children) {
    Write(child, out);
  }
  out += "</" + Utf8(node.name) + ">";
}

// ---- The second walker.

class Model {
 public:
  explicit Model(const SimulatedWindows& machine) : machine_(machine) {}

  qs_status Scan(const RuleNode& root) {
    for (const RuleNode& child : root.children) {
      if (child.name != u"Category") {
        continue;
      }
      const std::optional<Text> name = Attribute(child, u"DisplayName");
      if (!name || name->empty()) {
        return QS_FAILED;
      }
      selected_ = *name != support::Wide(kDownloads);
      const std::string id = std::to_string(next_category_++);
      lines.push_back("[" + id + "<0] " + Utf8(*name));
      for (const RuleNode& rule : child.children) {
        if (const qs_status status = Walk(rule, {id, "0", *name}); status != QS_OK) {
          return status;
        }
      }
    }
    return QS_OK;
  }

  Lines lines;

 private:
  struct Place {
    std::string group;
    std::string parent;
    Text title;
  };

  static std::optional<Text> Attribute(const RuleNode& node, TextView name) {
    for (const junk::RuleAttribute& attribute : node.attributes) {
      if (attribute.name == name) {
        return attribute.value;
      }
    }
    return std::nullopt;
  }

  static Text Expanded(Text text) {
    for (const auto& [place, value] : {std::pair<Text, Text>(u"{UserHome}", kHome),
                                       std::pair<Text, Text>(u"{Root}", kSystemRoot)}) {
      if (const std::size_t at = text.find(place); at != Text::npos) {
        text.replace(at, place.size(), value);
      }
    }
    return text;
  }

  std::string NextId() { return "g" + std::to_string(next_group_++); }

  qs_status Walk(const RuleNode& node, const Place& around) {
    const std::optional<Text> name = Attribute(node, u"DisplayName");
    if (node.name == u"Category") {
      if (!name || name->empty()) {
        return QS_FAILED;
      }
      const std::string id = NextId();
      lines.push_back("[" + id + "<" + around.group + "] " + Utf8(*name));
      for (const RuleNode& child : node.children) {
        if (const qs_status status = Walk(child, {id, id, *name}); status != QS_OK) {
          return status;
        }
      }
      return QS_OK;
    }
    if (node.name == u"Folder") {
      const std::optional<Text> path = Attribute(node, u"Path");
      if (!path || path->empty()) {
        return QS_INVALID_ARGUMENT;
      }
      const Text folder = Expanded(*path);
      WalkGroup(folder, name.value_or(Leaf(folder)), around,
                Attribute(node, u"Pattern").value_or(Text()));
      return QS_OK;
    }
    if (node.name != u"FolderList" && node.name != u"ChildrenList") {
      return QS_OK;
    }
    const std::optional<Text> start = Attribute(node, u"StartPath");
    if (!start || start->empty()) {
      return QS_INVALID_ARGUMENT;
    }
    const Text folder = Expanded(*start);
    if (node.name == u"FolderList") {
      const std::optional<Text> end = Attribute(node, u"EndPath");
      if (!end) {
        return QS_INVALID_ARGUMENT;
      }
      const Text contains = Attribute(node, u"ContainsPath").value_or(Text());
      for (const Text& sub : RealFolders(folder)) {
        const Text listed = folder + u"\\" + sub;
        const Text joined = listed + u"\\" + *end;
        if (listed.find(contains) != Text::npos && IsRealBelow(listed, *end)) {
          WalkGroup(joined, name.value_or(*end), around, Text());
        }
      }
      return QS_OK;
    }
    for (const Text& sub : RealFolders(folder)) {
      WalkGroup(folder + u"\\" + sub, sub, around, Text());
    }
    for (const Text& file : RealFiles(folder)) {
      AddFile(folder + u"\\" + file, around.title, around.group, around.parent);
    }
    return QS_OK;
  }

  static Text Leaf(const Text& path) { return path.substr(path.find_last_of(u"\\/") + 1); }

  // With single separators and none at the end, as the machine wants its paths.
  static Text Plain(const Text& path) {
    Text plain;
    for (const Char c : path) {
      if (c != u'\\' || plain.empty() || plain.back() != u'\\') {
        plain += c;
      }
    }
    if (plain.back() == u'\\') {
      plain.pop_back();
    }
    return plain;
  }

  std::optional<simulated::NodeFacts> Find(const Text& path) const {
    return machine_.Find(Plain(path));
  }

  bool IsReal(const std::optional<simulated::NodeFacts>& facts, bool folder) const {
    return facts && !platform::IsReparsePoint(facts->attributes) && facts->is_folder == folder;
  }
  bool IsRealFolder(const Text& path) const { return IsReal(Find(path), true); }

  // A path of several names has no link in its middle either.
  bool IsRealBelow(const Text& folder, const Text& end) const {
    const std::size_t separator = end.find(u'\\');
    return (separator == Text::npos || IsRealFolder(folder + u"\\" + end.substr(0, separator))) &&
           IsRealFolder(folder + u"\\" + end);
  }

  std::vector<Text> Real(const Text& folder, bool folders) const {
    std::vector<Text> names;
    if (IsRealFolder(folder)) {
      for (const Text& name : machine_.NamesIn(Plain(folder))) {
        if (IsReal(Find(folder + u"\\" + name), folders)) {
          names.push_back(name);
        }
      }
    }
    return names;
  }
  std::vector<Text> RealFolders(const Text& folder) const { return Real(folder, true); }
  std::vector<Text> RealFiles(const Text& folder) const { return Real(folder, false); }

  static bool Matches(const Text& name, const Text& pattern) {
    if (pattern.empty() || pattern == u"*") {
      return true;
    }
    if (pattern == u"*.log") {
      return name.size() >= 4 && name.substr(name.size() - 4) == u".log";
    }
    return name == pattern || (name == u"B" && pattern == u"b");
  }

  // The files of a folder, then its subfolders from the last to the first, as
  // nested walks.
  void FilesBelow(const Text& folder, const Text& pattern, std::vector<Text>& paths) const {
    for (const Text& file : RealFiles(folder)) {
      if (Matches(file, pattern)) {
        paths.push_back(folder + u"\\" + file);
      }
    }
    const std::vector<Text> subs = RealFolders(folder);
    for (auto sub = subs.rbegin(); sub != subs.rend(); ++sub) {
      FilesBelow(folder + u"\\" + *sub, pattern, paths);
    }
  }

  void WalkGroup(const Text& folder, const Text& title, const Place& around, const Text& pattern) {
    const std::string id = NextId();
    std::vector<Text> paths;
    FilesBelow(folder, pattern, paths);
    if (!paths.empty()) {
      lines.push_back("[" + id + "<" + around.group + "] " + Utf8(title) + " = " + Utf8(folder));
    }
    for (const Text& path : paths) {
      AddFile(path, title, id, around.group);
    }
  }

  void AddFile(const Text& path, const Text& title, const std::string& id,
               const std::string& parent) {
    lines.push_back(id + "<" + parent + " " + Utf8(title) + ": " + Utf8(path) +
                    (selected_ ? "" : " (not selected)"));
  }

  const SimulatedWindows& machine_;
  std::uint64_t next_category_ = 1;
  std::uint64_t next_group_ = 0;
  bool selected_ = true;
};

TEST(JunkScanModel, Random_rules_over_random_trees_give_the_rows_of_a_plain_walker) {
  std::size_t rows = 0;
  std::size_t statuses[8] = {};
  constexpr std::uint32_t kSeeds = support::Rounds(60, 20);
  for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
    Random random(seed);
    SimulatedWindows machine;
    Furnish(machine, random, u"C:\\t", 0);
    Furnish(machine, random, Text(kHome), 2);
    ScanHandle scan;
    for (int round = 0; round < 10; ++round) {
      const RuleNode root = SomeDocument(random);
      std::string document;
      Write(root, document);
      machine.AddFile(kRulesPath, document);
      Model model(machine);
      const qs_status expected = model.Scan(root);
      ASSERT_EQ(scan.Start(JunkRequest()), expected) << seed << ": " << document;
      ASSERT_EQ(Outline(scan_tests::ReadReport(scan)), model.lines) << seed << ": " << document;
      rows += model.lines.size();
      ++statuses[expected];
    }
  }
  EXPECT_GT(rows, kSeeds * 1'000 / 3);
  EXPECT_GT(statuses[QS_OK], kSeeds * 5);
  EXPECT_GT(statuses[QS_INVALID_ARGUMENT], kSeeds / 6);
  EXPECT_GT(statuses[QS_FAILED], kSeeds / 12);
}

}  // namespace
}  // namespace quastel::junk_tests
