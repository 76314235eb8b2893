#include "clean_command.h"

#include <memory>
#include <string>
#include <utility>

#include "clean.h"
#include "clean_options.h"
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
  CLI::App* command = app.add_subcommand(
      "clean", "Remove the files of a saved report, as far as they have not changed since");
  const auto arguments = std::make_shared<Arguments>(*command);
  command
      ->add_option("--from", arguments->report,
                   "A report of large, duplicates or junk, written by --json; take out the rows of "
                   "what is to stay")
      ->type_name("REPORT.json")
      ->required();
  command->add_flag("--json", arguments->json, "Write one JSON object instead of a table");
  command->callback([arguments, &action] {
    action = [arguments](Console& console) { return RunCleanCommand(*arguments, console); };
  });
}

}  // namespace quastel::client
