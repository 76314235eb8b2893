#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "clean_command.h"
#include "duplicates_command.h"
#include "empty_command.h"
#include "hash_command.h"
#include "help_examples.h"
#include "junk_command.h"
#include "large_command.h"
#include "list_command.h"
#include "nearest_word.h"
#include "rules_command.h"
#include "text.h"
#include "user_error.h"
#include "version_command.h"
#include "wrap_help.h"

namespace quastel::client {
namespace {

std::vector<std::string> CommandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

std::vector<std::string> OptionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options([](const CLI::Option*) { return true; })) {
    for (const std::string& name : option->get_lnames()) {
      names.push_back("--" + name);
    }
  }
  return names;
}

// The command that was called, or the one in it.
const CLI::App& InnermostCommand(const CLI::App& app) {
  const CLI::App* innermost = &app;
  while (!innermost->get_subcommands().empty()) {
    innermost = innermost->get_subcommands().front();
  }
  return *innermost;
}

// "quastel rules check"
std::string FullName(const CLI::App& app) {
  const CLI::App* parent = app.get_parent();
  return parent == nullptr ? app.get_name() : FullName(*parent) + " " + app.get_name();
}

std::string HelpHint(const CLI::App& command) {
  return "see " + FullName(command) + " --help";
}

std::string NearestHint(const std::string& word, const std::vector<std::string>& candidates,
                        const std::string& otherwise) {
  const std::string nearest = NearestWord(word, candidates);
  return nearest.empty() ? otherwise : "did you mean " + nearest + "?";
}

[[noreturn]] void ThrowUnknownCommand(const CLI::App& scope, const std::string& word) {
  throw UserError(ExitCode::kUsage, "there is no command \"" + word + "\"",
                  NearestHint(word, CommandNames(scope), HelpHint(scope)));
}

// The parser would take the unknown command for an argument too many.
void CheckCommand(const CLI::App& app, const std::string& word) {
  const std::vector<std::string> names = CommandNames(app);
  if (!word.starts_with("-") && std::find(names.begin(), names.end(), word) == names.end()) {
    ThrowUnknownCommand(app, word);
  }
}

[[noreturn]] void ThrowUsageError(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<std::string> unknown = app.remaining(true);
  const CLI::App& command = InnermostCommand(app);
  if (!unknown.empty() && unknown.front().starts_with("-")) {
    throw UserError(ExitCode::kUsage, "there is no option \"" + unknown.front() + "\"",
                    NearestHint(unknown.front(), OptionNames(command), HelpHint(command)));
  }
  if (!unknown.empty() && !CommandNames(command).empty()) {
    ThrowUnknownCommand(command, unknown.front());
  }
  throw UserError(ExitCode::kUsage, error.what(), HelpHint(command));
}

void AddFooters(CLI::App& app) {
  app.footer(HelpFooter(app.get_name()));
  for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
    AddFooters(*command);
  }
}

Action PrintVersion() {
  return [](Console& console) {
    console.out.Write(VersionText() + "\n");
    console.out.Flush();
    return ExitCode::kDone;
  };
}

// For whom the program was called without arguments the help is a complaint.
Action PrintHelp(const std::string& help, ExitCode code) {
  return [help, code](Console& console) {
    OutputStream& stream = code == ExitCode::kDone ? console.out : console.err;
    // Some consoles wrap a line that fills the last column, and make its line end an empty line.
    stream.Write(WrapHelp(help, stream.Width() - (stream.IsTerminal() ? 1 : 0)));
    stream.Flush();
    return code;
  };
}

// The parser reads the last argument first. It takes "[a,b]" for a list of two values, but folders
// may be named like that: with a folder in front, the brackets are ordinary characters.
std::vector<std::string> ForParser(const std::vector<std::wstring>& arguments) {
  std::vector<std::string> reversed;
  for (const std::wstring& argument : arguments) {
    const bool list = argument.starts_with(L'[') && argument.ends_with(L']');
    reversed.push_back(ToReversibleUtf8(list ? L".\\" + argument : argument));
  }
  std::reverse(reversed.begin(), reversed.end());
  return reversed;
}

}  // namespace

Action ParseArguments(const std::vector<std::wstring>& arguments) {
  Action action;
  CLI::App app("Finds what fills a disk.", "quastel");
  // A root may begin with "/", which is a separator here and no sign of an option.
  app.allow_windows_style_options(false);
  app.require_subcommand(1);
  app.set_version_flag("--version", VersionText(), "Tell the versions and exit");
  app.get_formatter()->column_width(kExplanationColumn);
  AddLargeCommand(app, action);
  AddDuplicatesCommand(app, action);
  AddJunkCommand(app, action);
  AddEmptyCommand(app, action);
  AddListCommand(app, action);
  AddCleanCommand(app, action);
  AddHashCommand(app, action);
  AddRulesCommand(app, action);
  AddVersionCommand(app, action);
  AddFooters(app);

  if (arguments.empty()) {
    return PrintHelp(app.help(), ExitCode::kUsage);
  }
  CheckCommand(app, ToUtf8(arguments.front()));
  try {
    app.parse(ForParser(arguments));
  } catch (const CLI::CallForVersion&) {
    return PrintVersion();
  } catch (const CLI::CallForHelp&) {
    return PrintHelp(app.help(), ExitCode::kDone);
  } catch (const CLI::ParseError& error) {
    ThrowUsageError(app, error);
  }
  return action;
}

}  // namespace quastel::client
