#include "clean_command.h"

#include <memory>
#include <string>
#include <utility>

#include "clean.h"
#include "clean_options.h"
#include "command_options.h"
#include "full_path.h"
#include "saved_report.h"
#include "text.h"

namespace quastel::client {
namespace {

struct Arguments {
  explicit Arguments(CLI::App& command) : clean(command, CleanSubject::kAnyReport) {}

  CleanOptionParser clean;
  std::string report;
  bool json = false;
};

ExitCode RunCleanCommand(const Arguments& arguments, Console& console) {
  const CleanOptions options = *arguments.clean.Read();
  const std::wstring path = FullPath(FromUtf8(arguments.report));
  SavedReport saved = ReadSavedReport(path);
  return RunClean({saved.command, path, std::move(saved.files), arguments.json}, options, console);
}

}  // namespace

void AddCleanCommand(CLI::App& app, Action& action) {
  CLI::App& command = AddCommand(
      app, "clean", "Remove the files of a saved report, as far as they have not changed since");
  const auto arguments = std::make_shared<Arguments>(command);
  AddOption(command, "--from", arguments->report, "REPORT.json",
            "A report of large, duplicates or junk, written by --json; take out the rows of what "
            "is to stay")
      .Required();
  AddFlag(command, "--json", arguments->json, "Write one JSON object instead of a table");
  OnCall(command, [arguments, &action] {
    action = [arguments](Console& console) { return RunCleanCommand(*arguments, console); };
  });
}

}  // namespace quastel::client
