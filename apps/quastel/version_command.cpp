#include "version_command.h"

#include <quastel_core.h>

#include <memory>

#include "command_options.h"
#include "json_writer.h"

namespace quastel::client {
namespace {

ExitCode RunVersion(bool as_json, Console& console) {
  if (as_json) {
    JsonWriter object(console.out, "version");
    object.Member("client_version", QUASTEL_CLIENT_VERSION);
    object.End();
  } else {
    console.out.Write(VersionText() + "\n");
  }
  console.out.Flush();
  return ExitCode::kDone;
}

}  // namespace

std::string VersionText() {
  return std::string("quastel " QUASTEL_CLIENT_VERSION " (library ") + qs_version() + ")";
}

void AddVersionCommand(CLI::App& app, Action& action) {
  CLI::App& command = AddCommand(app, "version", "Tell the versions of client and library");
  const auto as_json = std::make_shared<bool>(false);
  AddFlag(command, "--json", *as_json, "Write one JSON object");
  OnCall(command, [as_json, &action] {
    action = [value = *as_json](Console& console) { return RunVersion(value, console); };
  });
}

}  // namespace quastel::client
