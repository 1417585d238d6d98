// SPDX-License-Identifier: MIT
#include "print_out.h"

#include "output_file.h"

namespace traguardo::tool {

void print_out(std::string_view text) {
  OutputFile out("-");
  out.write(text);
  out.keep();
}

void print_shown(std::string_view text) {
  OutputFile out("-");
  out.write_shown(text);
  out.keep();
}

}  // namespace traguardo::tool
