#ifndef QUASTEL_APPS_QUASTEL_SAVED_REPORT_H_
#define QUASTEL_APPS_QUASTEL_SAVED_REPORT_H_

#include <string>
#include <vector>

#include "clean_plan.h"

namespace quastel::client {

// What a clean needs of the JSON report of a scan.
struct SavedReport {
  std::string command;  // "large", "duplicates" or "junk"
  std::vector<CleanFile> files;
};

// Reads a report that --json wrote; rows may have been taken out of it since. Throws UserError for
// everything else, with the first thing that is wrong: a report is good as a whole, or not at all.
SavedReport ReadSavedReport(const std::wstring& path);

// The same for the text of a report. `name` is what messages call it.
SavedReport ParseSavedReport(const std::string& text, const std::string& name);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SAVED_REPORT_H_
