#ifndef QUASTEL_APPS_QUASTEL_SCAN_COMMAND_H_
#define QUASTEL_APPS_QUASTEL_SCAN_COMMAND_H_

#include <cstdint>
#include <string>

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
};

ExitCode RunScanCommand(const ScanCommand& command, const ScanOptions& options, Console& console);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_SCAN_COMMAND_H_
