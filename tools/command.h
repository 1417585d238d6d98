// SPDX-License-Identifier: MIT
// A command of the host: one source that defines add_NAME_command, and one line in command_list.inc. That function
// gives the command its options and says what is run when it is called. A command prints to standard output and throws
// Failure where it can't do its work; one that has something to say with its exit status stores that in `status`.
#pragma once

#include <memory>

#include "command_line.h"

namespace traguardo::tool {

#define COMMAND(name) void add_##name##_command(CLI::App& app, int& status);
#include "command_list.inc"
#undef COMMAND

// A command that takes a file and --json, and --recover if its options have it.
template <typename Options>
void add_plain_command(CLI::App& app, const char* name, const char* help, void (*show)(const Options&)) {
  Command command(app, name, help);
  const auto options = std::make_shared<Options>();
  command.add_file(options->file);
  command.add_json(options->json);
  if constexpr (requires { options->recover; }) command.add_recover(options->recover);
  command.calls([options, show] { show(*options); });
}

}  // namespace traguardo::tool
