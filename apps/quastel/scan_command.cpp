#include "scan_command.h"

#include <windows.h>

#include <utility>

#include "clean.h"
#include "html_report.h"
#include "interrupt.h"
#include "messages.h"
#include "path_text.h"
#include "product_scan.h"
#include "protected_folders.h"
#include "report_json.h"
#include "scan_roots.h"
#include "status_text.h"
#include "time_text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

ExitCode ExitCodeOf(qs_status status) {
  if (status == QS_OK) {
    return ExitCode::kDone;
  }
  return status == QS_CANCELLED ? ExitCode::kCancelled : ExitCode::kError;
}

// A scan of duplicates writes its cache below the profile that it is given, unless that is
// relative, and a dry run must not write anything. The protected folders come out the same.
void NameProfileRelatively(ScanRequest& request) {
  request.cache_profile.clear();
  if (!request.protection) {
    return;
  }
  if (SetCurrentDirectoryW(request.protection->user_home.c_str()) == FALSE) {
    throw UserError(ExitCode::kError,
                    Quoted(request.protection->user_home) + ", the profile, cannot be entered",
                    "set %USERPROFILE% to a folder that is there, or add --no-protect");
  }
  request.protection->user_home = L".";
}

ScanRequest RootRequest(std::uint32_t kind, const ScanOptions& options, Console& console) {
  ScanRequest request;
  request.roots = ResolveRoots(options.roots);
  if (options.protect) {
    request.protection = ProtectedFoldersFromEnvironment();
    TellProtectedRoots(request.roots, *request.protection, console);
  } else if (kind == QS_SCAN_KIND_DUPLICATES) {
    request.cache_profile = ProfileFromEnvironment();
  }
  if (kind == QS_SCAN_KIND_DUPLICATES && options.clean && options.clean->dry_run) {
    NameProfileRelatively(request);
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
  report.request = command.request != nullptr ? command.request(options)
                                              : RootRequest(command.kind, options, console);
  report.request.kind = command.kind;
  ProductScan scan;
  report.start_time = UtcNowIsoText();
  report.status = RunScan(scan, report.request, command.stage, interrupt, console);
  ReadRows(scan, report);
  return report;
}

// The rows that are listed, in their order.
CleanRequest WhatToClean(const Report& report) {
  CleanRequest request;
  request.source = report.command;
  request.json = report.options.json;
  for (std::size_t i = 0; i < report.listed; ++i) {
    const ScanRow& row = report.rows[i];
    CleanFile file;
    file.item_id = row.numbers.item_id;
    file.group_id = row.numbers.group_id;
    file.path = row.path;
    file.size = row.numbers.size;
    file.modified = row.numbers.modified;
    file.selected = report.request.kind != QS_SCAN_KIND_JUNK_RULES || row.numbers.preselect != 0;
    file.rule_folder = row.rule_folder;
    request.files.push_back(std::move(file));
  }
  return request;
}

ExitCode CleanFindings(const Report& report, Console& console) {
  if (report.status != QS_OK) {
    throw UserError(
        ExitCodeOf(report.status),
        std::string("nothing was touched: the scan ended early: ") + StatusSentence(report.status));
  }
  return RunClean(WhatToClean(report), *report.options.clean, console);
}

}  // namespace

ExitCode RunScanCommand(const ScanCommand& command, const ScanOptions& options, Console& console) {
  CheckHtmlPath(options.html, options.clean.has_value());
  Report report = Scan(command, options, console);
  if (ExitCodeOf(report.status) == ExitCode::kError && command.explain_failure != nullptr) {
    command.explain_failure(report);
  }
  command.arrange(report);
  if (options.clean) {
    return CleanFindings(report, console);
  }
  if (options.json) {
    WriteJson(report, console.out);
  } else {
    WriteTable(report, command.table, console.out);
  }
  if (!options.html.empty()) {
    // What was found is told even if no page can be made of it.
    console.out.Flush();
    WriteHtml(report);
    TellHtmlPath(options.html, options.json, console.out);
  }
  return EndReport(report.status, options.json, console);
}

void TellProtectedRoots(const std::vector<std::wstring>& roots, const ProtectedFolders& folders,
                        Console& console) {
  for (const std::wstring& root : roots) {
    if (qs_is_in_whitelist(root.c_str(), folders.system_root.c_str(), folders.user_home.c_str()) !=
        0) {
      PrintNote(
          console,
          Quoted(root) + " is protected: nothing below it is scanned; use --no-protect to scan it");
    }
  }
}

ExitCode EndReport(qs_status status, bool json, Console& console) {
  console.out.Flush();
  if (status == QS_CANCELLED && json) {
    PrintNote(console, "cancelled; the report holds what was found until then");
  }
  const ExitCode code = ExitCodeOf(status);
  if (code == ExitCode::kError) {
    PrintError(console, std::string("the scan ended early: ") + StatusSentence(status), "");
  }
  return code;
}

}  // namespace quastel::client
