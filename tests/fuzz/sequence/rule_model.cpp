#include "fuzz/sequence/rule_model.h"

#include <optional>

#include "fuzz/path_model.h"
#include "fuzz/sequence/world.h"

namespace quastel::fuzz::sequence {
namespace {

using junk::RuleNode;

constexpr const Char* kNotSelectedAtFirst = u"Page_JunkFiles_Report_Category_Downloads";
constexpr std::uint64_t kFirstGroup = std::uint64_t{1} << 60;

struct Place {
  std::uint64_t group;
  std::uint64_t parent;
  Text title;
};

class Walker {
 public:
  Walker(const Disk& disk, JunkOutcome& outcome) : disk_(disk), outcome_(outcome) {}

  qs_status WalkRoot(const RuleNode& root) {
    std::uint64_t next_category = 1;
    for (const RuleNode& category : root.children) {
      if (category.name != u"Category") {
        continue;
      }
      const std::optional<Text> name = Find(category, u"DisplayName");
      if (!name || name->empty()) {
        return QS_FAILED;
      }
      selected_ = *name != kNotSelectedAtFirst;
      outcome_.current_group = *name;
      const std::uint64_t id = next_category++;
      AddHeader(id, 0, *name, Text());
      if (const qs_status status = WalkAll(category, {id, 0, *name}); status != QS_OK) {
        return status;
      }
    }
    return QS_OK;
  }

 private:
  static std::optional<Text> Find(const RuleNode& node, const Char* name) {
    for (const junk::RuleAttribute& attribute : node.attributes) {
      if (attribute.name == name) {
        return attribute.value;
      }
    }
    return std::nullopt;
  }

  // A path that a rule needs, or nothing when the rule cannot be used.
  static std::optional<Text> Expanded(const RuleNode& node, const Char* name) {
    std::optional<Text> path = Find(node, name);
    if (!path || path->empty()) {
      return std::nullopt;
    }
    for (const auto& [place, value] :
         {std::pair<Text, Text>(u"{UserHome}", kUserHome), {u"{Root}", kSystemRoot}}) {
      if (const std::size_t at = path->find(place); at != Text::npos) {
        path->replace(at, place.size(), value);
      }
    }
    return path;
  }

  qs_status WalkAll(const RuleNode& category, const Place& around) {
    for (const RuleNode& rule : category.children) {
      if (const qs_status status = WalkRule(rule, around); status != QS_OK) {
        return status;
      }
    }
    return QS_OK;
  }

  qs_status WalkRule(const RuleNode& rule, const Place& around) {
    const std::optional<Text> name = Find(rule, u"DisplayName");
    if (rule.name == u"Category") {
      if (!name || name->empty()) {
        return QS_FAILED;
      }
      const std::uint64_t id = next_group_++;
      AddHeader(id, around.group, *name, Text());
      return WalkAll(rule, {id, id, *name});
    }
    if (rule.name == u"Folder") {
      const std::optional<Text> path = Expanded(rule, u"Path");
      if (!path) {
        return QS_INVALID_ARGUMENT;
      }
      WalkGroup(*path, Find(rule, u"Pattern").value_or(Text()), name.value_or(model::Leaf(*path)),
                around);
      return QS_OK;
    }
    if (rule.name == u"FolderList") {
      return WalkFolderList(rule, name, around);
    }
    return rule.name == u"ChildrenList" ? WalkChildren(rule, around) : QS_OK;
  }

  // A rule must not leave its folder through a link.
  bool IsReached(const Text& folder, const Text& joined) const {
    const Text top = KeyOf(folder);
    Text key = KeyOf(joined);
    bool reached = disk_.WalkRoot(key) != nullptr;
    while (reached && key.starts_with(top + u"\\") && ParentKeyOf(key) != top) {
      key = ParentKeyOf(key);
      reached = disk_.WalkRoot(key) != nullptr;
    }
    return reached;
  }

  qs_status WalkFolderList(const RuleNode& rule, const std::optional<Text>& name,
                           const Place& around) {
    const std::optional<Text> start = Expanded(rule, u"StartPath");
    const std::optional<Text> end = Find(rule, u"EndPath");
    if (!start || !end) {
      return QS_INVALID_ARGUMENT;
    }
    for (const Text& folder : FoldersOf(disk_, *start)) {
      const Text joined = model::Combine(folder, *end);
      if (folder.find(Find(rule, u"ContainsPath").value_or(Text())) != Text::npos &&
          IsReached(folder, joined)) {
        WalkGroup(joined, Text(), name.value_or(*end), around);
      }
    }
    return QS_OK;
  }

  qs_status WalkChildren(const RuleNode& rule, const Place& around) {
    const std::optional<Text> start = Expanded(rule, u"StartPath");
    if (!start) {
      return QS_INVALID_ARGUMENT;
    }
    for (const Text& folder : FoldersOf(disk_, *start)) {
      WalkGroup(folder, Text(), model::Leaf(folder), around);
    }
    for (const FoundFile& file : FilesOf(disk_, {.root = *start, .recursive = false})) {
      AddFile(file, around.title, around.group, around.parent);
    }
    return QS_OK;
  }

  void WalkGroup(const Text& folder, const Text& pattern, const Text& title, const Place& around) {
    const std::uint64_t id = next_group_++;
    const std::vector<FoundFile> files = FilesOf(disk_, {.root = folder, .pattern = pattern});
    if (!files.empty()) {
      AddHeader(id, around.group, title, folder);
    }
    for (const FoundFile& file : files) {
      AddFile(file, title, id, around.group);
    }
  }

  void AddHeader(std::uint64_t id, std::uint64_t parent, const Text& title, const Text& folder) {
    Row row;
    row.title = title;
    row.path = row.location = folder;
    row.group_id = id;
    row.parent_group_id = parent;
    outcome_.rows.push_back(row);
  }

  void AddFile(const FoundFile& file, const Text& title, std::uint64_t group,
               std::uint64_t parent) {
    Row row;
    row.path = file.path;
    row.name = file.name;
    row.title = row.location = title;
    row.group_id = group;
    row.parent_group_id = parent;
    row.kind = QS_ROW_JUNK;
    row.size = static_cast<std::int64_t>(file.size);
    row.modified = file.modified;
    row.preselect = selected_ ? 1 : 0;
    outcome_.rows.push_back(row);
    outcome_.visited.push_back(file);
  }

  const Disk& disk_;
  JunkOutcome& outcome_;
  std::uint64_t next_group_ = kFirstGroup;
  bool selected_ = true;
};

}  // namespace

JunkOutcome ScanByRules(const Disk& disk, const RuleNode& root) {
  JunkOutcome outcome;
  outcome.status =
      root.name == u"Root" ? Walker(disk, outcome).WalkRoot(root) : qs_status{QS_FAILED};
  NumberItems(outcome.rows);
  return outcome;
}

}  // namespace quastel::fuzz::sequence
