#ifndef QUASTEL_APPS_QUASTEL_COMMAND_OPTIONS_H_
#define QUASTEL_APPS_QUASTEL_COMMAND_OPTIONS_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace quastel::client {

// What the commands need of the argument parser. They do not include its header themselves, because
// that takes several times as long to compile as they do.

// An option or a plain argument of a command. Each function answers the same option again.
class CommandOption {
 public:
  explicit CommandOption(CLI::Option& option) : option_(&option) {}

  CommandOption Required() const;
  // The heading in the help below which it stands.
  CommandOption InGroup(const char* heading) const;
  CommandOption Needs(CommandOption other) const;
  CommandOption Excludes(CommandOption other) const;
  // `complaint` answers what is wrong with a value, or an empty text.
  CommandOption Check(std::function<std::string(const std::string& value)> complaint) const;
  CommandOption OneOf(const std::vector<std::string>& values) const;
  // Several values may be given as one, with this between them.
  CommandOption SplitAt(char separator) const;
  // The help tells the value that the variable has now.
  CommandOption ShowDefault() const;

  // After parsing.
  bool WasGiven() const;

 private:
  CLI::Option* option_;
};

// Parsing writes into `variable`, which must live until then. `value` is what the help calls the
// value; empty for none. A name without "--" is that of an argument.
CommandOption AddFlag(CLI::App& command, const char* name, bool& variable,
                      const std::string& explanation);
CommandOption AddOption(CLI::App& command, const char* name, std::string& variable,
                        const char* value, const std::string& explanation);
CommandOption AddOption(CLI::App& command, const char* name, std::uint64_t& variable,
                        const char* value, const std::string& explanation);
CommandOption AddOption(CLI::App& command, const char* name, std::vector<std::string>& variable,
                        const char* value, const std::string& explanation);
CommandOption AddOption(CLI::App& command, const char* name, std::vector<std::uint64_t>& variable,
                        const char* value, const std::string& explanation);

CLI::App& AddCommand(CLI::App& parent, const char* name, const char* explanation);
// The command does nothing by itself: one of its own commands has to be named.
void RequireCommand(CLI::App& command);
// `called` runs when the arguments named this command and all of them were understood.
void OnCall(CLI::App& command, std::function<void()> called);

}  // namespace quastel::client

#endif  // QUASTEL_APPS_QUASTEL_COMMAND_OPTIONS_H_
