// SPDX-License-Identifier: MIT
// traguardo completion: what a shell needs to complete the tool's command lines, from the tool's own description of its
// options. Packages put it where the shells look; the help doesn't name it.
#include <fmt/format.h>

#include <string>
#include <vector>

#include "command.h"
#include "print_out.h"

namespace traguardo::tool {

namespace {

// In single quotes, for all three shells.
std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::string names_of(const DescribedCommand& command) {
  std::string names;
  for (const DescribedOption& option : command.options)
    names += (names.empty() ? "" : " ") + fmt::format("{}", fmt::join(option.names, " "));
  return names;
}

std::string for_bash(const std::vector<DescribedCommand>& commands) {
  std::string names;
  std::string cases;
  for (const DescribedCommand& command : commands) {
    names += (names.empty() ? "" : " ") + command.name;
    cases += fmt::format("    {})\n      case $previous in\n", command.name);
    for (const DescribedOption& option : command.options) {
      if (option.choices.empty()) continue;
      cases += fmt::format("        {}) COMPREPLY=($(compgen -W {} -- \"$current\")); return ;;\n",
                           fmt::join(option.names, "|"), quoted(fmt::format("{}", fmt::join(option.choices, " "))));
    }
    cases += fmt::format("      esac\n      options={} ;;\n", quoted(names_of(command)));
  }
  return fmt::format(R"(_traguardo() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}} options=
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    COMPREPLY=($(compgen -W {} -- "$current"))
    return
  fi
  case ${{COMP_WORDS[1]}} in
{}  esac
  if [ "${{current:0:1}}" = - ]; then
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  fi
}}
complete -o bashdefault -o default -F _traguardo traguardo
)",
                     quoted(names + " --help --version"), cases);
}

// Brackets and colons part what zsh reads.
std::string zsh_text(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == ':') result += '\\';
    result += c;
  }
  return result;
}

std::string for_zsh(const std::vector<DescribedCommand>& commands) {
  std::string list;
  std::string cases;
  for (const DescribedCommand& command : commands) {
    list += fmt::format("    {}\n", quoted(command.name + ":" + zsh_text(command.help)));
    cases += fmt::format("    {}) _arguments", command.name);
    for (const DescribedOption& option : command.options) {
      const std::string value = !option.takes_value      ? ""
                                : option.choices.empty() ? ":value:_default"
                                                         : fmt::format(":value:({})", fmt::join(option.choices, " "));
      for (const std::string& name : option.names) {
        cases += fmt::format(" \\\n      {}", quoted(fmt::format("*{}[{}]{}", name, zsh_text(option.help), value)));
      }
    }
    cases += " \\\n      '*:file:_files' ;;\n";
  }
  return fmt::format(R"(#compdef traguardo
local -a commands
commands=(
{})
if (( CURRENT == 2 )); then
  _describe command commands
  return
fi
shift words
(( CURRENT-- ))
case $words[1] in
{}esac
)",
                     list, cases);
}

std::string for_fish(const std::vector<DescribedCommand>& commands) {
  std::string text;
  for (const DescribedCommand& command : commands) {
    text += fmt::format("complete -c traguardo -n __fish_use_subcommand -f -a {} -d {}\n", command.name,
                        quoted(command.help));
    for (const DescribedOption& option : command.options) {
      text += fmt::format("complete -c traguardo -n '__fish_seen_subcommand_from {}'", command.name);
      for (const std::string& name : option.names) {
        const bool is_long = name.starts_with("--");
        text += fmt::format(" -{} {}", is_long ? 'l' : 's', name.substr(is_long ? 2 : 1));
      }
      if (option.takes_value) text += " -r";
      if (!option.choices.empty()) text += " -f -a " + quoted(fmt::format("{}", fmt::join(option.choices, " ")));
      text += " -d " + quoted(option.help) + "\n";
    }
  }
  return text;
}

void print_completion(CLI::App& app, const std::string& shell) {
  const std::vector<DescribedCommand> commands = described_commands(app);
  print_out(shell == "bash" ? for_bash(commands) : shell == "zsh" ? for_zsh(commands) : for_fish(commands));
}

}  // namespace

void add_completion_command(CLI::App& app, int& /*status*/) {
  Command command(app, "completion", "");
  command.hide();
  const auto shell = std::make_shared<std::string>();
  command.add("SHELL", *shell, "Shell to complete command lines in").required().one_of({"bash", "zsh", "fish"});
  command.calls([&app, shell] { print_completion(app, *shell); });
}

}  // namespace traguardo::tool
