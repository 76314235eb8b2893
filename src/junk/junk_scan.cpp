#include "junk/junk_scan.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "base/ascii.h"
#include "fs/enumeration.h"
#include "fs/path_rules.h"
#include "junk/rule_document.h"
#include "junk/rule_paths.h"
#include "scan/product_scan.h"

namespace quastel::junk {
namespace {

constexpr TextView kDisplayName = QS_TEXT("DisplayName");
constexpr TextView kStartPath = QS_TEXT("StartPath");

// Its findings are shown, but never offered for removal by themselves.
constexpr TextView kDownloadsCategory = QS_TEXT("Page_JunkFiles_Report_Category_Downloads");

// Categories count from 1; the groups below them from here on, so the two never meet.
constexpr std::uint64_t kFirstNestedGroupId = std::uint64_t{1} << 60;

// Where a rule's findings belong.
struct Enclosing {
  std::uint64_t group_id;
  std::uint64_t parent_group_id;
  const Text& display_name;
};

// One folder on its way into the report; the walk's callback fills it.
struct JunkFileContext {
  ProductScan& scan;
  std::uint64_t group_id = 0;
  std::uint64_t parent_group_id = 0;
  const Text& display_name;
  const Text& folder;
  bool preselect = false;
  bool header_due = false;  // a folder that turns out to hold no file leaves no header
  ReportRow row;            // kept, with the room of its texts
};

ReportRow GroupHeader(std::uint64_t id, std::uint64_t parent_id, const Text& title) {
  ReportRow row;
  row.kind = RowKind::kGroup;
  row.title = title;
  row.group_id = id;
  row.parent_group_id = parent_id;
  return row;
}

void OnJunkFileFound(void* user, const Char* path, std::uint64_t size, std::uint64_t last_write,
                     const Char* name) {
  auto& context = *static_cast<JunkFileContext*>(user);
  const auto signed_size = static_cast<std::int64_t>(size);
  context.scan.ReportProgress(path, signed_size);
  if (std::exchange(context.header_due, false)) {
    ReportRow header = GroupHeader(context.group_id, context.parent_group_id, context.display_name);
    header.path = context.folder;
    header.location = context.folder;
    context.scan.AppendRow(header);
  }
  ReportRow& row = context.row;
  row.path = path;
  row.name = name;
  row.title = context.display_name;
  row.location = context.display_name;
  row.group_id = context.group_id;
  row.parent_group_id = context.parent_group_id;
  row.kind = RowKind::kJunk;
  row.size = signed_size;
  row.modified = last_write;
  row.deletable = true;
  row.preselect = context.preselect;
  context.scan.AppendRow(row);
}

// Whether `joined`, which begins with `folder`, is a real folder, and every one between the two as
// well: a rule must not leave its folder through a link in the middle of an EndPath either.
bool IsReachedWithoutLink(const Text& folder, const Text& joined) {
  if (IsPathUnder(joined, folder)) {
    for (std::size_t i = folder.size() + 1; i < joined.size(); ++i) {
      if (IsSeparator(joined[i]) && !IsRealDirectory(joined.substr(0, i))) {
        return false;
      }
    }
  }
  return IsRealDirectory(joined);
}

// The walk through the rules below one top-level category.
class RuleWalker {
 public:
  RuleWalker(ProductScan& scan, const OwnedRequest& request, std::uint64_t& next_group_id)
      : scan_(scan), request_(request), next_group_id_(next_group_id) {}

  void set_preselect(bool preselect) { preselect_ = preselect; }

  qs_status WalkChildren(const RuleNode& category, const Enclosing& enclosing) {
    for (const RuleNode& rule : category.children) {
      const qs_status status = WalkRule(rule, enclosing);
      if (status != QS_OK) {
        return status;
      }
    }
    return QS_OK;
  }

 private:
  qs_status WalkRule(const RuleNode& rule, const Enclosing& enclosing) {
    if (rule.name == QS_TEXT("Category")) {
      return WalkCategory(rule, enclosing);
    }
    if (rule.name == QS_TEXT("Folder")) {
      return WalkFolder(rule, enclosing);
    }
    if (rule.name == QS_TEXT("FolderList")) {
      return WalkFolderList(rule, enclosing);
    }
    if (rule.name == QS_TEXT("ChildrenList")) {
      return WalkChildrenList(rule, enclosing);
    }
    return QS_OK;  // other elements are for other readers
  }

  qs_status WalkCategory(const RuleNode& rule, const Enclosing& enclosing) {
    const Text* const name = rule.Find(kDisplayName);
    if (name == nullptr || name->empty()) {
      return QS_FAILED;
    }
    const std::uint64_t id = next_group_id_++;
    scan_.AppendRow(GroupHeader(id, enclosing.group_id, *name));
    return WalkChildren(rule, {id, id, *name});
  }

  qs_status WalkFolder(const RuleNode& rule, const Enclosing& enclosing) {
    Text folder;
    const qs_status status = Expand(rule, QS_TEXT("Path"), folder);
    if (status != QS_OK) {
      return status;
    }
    const Text* const given_name = rule.Find(kDisplayName);
    const Text name = given_name != nullptr ? *given_name : Text(LeafOf(folder));
    const Text* const pattern = rule.Find(QS_TEXT("Pattern"));
    // NOLINTNEXTLINE(readability-redundant-string-cstr): only what stands before a NUL
    const Text files = pattern != nullptr ? Text(pattern->c_str()) : Text();
    return ReportGroup(folder, files, name, enclosing);
  }

  qs_status WalkFolderList(const RuleNode& rule, const Enclosing& enclosing) {
    const Text* const end_path = rule.Find(QS_TEXT("EndPath"));
    std::vector<Text> folders;
    Text start;
    const qs_status status =
        end_path == nullptr ? QS_INVALID_ARGUMENT : ListStartPath(rule, start, folders);
    if (status != QS_OK) {
      return status;
    }
    const Text* const given_name = rule.Find(kDisplayName);
    const Text* const wanted = rule.Find(QS_TEXT("ContainsPath"));
    for (const Text& folder : folders) {
      // NOLINTNEXTLINE(readability-redundant-string-cstr): only what stands before a NUL
      if (wanted != nullptr && folder.find(wanted->c_str()) == Text::npos) {
        continue;
      }
      const Text joined = CombinePaths(folder, end_path->c_str());
      if (!IsReachedWithoutLink(folder, joined)) {
        continue;
      }
      const qs_status walked =
          ReportGroup(joined, {}, given_name != nullptr ? *given_name : *end_path, enclosing);
      if (walked != QS_OK) {
        return walked;
      }
    }
    return QS_OK;
  }

  qs_status WalkChildrenList(const RuleNode& rule, const Enclosing& enclosing) {
    std::vector<Text> folders;
    Text start;
    const qs_status status = ListStartPath(rule, start, folders);
    if (status != QS_OK) {
      return status;
    }
    for (const Text& folder : folders) {
      const qs_status walked = ReportGroup(folder, {}, Text(LeafOf(folder)), enclosing);
      if (walked != QS_OK) {
        return walked;
      }
    }
    // The loose files have no folder of their own to be named after: they join the category.
    JunkFileContext context = {scan_,
                               enclosing.group_id,
                               enclosing.parent_group_id,
                               enclosing.display_name,
                               start,
                               preselect_,
                               false,
                               {}};
    return EnumerateFiles(start, Options({}, false), OnJunkFileFound, &context);
  }

  // Walks one folder as a group of its own. The group's number is taken even when it stays empty.
  qs_status ReportGroup(const Text& folder, const Text& pattern, const Text& name,
                        const Enclosing& enclosing) {
    JunkFileContext context = {
        scan_, next_group_id_++, enclosing.group_id, name, folder, preselect_, true, {}};
    return EnumerateFiles(folder, Options(pattern, true), OnJunkFileFound, &context);
  }

  FileWalkOptions Options(const Text& pattern, bool recursive) {
    return {.pattern = pattern,
            .recursive = recursive,
            .protection = nullptr,
            .cancel = scan_.cancel_flag()};
  }

  // The expanded value of a path attribute; a rule without one, or whose path comes out empty, ends
  // the scan.
  qs_status Expand(const RuleNode& rule, TextView attribute, Text& expanded) {
    const Text* const rule_path = rule.Find(attribute);
    if (rule_path == nullptr) {
      return QS_INVALID_ARGUMENT;
    }
    // A NUL in a value ends it here, as it does wherever paths are handed on.
    expanded = ExpandJunkPath(rule_path->c_str(), request_.user_home, request_.system_root);
    return expanded.empty() ? QS_INVALID_ARGUMENT : QS_OK;
  }

  qs_status ListStartPath(const RuleNode& rule, Text& start, std::vector<Text>& folders) {
    const qs_status status = Expand(rule, kStartPath, start);
    if (status != QS_OK) {
      return status;
    }
    const auto collect = [](void* user, const Char* path) {
      Text folder(path);
      if (LeadsIntoFolder(folder, LeafOf(folder))) {
        static_cast<std::vector<Text>*>(user)->push_back(std::move(folder));
      }
    };
    return EnumerateDirectories(start, collect, &folders, scan_.cancel_flag());
  }

  ProductScan& scan_;
  const OwnedRequest& request_;
  std::uint64_t& next_group_id_;
  bool preselect_ = true;
};

qs_status WalkCategories(ProductScan& scan, const OwnedRequest& request, const RuleNode& root) {
  const PerfTimer timer(scan, &qs_product_scan_performance::walk_us);
  std::uint64_t next_group_id = kFirstNestedGroupId;
  std::uint64_t next_category_id = 1;
  RuleWalker walker(scan, request, next_group_id);
  for (const RuleNode& category : root.children) {
    if (category.name != QS_TEXT("Category")) {
      continue;
    }
    const Text* const name = category.Find(kDisplayName);
    if (name == nullptr || name->empty()) {
      return QS_FAILED;
    }
    walker.set_preselect(*name != kDownloadsCategory);
    scan.SetCurrentGroup(*name);
    const std::uint64_t id = next_category_id++;
    scan.AppendRow(GroupHeader(id, 0, *name));
    const qs_status status = walker.WalkChildren(category, {id, 0, *name});
    if (status != QS_OK) {
      return status;
    }
  }
  return QS_OK;
}

}  // namespace

qs_status RunJunkScan(ProductScan& scan, const OwnedRequest& request) {
  if (request.user_home.empty() || request.system_root.empty() || request.rules_path.empty()) {
    return QS_INVALID_ARGUMENT;
  }
  RuleNode root;
  {
    const PerfTimer timer(scan, &qs_product_scan_performance::load_rules_us);
    const qs_status status = LoadRuleDocument(request.rules_path, root);
    if (status != QS_OK) {
      return status;
    }
  }
  return root.name == QS_TEXT("Root") ? WalkCategories(scan, request, root) : QS_FAILED;
}

}  // namespace quastel::junk
