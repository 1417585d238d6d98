// SPDX-License-Identifier: MIT
// The options of a command, as its source tells them. The parser behind them stays in one source: its header takes
// seconds to compile.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace traguardo::tool {

class Option {
 public:
  Option() = default;  // none, which isn't given
  explicit Option(CLI::Option* option) : option_(option) {}

  Option required();
  Option excludes(Option other);
  Option needs(Option other);
  Option shows_default();
  Option one_of(std::initializer_list<int> values);
  Option one_of(std::initializer_list<const char*> values);
  Option between(int lowest, int highest);
  Option between(double lowest, double highest);
  Option at_least(int lowest) { return between(lowest, std::numeric_limits<int>::max()); }
  // reason: why a text can't be used; empty if it can.
  Option check(const std::function<std::string(const std::string& text)>& reason);

  bool is_given() const;

 private:
  CLI::Option* option_ = nullptr;
};

class Command {
 public:
  Command(CLI::App& app, const char* name, const char* help);

  // An argument if the name has no dash. What is given ends up in `value`, which must live as long as the callback.
  Option add(const char* names, std::string& value, const std::string& help);
  Option add(const char* names, int& value, const std::string& help);
  Option add(const char* names, std::uint32_t& value, const std::string& help);
  Option add(const char* names, std::uint64_t& value, const std::string& help);
  Option add(const char* names, double& value, const std::string& help);
  // May be repeated, with one value each time.
  Option add(const char* names, std::vector<std::string>& values, const std::string& help);
  Option add_flag(const char* names, bool& value, const std::string& help);
  Option add_flag(const char* names, const std::string& help);

  // Arguments that many commands take.
  Option add_file(std::string& value);
  Option add_files(std::vector<std::string>& values);
  Option add_output(std::string& value, const std::string& help);
  // For chosen_laps().
  Option add_lap(std::string& value);
  // For find_all_channels().
  Option add_channels(std::vector<std::string>& values);
  // For speed_channel().
  Option add_speed(std::string& value);
  Option add_json(bool& value);
  Option add_recover(bool& value);

  // The help doesn't name it.
  void hide();

  void calls(std::function<void()> work);

 private:
  CLI::App* command_;
};

// The help of a command, or of all without a name. A name that no command has is a wrong command line.
std::string help_text(CLI::App& app, const std::string& command);

struct DescribedOption {
  std::vector<std::string> names;  // with their dashes
  std::string help;
  bool takes_value = false;
  std::vector<std::string> choices;  // all that the value can be; empty where that is open
};
struct DescribedCommand {
  std::string name;
  std::string help;
  std::vector<DescribedOption> options;
};
// Those that the help names.
std::vector<DescribedCommand> described_commands(CLI::App& app);

// The command line lacks this.
[[noreturn]] void complain_of_missing(const char* option);

}  // namespace traguardo::tool
