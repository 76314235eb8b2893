#include "large_command.h"

#include <quastel_core.h>

#include <memory>

#include "interrupt.h"
#include "messages.h"
#include "path_text.h"
#include "product_scan.h"
#include "protected_folders.h"
#include "report.h"
#include "report_json.h"
#include "report_table.h"
#include "scan_options.h"
#include "scan_roots.h"
#include "scan_run.h"
#include "status_text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

// The library skips such a root without a word, and an empty report would look like good news.
void TellProtectedRoots(const Report& report, Console& console) {
  for (const std::wstring& root : report.roots) {
    if (qs_is_in_whitelist(root.c_str(), report.protection->system_root.c_str(),
                           report.protection->user_home.c_str()) != 0) {
      PrintNote(
          console,
          Quoted(root) + " is protected: nothing below it is scanned; use --no-protect to scan it");
    }
  }
}

ExitCode ExitCodeOf(qs_status status) {
  if (status == QS_OK) {
    return ExitCode::kDone;
  }
  return status == QS_CANCELLED ? ExitCode::kCancelled : ExitCode::kError;
}

Report Scan(const ScanOptions& options, Console& console) {
  // From here until the rows are read, an interrupt leads to a report. While the report is printed
  // it ends the process, as a user expects who has seen enough.
  const InterruptGuard interrupt;
  Report report;
  report.command = "large";
  report.options = options;
  report.roots = ResolveRoots(options.roots);
  if (options.protect) {
    report.protection = ProtectedFoldersFromEnvironment();
    TellProtectedRoots(report, console);
  }

  ProductScan scan;
  ScanRequest request;
  request.kind = QS_SCAN_KIND_LARGE_FILES;
  request.roots = report.roots;
  request.protection = report.protection;
  report.start_time = UtcNowIsoText();
  report.status = RunScan(scan, std::move(request), "Scanning", interrupt, console);
  CollectRows(scan, report);
  return report;
}

ExitCode RunLarge(const ScanOptions& options, Console& console) {
  const Report report = Scan(options, console);
  if (options.json) {
    WriteJson(report, console.out);
  } else {
    WriteTable(report, {"No large files here: none is above 10 MiB."}, console.out);
  }
  console.out.Flush();
  if (report.Cancelled() && options.json) {
    PrintNote(console, "cancelled; the report holds what was found until then");
  }
  const ExitCode code = ExitCodeOf(report.status);
  if (code == ExitCode::kError) {
    PrintError(console, std::string("the scan ended early: ") + StatusSentence(report.status), "");
  }
  return code;
}

}  // namespace

void AddLargeCommand(CLI::App& app, Action& action) {
  CLI::App* command = app.add_subcommand("large", "List the files above 10 MiB, by category");
  const auto options = std::make_shared<ScanOptionParser>(*command);
  command->callback([options, &action] {
    action = [read = options->Read()](Console& console) { return RunLarge(read, console); };
  });
}

}  // namespace quastel::client
