// SPDX-License-Identifier: MIT
#include "command_line.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "lap_choice.h"
#include "support/platform/process.h"

namespace traguardo::tool {

Option Option::required() {
  option_->required();
  return *this;
}

Option Option::excludes(Option other) {
  option_->excludes(other.option_);
  return *this;
}

Option Option::needs(Option other) {
  option_->needs(other.option_);
  return *this;
}

Option Option::shows_default() {
  option_->capture_default_str();
  return *this;
}

Option Option::one_of(std::initializer_list<int> values) {
  option_->check(CLI::IsMember(values));
  return *this;
}

Option Option::one_of(std::initializer_list<const char*> values) {
  option_->check(CLI::IsMember(std::vector<std::string>(values.begin(), values.end())));
  return *this;
}

Option Option::between(int lowest, int highest) {
  option_->check(CLI::Range(lowest, highest));
  return *this;
}

Option Option::between(double lowest, double highest) {
  option_->check(CLI::Range(lowest, highest));
  // Not-a-number lies in no range, and out of none.
  return check(
      [](const std::string& text) { return std::isnan(std::strtod(text.c_str(), nullptr)) ? "not a number" : ""; });
}

Option Option::check(const std::function<std::string(const std::string& text)>& reason) {
  option_->check(reason);
  return *this;
}

bool Option::is_given() const {
  return option_ != nullptr && option_->count() > 0;
}

Command::Command(CLI::App& app, const char* name, const char* help) : command_(app.add_subcommand(name, help)) {}

Option Command::add(const char* names, std::string& value, const std::string& help) {
  return Option(command_->add_option(names, value, help));
}

Option Command::add(const char* names, int& value, const std::string& help) {
  return Option(command_->add_option(names, value, help));
}

Option Command::add(const char* names, std::uint32_t& value, const std::string& help) {
  return Option(command_->add_option(names, value, help));
}

Option Command::add(const char* names, std::uint64_t& value, const std::string& help) {
  return Option(command_->add_option(names, value, help));
}

Option Command::add(const char* names, double& value, const std::string& help) {
  return Option(command_->add_option(names, value, help));
}

Option Command::add(const char* names, std::vector<std::string>& values, const std::string& help) {
  return Option(command_->add_option(names, values, help)->allow_extra_args(false));
}

Option Command::add_flag(const char* names, bool& value, const std::string& help) {
  return Option(command_->add_flag(names, value, help));
}

Option Command::add_flag(const char* names, const std::string& help) {
  return Option(command_->add_flag(names)->description(help));
}

Option Command::add_file(std::string& value) {
  return add("FILE", value, "Session file (.qlt, .qlc or .wmp)").required();
}

Option Command::add_files(std::vector<std::string>& values) {
  return Option(command_->add_option("FILE", values, "Session files, or patterns for them")).required();
}

// One name for standard output: who writes there prints nothing else.
Option Command::add_output(std::string& value, const std::string& help) {
  constexpr int kStandardOutput = 1;
  return Option(command_->add_option("-o,--output", value, help)->transform([](const std::string& path) {
    return platform::stream_number_of(path) == kStandardOutput ? std::string("-") : path;
  }));
}

Option Command::add_lap(std::string& value) {
  return add("--lap", value, "Only these laps: a number of `traguardo laps`, a range such as 3-7, or best")
      .check(reason_not_a_lap_choice);
}

Option Command::add_channels(std::vector<std::string>& values) {
  return add("--channel", values,
             "Only these: a name, a part of one, a pattern (*, ?) or #INDEX; NAME=UNIT for another unit; may be "
             "repeated (default: all logged and all derived GPS channels)");
}

Option Command::add_speed(std::string& value) {
  return add("--speed", value, "Speed whose way is the distance (default: the speed of the session)");
}

Option Command::add_json(bool& value) {
  return add_flag("--json", value, "Print JSON");
}

Option Command::add_recover(bool& value) {
  return add_flag("--recover", value, "Drop a frame whose wrong clock would cost what is behind it");
}

void Command::hide() {
  command_->group("");
}

void Command::calls(std::function<void()> work) {
  command_->callback(std::move(work));
}

std::string help_text(CLI::App& app, const std::string& command) {
  // Its own help() would be that of the command that asks.
  if (command.empty()) return app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
  const auto named = app.get_subcommands([&command](const CLI::App* one) { return one->get_name() == command; });
  if (named.empty()) throw CLI::ValidationError("COMMAND", "there is no " + command);
  return named.front()->help(app.get_name());
}

namespace {

// Of a set of values the parser tells as "{this,that}".
std::vector<std::string> choices_in(const std::string& type) {
  const std::size_t begin = type.find('{');
  const std::size_t end = type.find('}');
  if (begin == std::string::npos || end == std::string::npos || end < begin) return {};
  return CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

DescribedOption described(const CLI::Option& option) {
  DescribedOption described;
  for (const std::string& name : option.get_snames()) described.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) described.names.push_back("--" + name);
  described.help = option.get_description();
  described.takes_value = option.get_items_expected_max() > 0;
  described.choices = choices_in(option.get_type_name());
  return described;
}

}  // namespace

std::vector<DescribedCommand> described_commands(CLI::App& app) {
  std::vector<DescribedCommand> commands;
  for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_group().empty()) continue;
    DescribedCommand found{command->get_name(), command->get_description(), {}};
    for (const CLI::Option* const option : command->get_options()) {
      if (!option->get_positional()) found.options.push_back(described(*option));
    }
    commands.push_back(std::move(found));
  }
  return commands;
}

void complain_of_missing(const char* option) {
  throw CLI::RequiredError(option);
}

}  // namespace traguardo::tool
