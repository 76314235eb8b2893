#ifndef QUASTEL_APPS_QUASTEL_CLEAN_H_
#define QUASTEL_APPS_QUASTEL_CLEAN_H_

#include <string>
#include <vector>

#include "clean_options.h"
#include "clean_plan.h"
#include "console.h"
#include "exit_codes.h"

namespace quastel::client {

// What to clean.
struct CleanRequest {
  std::string source;     // the command of the scan: "large", "duplicates" or "junk"
  std::wstring saved_as;  // the saved report; empty for a scan of the same call
  std::vector<CleanFile> files;
  bool json = false;
};

// A clean from the plan to the report: asks first unless it was told not to.
ExitCode RunClean(CleanRequest request, const CleanOptions& options, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_CLEAN_H_
