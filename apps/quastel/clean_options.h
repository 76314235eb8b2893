#ifndef QUASTEL_APPS_QUASTEL_CLEAN_OPTIONS_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_OPTIONS_H_

#include <optional>
#include <string>

#include "clean_plan.h"

namespace CLI {
class App;
}  // namespace CLI

namespace quastel::client {

enum class CleanMode { kPermanent, kRecycle };

// What a clean may be told.
struct CleanOptions {
  CleanMode mode = CleanMode::kPermanent;
  bool dry_run = false;
  bool yes = false;    // do not ask
  bool verify = true;  // duplicates: compare each file with the copy that stays
  bool all = false;    // junk: also what the rules do not offer by themselves
  KeepRule keep = KeepRule::kNone;
  std::wstring keep_under;  // absolute; empty for none
};

// "newest"; null for none.
const char* KeepRuleName(KeepRule rule);

// Which options a command has.
enum class CleanSubject { kFiles, kDuplicates, kJunk, kAnyReport };

// Lets `command` accept what a clean may be told; it must live until the arguments were parsed and
// read. A scan gets the flag --clean as well, and without it none of the others.
class CleanOptionParser {
 public:
  CleanOptionParser(CLI::App& command, CleanSubject subject);

  // Nothing for a scan without --clean. Throws UserError for what does not go together.
  std::optional<CleanOptions> Read() const;

 private:
  const CleanSubject subject_;
  bool clean_ = false;
  bool permanent_ = false;
  bool recycle_ = false;
  bool dry_run_ = false;
  bool yes_ = false;
  bool no_verify_ = false;
  bool all_ = false;
  std::string keep_;
  std::string keep_under_;
};

// Throws UserError unless the options say which copy of a set of duplicates stays.
void RequireKeepRule(const CleanOptions& options);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_OPTIONS_H_
