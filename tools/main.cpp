// SPDX-License-Identifier: MIT
// traguardo, the command-line host: command lines in, the commands of command_list.inc out.
//
// Exit status: 0 done; 1 the command could not do its work, which standard error says in one line (a formula that can't
// be used takes three); 2 wrong command line; 3 a checked session broke its rule.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "api/exports.h"
#include "command.h"
#include "error_line.h"
#include "failure.h"
#include "print_out.h"
#include "support/platform/platform.h"
#include "support/platform/process.h"
#include "support/platform/unfinished_files.h"
#include "terminal.h"
#include "text.h"

namespace traguardo::tool {

namespace {

int complain(const char* reason, const std::string& details = {}) {
  say_error_line(reason, details);
  return 1;
}

// Help and version are output like any other; what is wrong with a command line goes to standard error.
int answer(const CLI::App& app, const CLI::ParseError& error) {
  std::ostringstream out;
  std::ostringstream complaint;
  const bool is_wrong = app.exit(error, out, complaint) != 0;
  const std::string shown = for_stream(stderr, to_utf8(complaint.str()), LineFeeds::kept);
  std::fputs(shown.c_str(), stderr);
  print_out(out.str());
  return is_wrong ? 2 : 0;
}

int answer_or_complain(const CLI::App& app, const CLI::ParseError& error) {
  try {
    return answer(app, error);
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
}

}  // namespace

// Configuration files and tables of the tool are the user's, not the installation's.
void take_users_folder() {
  const std::wstring folder = platform::path_in_folder(platform::user_configuration_folder(), L"traguardo");
  platform::set_environment_if_unset("TRAGUARDO_HOME", platform::host_bytes_from_path(folder));
}

int run(const std::vector<std::string>& words) {
  int status = 0;
  CLI::App app("Reads and shows the sessions of motorsport data loggers", "traguardo");
  app.require_subcommand(1);
  // What begins with a slash is a path.
  app.allow_windows_style_options(false);
  app.set_version_flag("-V,--version", std::string("traguardo " TRAGUARDO_VERSION ", library built ") +
                                           get_library_date() + " " + get_library_time());
#define COMMAND(name) add_##name##_command(app, status);
#include "command_list.inc"
#undef COMMAND
  try {
    std::vector<const char*> arguments;
    arguments.reserve(words.size());
    for (const std::string& word : words) arguments.push_back(word.c_str());
    app.parse(static_cast<int>(arguments.size()), arguments.data());
    return status;
  } catch (const CLI::ParseError& error) {
    return answer_or_complain(app, error);
  } catch (const std::bad_alloc&) {
    return complain("out of memory");
  } catch (const Failure& failure) {
    return complain(failure.what(), failure.details);
  } catch (const std::exception& failure) {
    return complain(failure.what());
  }
}

}  // namespace traguardo::tool

// What escapes run() is a fault of the tool itself.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argument_count, char** arguments) {
  traguardo::platform::occupy_standard_streams();
  traguardo::platform::write_utf8();
  traguardo::platform::remove_unfinished_when_killed();
  traguardo::tool::take_users_folder();
  return traguardo::tool::run(traguardo::platform::command_line(argument_count, arguments));
}
