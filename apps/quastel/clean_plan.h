#ifndef QUASTEL_APPS_QUASTEL_CLEAN_PLAN_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_PLAN_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quastel::client {

// A row of a report as a clean sees it: where the file is, and what the scan saw of it.
struct CleanFile {
  std::uint64_t item_id = 0;
  std::uint64_t group_id = 0;
  std::wstring path;
  std::int64_t size = 0;
  std::uint64_t modified = 0;
  bool selected = true;  // junk: whether the rules offer it without being asked
  // Junk: the folder of the rule that found it. What becomes empty below it may go as well; nothing
  // may where it is not known.
  std::wstring rule_folder;
};

// Which copy of a set of duplicates stays.
enum class KeepRule { kNone, kFirst, kNewest, kOldest, kShortestPath };

enum class Fate {
  kRemove,
  kKeep,        // a copy that stays
  kUnselected,  // junk that the rules do not offer by themselves
  kRepeated,    // the file of an earlier row
};

struct PlannedFile {
  CleanFile file;
  Fate fate = Fate::kRemove;
  std::size_t survivor = 0;  // of a duplicate that goes: the index of the copy that stays
};

// What a clean is going to do, row by row in the order of the report.
struct CleanPlan {
  std::vector<PlannedFile> files;
  bool duplicates = false;

  std::uint64_t CountOf(Fate fate) const;
  std::uint64_t BytesToRemove() const;
};

// Every file goes; of a junk report those that are selected, or all of them with `all`.
CleanPlan PlanFiles(std::vector<CleanFile> files, bool all);

// Of every group at least one file stays: all that lie below `keep_under` if there are any,
// otherwise the one that the rule names, otherwise all. Files of a group need not be neighbours.
CleanPlan PlanDuplicates(std::vector<CleanFile> files, KeepRule rule,
                         const std::wstring& keep_under);

// Whether the two paths are the same, or the first lies below the second, as the file system
// compares names. Extended-length prefixes and trailing separators make no difference.
bool IsSamePath(const std::wstring& a, const std::wstring& b);
bool IsBelow(const std::wstring& path, const std::wstring& folder);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_PLAN_H_
