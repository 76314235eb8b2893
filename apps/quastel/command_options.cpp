#include "command_options.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace quastel::client {
namespace {

template <typename Variable>
CommandOption Add(CLI::App& command, const char* name, Variable& variable, const char* value,
                  const std::string& explanation) {
  return CommandOption(*command.add_option(name, variable, explanation)->type_name(value));
}

}  // namespace

CommandOption CommandOption::Required() const {
  option_->required();
  return *this;
}

CommandOption CommandOption::InGroup(const char* heading) const {
  option_->group(heading);
  return *this;
}

CommandOption CommandOption::Needs(CommandOption other) const {
  option_->needs(other.option_);
  return *this;
}

CommandOption CommandOption::Excludes(CommandOption other) const {
  option_->excludes(other.option_);
  return *this;
}

CommandOption CommandOption::Check(
    std::function<std::string(const std::string& value)> complaint) const {
  option_->check(CLI::Validator(std::move(complaint), ""));
  return *this;
}

CommandOption CommandOption::OneOf(const std::vector<std::string>& values) const {
  option_->check(CLI::IsMember(values).description(""));
  return *this;
}

CommandOption CommandOption::SplitAt(char separator) const {
  option_->delimiter(separator);
  return *this;
}

CommandOption CommandOption::ShowDefault() const {
  option_->capture_default_str();
  return *this;
}

bool CommandOption::WasGiven() const {
  return option_->count() != 0;
}

CommandOption AddFlag(CLI::App& command, const char* name, bool& variable,
                      const std::string& explanation) {
  return CommandOption(*command.add_flag(name, variable, explanation));
}

CommandOption AddOption(CLI::App& command, const char* name, std::string& variable,
                        const char* value, const std::string& explanation) {
  return Add(command, name, variable, value, explanation);
}

CommandOption AddOption(CLI::App& command, const char* name, std::uint64_t& variable,
                        const char* value, const std::string& explanation) {
  return Add(command, name, variable, value, explanation);
}

CommandOption AddOption(CLI::App& command, const char* name, std::vector<std::string>& variable,
                        const char* value, const std::string& explanation) {
  return Add(command, name, variable, value, explanation);
}

CommandOption AddOption(CLI::App& command, const char* name, std::vector<std::uint64_t>& variable,
                        const char* value, const std::string& explanation) {
  return Add(command, name, variable, value, explanation);
}

CLI::App& AddCommand(CLI::App& parent, const char* name, const char* explanation) {
  return *parent.add_subcommand(name, explanation);
}

void RequireCommand(CLI::App& command) {
  command.require_subcommand(1);
}

void OnCall(CLI::App& command, std::function<void()> called) {
  command.callback(std::move(called));
}

}  // namespace quastel::client
