#include "clean.h"

#include <chrono>
#include <utility>

#include "clean_report.h"
#include "clean_run.h"
#include "display_text.h"
#include "interrupt.h"
#include "messages.h"
#include "progress_line.h"
#include "question.h"
#include "time_text.h"

namespace quastel::client {
namespace {

CleanPlan MakePlan(CleanRequest& request, const CleanOptions& options) {
  if (request.source == "duplicates") {
    RequireKeepRule(options);
    return PlanDuplicates(std::move(request.files), options.keep, options.keep_under);
  }
  return PlanFiles(std::move(request.files), request.source != "junk" || options.all);
}

std::string QuestionText(const CleanPlan& plan, const CleanOptions& options) {
  const std::string files = Counted(plan.CountOf(Fate::kRemove), "file", "files") + " (" +
                            HumanSize(plan.BytesToRemove()) + ")";
  return options.mode == CleanMode::kRecycle ? "Move " + files + " to the Recycle Bin?"
                                             : "Delete " + files + " for good?";
}

void Execute(CleanReport& report, Console& console) {
  const InterruptGuard interrupt;
  ProgressLine line(console.err);
  const auto begin = std::chrono::steady_clock::now();
  CleanRun run(report.plan, report.options);
  run.Start();
  while (!run.WaitFor(kPollInterval)) {
    const bool cancelling = interrupt.Requested();
    if (cancelling) {
      run.Cancel();
    }
    if (line.IsShown()) {
      const CleanProgress progress = run.Progress();
      const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(
          std::chrono::steady_clock::now() - begin);
      line.Draw({cancelling               ? kCancellingStage
                 : report.options.dry_run ? "Checking"
                                          : "Cleaning",
                 progress.files, progress.bytes, static_cast<std::uint64_t>(elapsed.count()),
                 progress.path});
    }
  }
  line.Erase();
  report.status = run.Finish();
  report.results = run.results();
  report.removed_folders = run.removed_folders();
}

ExitCode ExitCodeOf(const CleanReport& report) {
  if (report.Cancelled()) {
    return ExitCode::kCancelled;
  }
  if (report.status != QS_OK) {
    return ExitCode::kError;
  }
  return TotalsOf(report).refused == 0 ? ExitCode::kDone : ExitCode::kSomeRowsFailed;
}

}  // namespace

ExitCode RunClean(CleanRequest request, const CleanOptions& options, Console& console) {
  CleanReport report;
  report.source = request.source;
  report.saved_as = request.saved_as;
  report.options = options;
  report.plan = MakePlan(request, options);
  report.start_time = UtcNowIsoText();
  if (report.plan.duplicates && !options.verify) {
    PrintNote(console, "files are not compared with the copies that stay (--no-verify)");
  }
  const bool something = report.plan.CountOf(Fate::kRemove) > 0;
  if (something && !options.dry_run && !options.yes &&
      !AskYesOrNo(QuestionText(report.plan, options), console)) {
    PrintNote(console, "nothing was touched");
    return ExitCode::kCancelled;
  }
  Execute(report, console);
  if (request.json) {
    WriteCleanJson(report, console.out);
  } else {
    WriteCleanTable(report, console.out);
  }
  console.out.Flush();
  if (report.status == QS_FAILED) {
    PrintError(console, "the clean ended early: there was not enough memory", "");
  }
  return ExitCodeOf(report);
}

}  // namespace quastel::client
