// SPDX-License-Identifier: MIT
// traguardo help: the same as --help, behind or in front of a command.
#include <string>

#include "command.h"
#include "print_out.h"

namespace traguardo::tool {

void add_help_command(CLI::App& app, int& /*status*/) {
  Command command(app, "help", "Show help, or that of a command");
  const auto name = std::make_shared<std::string>();
  command.add("COMMAND", *name, "Name of the command");
  command.calls([&app, name] { print_out(help_text(app, *name)); });
}

}  // namespace traguardo::tool
