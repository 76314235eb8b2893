#ifndef QUASTEL_APPS_QUASTEL_SCAN_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_SCAN_COMMAND_H_

#include <cstdint>
#include <string>
#include <vector>

#include "command.h"
#include "report.h"
#include "report_table.h"
#include "scan_run.h"

namespace quastel::client {

// Where a command that scans and reports differs from the others.
struct ScanCommand {
  std::string name;
  std::uint32_t kind;
  StageWord stage;
  void (*arrange)(Report& report);  // sorts, groups and says how much is listed
  TableParts table;
  // What is asked of the library, apart from the kind. Null for a scan of the roots that were
  // typed.
  ScanRequest (*request)(const ScanOptions& options) = nullptr;
  // Called when the scan failed: throws UserError if it knows why. May be null.
  void (*explain_failure)(const Report& report) = nullptr;
};

ExitCode RunScanCommand(const ScanCommand& command, const ScanOptions& options, Console& console);

// The library skips a protected root without a word, and an empty report would look like good news.
void TellProtectedRoots(const std::vector<std::wstring>& roots, const ProtectedFolders& folders,
                        Console& console);

// After the report was written: says on standard error what became of the scan, and answers the
// exit code.
ExitCode EndReport(qs_status status, bool json, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_COMMAND_H_
