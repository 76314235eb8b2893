#include "scan_command.h"

#include "interrupt.h"
#include "messages.h"
#include "path_text.h"
#include "product_scan.h"
#include "protected_folders.h"
#include "report_json.h"
#include "scan_roots.h"
#include "status_text.h"
#include "time_text.h"

namespace quastel::client {
namespace {

// The library skips such a root without a word, and an empty report would look like good news.
void TellProtectedRoots(const ScanRequest& request, Console& console) {
  for (const std::wstring& root : request.roots) {
    if (qs_is_in_whitelist(root.c_str(), request.protection->system_root.c_str(),
                           request.protection->user_home.c_str()) != 0) {
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

ScanRequest MakeRequest(std::uint32_t kind, const ScanOptions& options, Console& console) {
  ScanRequest request;
  request.kind = kind;
  request.roots = ResolveRoots(options.roots);
  if (options.protect) {
    request.protection = ProtectedFoldersFromEnvironment();
    TellProtectedRoots(request, console);
  } else if (kind == QS_SCAN_KIND_DUPLICATES) {
    request.cache_profile = ProfileFromEnvironment();
  }
  return request;
}

Report Scan(const ScanCommand& command, const ScanOptions& options, Console& console) {
  // From here until the rows are read, an interrupt leads to a report. While the report is printed
  // it ends the process, as a user expects who has seen enough.
  const InterruptGuard interrupt;
  Report report;
  report.command = command.name;
  report.options = options;
  report.request = MakeRequest(command.kind, options, console);
  ProductScan scan;
  report.start_time = UtcNowIsoText();
  report.status = RunScan(scan, report.request, command.stage, interrupt, console);
  ReadRows(scan, report);
  return report;
}

}  // namespace

ExitCode RunScanCommand(const ScanCommand& command, const ScanOptions& options, Console& console) {
  Report report = Scan(command, options, console);
  command.arrange(report);
  if (options.json) {
    WriteJson(report, console.out);
  } else {
    WriteTable(report, command.table, console.out);
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

}  // namespace quastel::client
