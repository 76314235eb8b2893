#include "duplicates_command.h"

#include <quastel_core.h>

#include <memory>
#include <string>

#include "byte_size.h"
#include "clean_options.h"
#include "command_options.h"
#include "duplicate_report.h"
#include "duplicate_stage.h"
#include "duplicate_table.h"
#include "scan_command.h"
#include "scan_options.h"

namespace quastel::client {
namespace {

std::string CheckSize(const std::string& text) {
  return ParseByteSize(text) ? std::string() : text + " is not a size, such as 4096, 10K or 5M";
}

ExitCode RunDuplicates(const ScanOptions& options, Console& console) {
  return RunScanCommand(
      {"duplicates",
       QS_SCAN_KIND_DUPLICATES,
       DuplicateStage,
       ArrangeDuplicates,
       {"No duplicates here: no two files have the same content.", WriteDuplicates}},
      options, console);
}

}  // namespace

void AddDuplicatesCommand(CLI::App& app, Action& action) {
  CLI::App& command =
      AddCommand(app, "duplicates", "List the groups of files that have the same content");
  const auto options = std::make_shared<ScanOptionParser>(
      command,
      ScanWords{{SortKey::kReclaimable, SortKey::kSize, SortKey::kCount, SortKey::kPath},
                "reclaimable (most space first), size (largest file first), count (most copies "
                "first) or path",
                "groups"});
  const auto min_size = std::make_shared<std::string>();
  AddOption(command, "--min-size", *min_size, "SIZE",
            "List only groups of files of at least this size; the scan and its totals stay the "
            "same")
      .Check(CheckSize);
  const auto clean = std::make_shared<CleanOptionParser>(command, CleanSubject::kDuplicates);
  OnCall(command, [options, min_size, clean, &action] {
    ScanOptions read = options->Read();
    read.clean = clean->Read();
    if (!min_size->empty()) {
      read.min_size = ParseByteSize(*min_size);
    }
    action = [read](Console& console) { return RunDuplicates(read, console); };
  });
}

}  // namespace quastel::client
