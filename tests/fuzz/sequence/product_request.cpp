#include "fuzz/sequence/product_request.h"

#include "fuzz/path_model.h"
#include "fuzz/sequence/duplicate_model.h"
#include "fuzz/sequence/rule_maker.h"
#include "fuzz/sequence/rule_model.h"

namespace quastel::fuzz::sequence {
namespace {

Row LargeRow(const FoundFile& file) {
  const bool is_film = model::Lowered(file.name).ends_with(u".mkv");
  Row row;
  row.path = file.path;
  row.name = file.name;
  row.title = is_film ? u"Media files" : u"Other";
  row.location = file.path.substr(0, file.path.size() - file.name.size() - 1);
  row.large_class = is_film ? QS_LARGE_MEDIA : QS_LARGE_OTHER;
  row.group_id = row.large_class + 1;
  row.kind = QS_ROW_LARGE_FILE;
  row.size = static_cast<std::int64_t>(file.size);
  row.modified = file.modified;
  return row;
}

const Char* PointerTo(const std::optional<Text>& text) {
  return text ? text->c_str() : nullptr;
}

}  // namespace

ProductRequest::ProductRequest(World& world, Input& input) {
  record_.size = sizeof(record_) + (input.OneIn(8) ? 8 : 0);
  record_.kind = static_cast<std::uint32_t>(input.Below(3));
  record_.reserved = input.Byte();
  for (std::size_t n = record_.kind == QS_SCAN_KIND_JUNK_RULES ? 0 : 1 + input.Below(3); n > 0;
       --n) {
    roots_.push_back(world.SomeFolder(input));
  }
  for (const Text& root : roots_) {
    root_pointers_.push_back(root.c_str());
  }
  record_.roots = root_pointers_.data();
  record_.root_count = root_pointers_.size();

  const bool has_folders = !input.OneIn(4);
  record_.protect_system = has_folders && input.OneIn(3) ? 1 + input.Byte() : 0;
  if (has_folders) {
    user_home_ = kUserHome;
    system_root_ = kSystemRoot;
  } else if (input.OneIn(2)) {
    user_home_ = u"u";  // no place for a cache
  }
  record_.user_home = PointerTo(user_home_);
  record_.system_root = PointerTo(system_root_);

  if (record_.kind == QS_SCAN_KIND_JUNK_RULES) {
    document_ = SomeDocument(input);
    std::string document = Written(document_);
    is_readable_ = !input.OneIn(16);
    if (!is_readable_) {
      document.pop_back();
    }
    world.WriteRules(document);
    rules_path_ = input.OneIn(16) ? u"D:\\none.xml" : kRulesPath;
    record_.rules_path = rules_path_.c_str();
  }
}

bool ProductRequest::WritesCache() const {
  return record_.kind == QS_SCAN_KIND_DUPLICATES && user_home_ == kUserHome;
}

ScanOutcome ProductRequest::Outcome(World& world, const Disk& disk) const {
  return record_.kind == QS_SCAN_KIND_JUNK_RULES ? JunkOutcomeOf(disk) : WalkOutcomeOf(world, disk);
}

ScanOutcome ProductRequest::JunkOutcomeOf(const Disk& disk) const {
  ScanOutcome outcome;
  if (!user_home_ || !system_root_) {
    outcome.status = QS_INVALID_ARGUMENT;
  } else if (rules_path_ != kRulesPath) {
    outcome.status = QS_NOT_FOUND;
  } else if (!is_readable_) {
    outcome.status = QS_FAILED;
  } else {
    JunkOutcome junk = ScanByRules(disk, document_);
    outcome.status = junk.status;
    outcome.rows = std::move(junk.rows);
    outcome.visited = std::move(junk.visited);
    outcome.current_group = std::move(junk.current_group);
  }
  return outcome;
}

ScanOutcome ProductRequest::WalkOutcomeOf(World& world, const Disk& disk) const {
  ScanOutcome outcome;
  for (const Text& root : OutermostRoots(roots_)) {
    const auto files = FilesOf(disk, {.root = root, .protect = record_.protect_system != 0});
    outcome.visited.insert(outcome.visited.end(), files.begin(), files.end());
  }
  std::vector<FoundFile> wanted;
  for (const FoundFile& file : outcome.visited) {
    if (!model::IsIgnored(file.name)) {
      wanted.push_back(file);
    }
  }
  if (record_.kind == QS_SCAN_KIND_DUPLICATES) {
    outcome.candidates = wanted.size();
    bool all_readable = true;
    bool all_different = true;
    outcome.rows = DuplicatesAmong(world.machine(), disk, wanted, all_readable, all_different);
    outcome.is_certain = all_different && (all_readable || !WritesCache());
    return outcome;
  }
  for (const FoundFile& file : wanted) {
    if (file.size > 10'485'760) {
      outcome.rows.push_back(LargeRow(file));
    }
  }
  NumberItems(outcome.rows);
  return outcome;
}

}  // namespace quastel::fuzz::sequence
