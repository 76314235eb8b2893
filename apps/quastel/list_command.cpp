#include "list_command.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "command_options.h"
#include "display_text.h"
#include "file_session.h"
#include "html_report.h"
#include "interrupt.h"
#include "list_report.h"
#include "messages.h"
#include "path_text.h"
#include "progress_line.h"
#include "question.h"
#include "report_table.h"
#include "scan_command.h"
#include "scan_options.h"
#include "scan_roots.h"
#include "status_text.h"
#include "time_text.h"
#include "user_error.h"

namespace quastel::client {
namespace {

constexpr std::size_t kFilesInQuestion = 20;

using Sessions = std::vector<std::unique_ptr<FileSession>>;

std::uint64_t Microseconds(std::chrono::steady_clock::duration time) {
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(time).count());
}

// Waits for a session's scan or clean with a progress line; `read` fills in what is shown.
template <typename Read>
qs_status Await(FileSession& session, const InterruptGuard& interrupt, Console& console,
                Read read) {
  ProgressLine line(console.err);
  while (!session.WaitFor(kPollInterval)) {
    const bool cancelling = interrupt.Requested();
    if (cancelling) {
      session.Cancel();
    }
    if (line.IsShown()) {
      Progress progress;
      read(progress);
      if (cancelling) {
        progress.stage = kCancellingStage;
      }
      line.Draw(progress);
    }
  }
  line.Erase();
  return session.Finish();
}

// One session for each root: a session holds the list of one folder.
void ScanRoots(ListReport& report, Sessions& sessions, Console& console) {
  const InterruptGuard interrupt;
  const auto begin = std::chrono::steady_clock::now();
  for (const std::wstring& root : report.roots) {
    FileSession& session = *sessions.emplace_back(std::make_unique<FileSession>());
    session.StartScan(root, report.options.mode);
    report.status = Await(session, interrupt, console, [&](Progress& progress) {
      const qs_session_scan_status status = session.PollScan();
      progress.stage = "Listing";
      progress.files = report.files_visited + status.files_visited;
      progress.bytes = report.bytes_visited + status.bytes_visited;
      progress.elapsed_us = Microseconds(std::chrono::steady_clock::now() - begin);
      progress.path = session.CurrentPath();
    });
    const qs_session_scan_status status = session.PollScan();
    report.files_visited += status.files_visited;
    report.bytes_visited += status.bytes_visited;
    if (report.status != QS_OK) {
      break;
    }
  }
  report.elapsed_us = Microseconds(std::chrono::steady_clock::now() - begin);
}

void ReadAllRows(const Sessions& sessions, ListReport& report) {
  report.rows.clear();
  for (const auto& session : sessions) {
    for (std::uint64_t i = 0; i < session->RowCount(); ++i) {
      report.rows.push_back(session->Row(i));
      report.rows.back().path = TidyPath(report.rows.back().path);
    }
  }
}

void CheckIndexes(const ListReport& report) {
  std::vector<std::uint64_t> indexes = report.options.clean;
  std::ranges::sort(indexes);
  if (indexes.back() >= report.rows.size()) {
    throw UserError(ExitCode::kError, "there is no row " + std::to_string(indexes.back()),
                    "the list has " + Counted(report.rows.size(), "row", "rows") +
                        ", counted from 0; nothing was touched");
  }
  if (std::ranges::adjacent_find(indexes) != indexes.end()) {
    throw UserError(ExitCode::kUsage, "a row is named twice", "nothing was touched");
  }
}

// An index is only as good as the list that it was read from, so the question names the files.
std::string QuestionText(const ListReport& report) {
  std::string text;
  for (std::size_t i = 0; i < std::min(report.options.clean.size(), kFilesInQuestion); ++i) {
    text += ShownPath(report.rows[static_cast<std::size_t>(report.options.clean[i])].path) + "\n";
  }
  if (report.options.clean.size() > kFilesInQuestion) {
    text += "and " + GroupedNumber(report.options.clean.size() - kFilesInQuestion) + " more\n";
  }
  return text + "Delete " + Counted(report.options.clean.size(), "file", "files") + " for good?";
}

void CleanRows(ListReport& report, const Sessions& sessions, Console& console) {
  const InterruptGuard interrupt;
  report.cleaned = true;
  std::uint64_t first = 0;
  for (const auto& session : sessions) {
    const std::uint64_t end = first + session->RowCount();
    std::vector<std::uint64_t> own;
    for (const std::uint64_t index : report.options.clean) {
      if (index >= first && index < end) {
        own.push_back(index - first);
      }
    }
    first = end;
    if (own.empty()) {
      continue;
    }
    session->StartClean(std::move(own));
    report.clean_status = Await(*session, interrupt, console, [&](Progress& progress) {
      progress.stage = "Cleaning";
      progress.files = report.clean_processed + session->PollClean().processed;
    });
    report.clean_processed += session->PollClean().processed;
    if (report.clean_status != QS_OK) {
      return;
    }
  }
}

ExitCode CleanAfterScan(ListReport& report, const Sessions& sessions, Console& console) {
  if (report.status != QS_OK) {
    throw UserError(
        report.status == QS_CANCELLED ? ExitCode::kCancelled : ExitCode::kError,
        std::string("nothing was touched: the scan ended early: ") + StatusSentence(report.status));
  }
  CheckIndexes(report);
  if (!report.options.yes && !AskYesOrNo(QuestionText(report), console)) {
    throw UserError(ExitCode::kCancelled, "nothing was touched");
  }
  CleanRows(report, sessions, console);
  ReadAllRows(sessions, report);
  if (report.clean_status == QS_CANCELLED) {
    return ExitCode::kCancelled;
  }
  return report.clean_status == QS_OK ? ExitCode::kDone : ExitCode::kSomeRowsFailed;
}

ExitCode RunList(const ListOptions& options, Console& console) {
  CheckHtmlPath(options.html, !options.clean.empty());
  ListReport report;
  report.options = options;
  report.roots = ResolveRoots(options.roots);
  report.start_time = UtcNowIsoText();
  Sessions sessions;
  ScanRoots(report, sessions, console);
  ReadAllRows(sessions, report);
  ExitCode code = ExitCode::kDone;
  if (!options.clean.empty()) {
    code = CleanAfterScan(report, sessions, console);
  }
  if (options.json) {
    WriteListJson(report, console.out);
  } else {
    WriteListTable(report, console.out);
  }
  if (!options.html.empty()) {
    console.out.Flush();
    WriteListHtml(report);
    TellHtmlPath(options.html, options.json, console.out);
  }
  const ExitCode end = EndReport(report.status, options.json, console);
  return end != ExitCode::kDone ? end : code;
}

struct Arguments {
  explicit Arguments(CLI::App& command) : scan(command, ScanWords{{}, "", "rows", true, false}) {
    const CommandOption large = AddFlag(command, "--large", large_files, "Only files above 10 MiB");
    AddFlag(command, "--inspect", inspect, "Look only: a clean of this list is refused")
        .Excludes(large);
    const CommandOption clean =
        AddOption(command, "--clean", indexes, "INDEX,...",
                  "Delete the files of these rows, counted from 0, up to the first that cannot be "
                  "deleted; after a question that names them")
            .SplitAt(',')
            .InGroup("Cleaning");
    AddFlag(command, "--permanent", permanent, "Delete for good").Needs(clean).InGroup("Cleaning");
    AddFlag(command, "--yes", yes, "Do not ask").Needs(clean).InGroup("Cleaning");
  }

  ListOptions Read() const {
    const ScanOptions common = scan.Read();
    ListOptions options;
    options.roots = common.roots;
    options.json = common.json;
    options.html = common.html;
    options.top = common.top;
    options.mode = large_files ? QS_SESSION_LARGE_FILES
                   : inspect   ? QS_SESSION_INSPECT
                               : QS_SESSION_ALL_FILES;
    options.clean = indexes;
    options.yes = yes;
    if (!indexes.empty() && inspect) {
      throw UserError(ExitCode::kUsage, "a list by --inspect cannot be cleaned",
                      "leave --inspect out; nothing was touched");
    }
    if (!indexes.empty() && !permanent) {
      throw UserError(ExitCode::kUsage, "a clean must be told how to remove files",
                      "add --permanent: what a list cleans is deleted for good");
    }
    return options;
  }

  ScanOptionParser scan;
  bool large_files = false;
  bool inspect = false;
  std::vector<std::uint64_t> indexes;
  bool permanent = false;
  bool yes = false;
};

}  // namespace

void AddListCommand(CLI::App& app, Action& action) {
  CLI::App& command =
      AddCommand(app, "list", "List all files in the order found, with their indexes");
  const auto arguments = std::make_shared<Arguments>(command);
  OnCall(command, [arguments, &action] {
    action = [options = arguments->Read()](Console& console) { return RunList(options, console); };
  });
}

}  // namespace quastel::client
