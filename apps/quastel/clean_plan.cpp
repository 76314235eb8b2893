#include "clean_plan.h"

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>
#include <set>
#include <string_view>
#include <utility>

#include "name_order.h"
#include "path_text.h"

namespace quastel::client {
namespace {

struct NameLess {
  bool operator()(const std::wstring& a, const std::wstring& b) const {
    return CompareNames(a, b) < 0;
  }
};

std::wstring Comparable(const std::wstring& path) {
  std::wstring text = TidyPath(WithoutExtendedPrefix(path));
  while (text.size() > 3 && IsSeparator(text.back())) {
    text.pop_back();
  }
  return text;
}

// Negative when `a` is the copy to keep rather than `b`.
int Compare(KeepRule rule, const CleanFile& a, const CleanFile& b) {
  switch (rule) {
    case KeepRule::kNewest:
      return Descending(a.modified, b.modified);
    case KeepRule::kOldest:
      return Descending(b.modified, a.modified);
    case KeepRule::kShortestPath:
      return Descending(WithoutExtendedPrefix(b.path).size(), WithoutExtendedPrefix(a.path).size());
    case KeepRule::kFirst:
    case KeepRule::kNone:
      break;
  }
  return 0;
}

using Members = std::vector<std::size_t>;  // of one group, in the order of the report

void ChooseSurvivors(CleanPlan& plan, const Members& members, KeepRule rule,
                     const std::wstring& keep_under) {
  Members survivors;
  for (const std::size_t i : members) {
    if (!keep_under.empty() && IsBelow(plan.files[i].file.path, keep_under)) {
      survivors.push_back(i);
    }
  }
  if (survivors.empty() && rule == KeepRule::kNone) {
    survivors = members;
  }
  if (survivors.empty()) {
    // The first of equals: the order of the report decides, as it does for kFirst.
    survivors.push_back(
        *std::min_element(members.begin(), members.end(), [&](std::size_t a, std::size_t b) {
          return Compare(rule, plan.files[a].file, plan.files[b].file) < 0;
        }));
  }
  for (const std::size_t i : members) {
    plan.files[i].survivor = survivors.front();
  }
  for (const std::size_t i : survivors) {
    plan.files[i].fate = Fate::kKeep;
  }
}

}  // namespace

std::uint64_t CleanPlan::CountOf(Fate fate) const {
  return static_cast<std::uint64_t>(
      std::count_if(files.begin(), files.end(),
                    [fate](const PlannedFile& planned) { return planned.fate == fate; }));
}

std::uint64_t CleanPlan::BytesToRemove() const {
  return std::accumulate(files.begin(), files.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const PlannedFile& planned) {
                           return planned.fate != Fate::kRemove
                                      ? sum
                                      : sum + static_cast<std::uint64_t>(planned.file.size);
                         });
}

CleanPlan PlanFiles(std::vector<CleanFile> files, bool all) {
  CleanPlan plan;
  std::set<std::wstring, NameLess> seen;
  for (CleanFile& file : files) {
    PlannedFile planned;
    if (!file.selected && !all) {
      planned.fate = Fate::kUnselected;
    } else if (!seen.insert(Comparable(file.path)).second) {
      planned.fate = Fate::kRepeated;
    }
    planned.file = std::move(file);
    plan.files.push_back(std::move(planned));
  }
  return plan;
}

CleanPlan PlanDuplicates(std::vector<CleanFile> files, KeepRule rule,
                         const std::wstring& keep_under) {
  CleanPlan plan;
  plan.duplicates = true;
  std::map<std::uint64_t, Members> groups;
  for (CleanFile& file : files) {
    groups[file.group_id].push_back(plan.files.size());
    plan.files.push_back({std::move(file), Fate::kRemove, 0});
  }
  for (const auto& [id, members] : groups) {
    ChooseSurvivors(plan, members, rule, keep_under);
  }
  return plan;
}

bool IsSamePath(const std::wstring& a, const std::wstring& b) {
  return CompareNames(Comparable(a), Comparable(b)) == 0;
}

bool IsBelow(const std::wstring& path, const std::wstring& folder) {
  const std::wstring text = Comparable(path);
  const std::wstring above = Comparable(folder);
  if (above.empty() || text.size() <= above.size()) {
    return false;
  }
  const bool on_a_name = IsSeparator(above.back()) || IsSeparator(text[above.size()]);
  return on_a_name && CompareNames(std::wstring_view(text).substr(0, above.size()), above) == 0;
}

}  // namespace quastel::client
