#include "large_command.h"

#include <quastel_core.h>

#include <memory>

#include "clean_options.h"
#include "command_options.h"
#include "large_report.h"
#include "large_table.h"
#include "scan_command.h"
#include "scan_options.h"

namespace quastel::client {
namespace {

const char* Stage(const qs_product_scan_status& /*status*/,
                  const qs_product_scan_performance& /*performance*/) {
  return "Scanning";
}

ExitCode RunLarge(const ScanOptions& options, Console& console) {
  return RunScanCommand({"large",
                         QS_SCAN_KIND_LARGE_FILES,
                         Stage,
                         ArrangeLargeFiles,
                         {"No large files here: none is above 10 MiB.", WriteLargeFiles}},
                        options, console);
}

}  // namespace

void AddLargeCommand(CLI::App& app, Action& action) {
  CLI::App& command = AddCommand(app, "large", "List the files above 10 MiB, by category");
  const auto options = std::make_shared<ScanOptionParser>(
      command, ScanWords{{SortKey::kSize, SortKey::kPath, SortKey::kModified, SortKey::kCategory,
                          SortKey::kName},
                         "size (largest first), modified (newest first), path, category or name",
                         "rows"});
  const auto clean = std::make_shared<CleanOptionParser>(command, CleanSubject::kFiles);
  OnCall(command, [options, clean, &action] {
    ScanOptions read = options->Read();
    read.clean = clean->Read();
    action = [read](Console& console) { return RunLarge(read, console); };
  });
}

}  // namespace quastel::client
