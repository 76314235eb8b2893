#include "clean_options.h"

#include <array>
#include <utility>
#include <vector>

#include "command_options.h"
#include "full_path.h"
#include "path_text.h"
#include "text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr std::array<std::pair<const char*, KeepRule>, 4> kKeepRules = {{
    {"first", KeepRule::kFirst},
    {"newest", KeepRule::kNewest},
    {"oldest", KeepRule::kOldest},
    {"shortest-path", KeepRule::kShortestPath},
}};

std::vector<std::string> KeepRuleNames() {
  std::vector<std::string> names;
  for (const auto& [name, rule] : kKeepRules) {
    names.emplace_back(name);
  }
  return names;
}

KeepRule KeepRuleOf(const std::string& name) {
  for (const auto& [candidate, rule] : kKeepRules) {
    if (name == candidate) {
      return rule;
    }
  }
  return KeepRule::kNone;
}

}  // namespace

const char* KeepRuleName(KeepRule rule) {
  for (const auto& [name, candidate] : kKeepRules) {
    if (rule == candidate) {
      return name;
    }
  }
  return nullptr;
}

CleanOptionParser::CleanOptionParser(CLI::App& command, CleanSubject subject) : subject_(subject) {
  const bool any = subject == CleanSubject::kAnyReport;
  std::optional<CommandOption> clean;
  if (!any) {
    clean = AddFlag(command, "--clean", clean_, "Remove what was found, after a question")
                .InGroup("Cleaning");
  }
  const auto cleaning = [&clean](CommandOption option) {
    option.InGroup("Cleaning");
    return clean ? option.Needs(*clean) : option;
  };
  const CommandOption permanent =
      cleaning(AddFlag(command, "--permanent", permanent_, "Delete for good"));
  cleaning(AddFlag(command, "--recycle", recycle_, "Move to the Recycle Bin")).Excludes(permanent);
  cleaning(
      AddFlag(command, "--dry-run", dry_run_, "Say what would happen and change nothing at all"));
  cleaning(AddFlag(command, "--yes", yes_, "Do not ask"));
  if (any || subject == CleanSubject::kDuplicates) {
    cleaning(AddOption(command, "--keep", keep_, "RULE",
                       "Duplicates: the copy of each group that stays: first (in the report), "
                       "newest, oldest or shortest-path"))
        .OneOf(KeepRuleNames());
    cleaning(AddOption(command, "--keep-under", keep_under_, "DIR",
                       "Duplicates: the copies below this folder stay; a group without one is "
                       "left to --keep, or left alone"));
    cleaning(AddFlag(command, "--no-verify", no_verify_,
                     "Duplicates: trust the hashes instead of comparing every byte with the "
                     "copy that stays"));
  }
  if (any || subject == CleanSubject::kJunk) {
    cleaning(AddFlag(command, "--all", all_,
                     "Junk: also the files that are not selected, such as downloads"));
  }
}

std::optional<CleanOptions> CleanOptionParser::Read() const {
  if (subject_ != CleanSubject::kAnyReport && !clean_) {
    return std::nullopt;
  }
  if (!permanent_ && !recycle_) {
    throw UserError(ExitCode::kUsage, "a clean must be told how to remove files",
                    "add --recycle to move them to the Recycle Bin, or --permanent to delete them "
                    "for good; --dry-run shows what would happen");
  }
  CleanOptions options;
  options.mode = recycle_ ? CleanMode::kRecycle : CleanMode::kPermanent;
  options.dry_run = dry_run_;
  options.yes = yes_;
  options.verify = !no_verify_;
  options.all = all_;
  options.keep = KeepRuleOf(keep_);
  if (!keep_under_.empty()) {
    options.keep_under = FullPath(FromUtf8(keep_under_));
  }
  if (subject_ == CleanSubject::kDuplicates) {
    RequireKeepRule(options);
  }
  return options;
}

void RequireKeepRule(const CleanOptions& options) {
  if (options.keep == KeepRule::kNone && options.keep_under.empty()) {
    throw UserError(ExitCode::kUsage, "a clean of duplicates must be told which copy stays",
                    "add --keep first, newest, oldest or shortest-path, or --keep-under DIR");
  }
}

}  // namespace quastel::client
