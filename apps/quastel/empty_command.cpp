#include "empty_command.h"

#include <memory>

#include "command_options.h"
#include "empty_report.h"
#include "html_report.h"
#include "interrupt.h"
#include "own_walk.h"
#include "scan_command.h"
#include "scan_roots.h"
#include "time_text.h"

namespace quastel::client {
namespace {

EmptyReport Search(const ScanOptions& options, Console& console) {
  const InterruptGuard interrupt;
  EmptyReport report;
  report.options = options;
  report.roots = ResolveRoots(options.roots);
  if (options.protect) {
    report.protection = ProtectedFoldersFromEnvironment();
    TellProtectedRoots(report.roots, *report.protection, console);
  }
  report.start_time = UtcNowIsoText();
  WalkState state;
  const WalkEnd end =
      RunWalk([&] { return FindEmptyFolders(report.roots, report.protection, state, report.rows); },
              state, {"Scanning", "folder", "folders", false}, interrupt, console);
  report.status = end.status;
  report.elapsed_us = end.elapsed_us;
  report.folders_visited = state.count();
  return report;
}

ExitCode RunEmpty(const ScanOptions& options, Console& console) {
  CheckHtmlPath(options.html, false);
  const EmptyReport report = Search(options, console);
  if (options.json) {
    WriteEmptyJson(report, console.out);
  } else {
    WriteEmptyTable(report, console.out);
  }
  if (!options.html.empty()) {
    console.out.Flush();
    WriteEmptyHtml(report);
    TellHtmlPath(options.html, options.json, console.out);
  }
  return EndReport(report.status, options.json, console);
}

}  // namespace

void AddEmptyCommand(CLI::App& app, Action& action) {
  CLI::App& command =
      AddCommand(app, "empty", "List the outermost folders that hold no file at any depth");
  const auto options = std::make_shared<ScanOptionParser>(command, ScanWords{{}, "", "rows"});
  OnCall(command, [options, &action] {
    action = [read = options->Read()](Console& console) { return RunEmpty(read, console); };
  });
}

}  // namespace quastel::client
